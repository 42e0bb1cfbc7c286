// The names that management software calls: each does what the function of its stem does.

#include "bsp.h"
#include "tests/support/fake_flash.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

union Output {
    uint8_t bytes[BSP_OS_HEADER_SIZE];
    uint32_t number;
    int32_t integer;
    char text[64];
};
Output output;

struct Forwarded {
    const char *name;
    std::function<int32_t()> io, bsp;
};

/** Both functions, which must be of one type, with the same arguments. */
template <typename... Parameters, typename... Arguments>
Forwarded pair(const char *name, int32_t (*io)(Parameters...), int32_t (*bsp)(Parameters...),
               Arguments... arguments) {
    return {name, [=] { return io(arguments...); }, [=] { return bsp(arguments...); }};
}

constexpr char kFile[] = "/images/file";

const Forwarded kFunctions[] = {
    pair("BootModeGet", ioBootModeGet, bspBootModeGet, &output.number),
    pair("BootModeSet", ioBootModeSet, bspBootModeSet, 1),
    pair("BootFlagGet", ioBootFlagGet, bspBootFlagGet, &output.integer),
    pair("BootFlagSet", ioBootFlagSet, bspBootFlagSet, -3),
    pair("BaudrateGet", ioBaudrateGet, bspBaudrateGet, &output.number),
    pair("BaudrateSet", ioBaudrateSet, bspBaudrateSet, 38400u),
    pair("BaudrateSet of another", ioBaudrateSet, bspBaudrateSet, 4800u),
    pair("ConsolePwdValidGet", ioConsolePwdValidGet, bspConsolePwdValidGet, &output.number),
    pair("ConsolePwdValidSet", ioConsolePwdValidSet, bspConsolePwdValidSet, 1),
    pair("UserPwdValidGet", ioUserPwdValidGet, bspUserPwdValidGet, &output.number),
    pair("UserPwdValidSet", ioUserPwdValidSet, bspUserPwdValidSet, 0),
    pair("BootPwdGet", ioBootPwdGet, bspBootPwdGet, output.text),
    pair("BootPwdGet to nothing", ioBootPwdGet, bspBootPwdGet, nullptr),
    pair("BootPwdSet", ioBootPwdSet, bspBootPwdSet, "secret"),
    pair("OsImageInfoGet", ioOsImageInfoGet, bspOsImageInfoGet, output.bytes, 1),
    {"ImageUpgrade", [] { return ioImageUpgrade(kFile, 1); },
     [] { return bspImageUpgrade(1, kFile, 1); }},
    {"BiosUpgrade", [] { return ioBiosUpgrade(kFile); },
     [] { return bspImageUpgrade(2, kFile, 0); }},
    {"CpldUpgrade", [] { return ioCpldUpgrade(kFile); },
     [] { return bspImageUpgrade(4, kFile, 0); }},
};

/** All that can be seen of a call on a board whose boot block begins with these texts. */
std::string effectOn(const std::string &mode, const std::string &console,
                     const std::function<int32_t()> &call) {
    FakeFlash flash;
    flash.addPartition("/dev/mtd4", 4096, 4096, 256);
    Bytes &block = flash.files["/dev/mtd4"].content;
    std::copy(mode.begin(), mode.end(), block.begin());
    std::copy(console.begin(), console.end(), block.begin() + 96);
    flash.files[kFile].content = patterned(600);
    flash.files["/tmp/bsp/osHeader.bin"].content = patterned(512);
    std::fill(std::begin(output.bytes), std::end(output.bytes), uint8_t{0xA5});
    const Answer answer = flash.run(call);

    std::string effect = std::to_string(answer.status) + answer.printed;
    for (const std::string &line : flash.calls)
        effect += line + "\n";
    effect.append(std::begin(output.bytes), std::end(output.bytes));
    return effect.append(block.begin(), block.end());
}

// Two boards, on which any two settings differ.
std::string effectOf(const std::function<int32_t()> &call) {
    return effectOn("main_system=1", "password=0", call) +
           effectOn("main_system=0", "password=1", call);
}

TEST(FlashFacadeTest, EachFunctionDoesWhatItsStemDoes) {
    std::set<std::string> different;
    for (const Forwarded &function : kFunctions) {
        const std::string effect = effectOf(function.io);
        EXPECT_EQ(effect, effectOf(function.bsp)) << function.name;
        different.insert(effect);
    }
    EXPECT_EQ(different.size(), std::size(kFunctions)) << "a wrong forwarder might not show";
}

TEST(FlashFacadeTest, RebootStoresItsFlagWaitsAndResets) {
    FakeFlash flash;
    flash.addPartition("/dev/mtd4", 4096, 4096, 256);
    EXPECT_EQ(flash.run([] { return ioRebootEx(-2); }), kSilentSuccess);
    const Bytes &block = flash.files["/dev/mtd4"].content;
    EXPECT_STREQ(reinterpret_cast<const char *>(block.data()) + 32, "boot_type=-2");
    const auto from = std::find(flash.calls.begin(), flash.calls.end(), "wait 1 s");
    ASSERT_NE(from, flash.calls.end());
    EXPECT_EQ(*(from - 2), "write /dev/mtd4 256");
    EXPECT_EQ(Calls(from, flash.calls.end()), (Calls{"wait 1 s", "open /dev/bspHandle read-only",
                                                     "request 0x1002", "close /dev/bspHandle"}));
}

TEST(FlashFacadeTest, RebootSucceedsWhateverFails) {
    FakeFlash flash;
    flash.fail("request");
    EXPECT_EQ(flash.run([] { return ioRebootEx(1); }).status, BSP_OK) << "no partition, no reset";
    EXPECT_EQ(flash.callsOf("request").size(), 1u);
}

} // namespace
