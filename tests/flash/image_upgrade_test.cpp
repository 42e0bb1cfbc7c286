// The entry for all kinds of images, and the CPLD's, which the kernel module programs.

#include "bsp.h"
#include "tests/support/flash_board_test.h"

#include <climits>
#include <cstring>
#include <gtest/gtest.h>

namespace {

struct ImageUpgradeTest : FlashCallsTest {
    Answer upgrade(int32_t kind, const char *file) {
        return recorder.run([&] { return bspImageUpgrade(kind, file, 0); });
    }
};

TEST_F(ImageUpgradeTest, ThereAreThreeKinds) {
    for (const int32_t kind : {0, 3, 5, 6, 7, 8, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(upgrade(kind, "/tmp/bsp/file"), (Answer{BSP_E_NOT_SUPPORTED}));
        EXPECT_EQ(upgrade(kind, nullptr), (Answer{BSP_E_NOT_SUPPORTED}));
        EXPECT_EQ(recorder.calls, (Calls{}));
    }
    for (const int32_t kind : {1, 2, 4})
        EXPECT_EQ(upgrade(kind, nullptr), (Answer{BSP_E_NULL})) << kind;
    EXPECT_EQ(recorder.calls, (Calls{}));
}

TEST_F(ImageUpgradeTest, TheKernelModuleProgramsTheCpld) {
    static const char kFile[] = "/tmp/bsp/cpld.vme";
    uint32_t words[10] = {};
    uint32_t tableAddress = 0;
    std::string name;
    uint64_t nameLength = 0;
    uint64_t others = 0;
    recorder.before = [&](const SystemCall &call) -> std::optional<int64_t> {
        if (!call.is("ioctl"))
            return std::nullopt;
        const auto &record = *static_cast<const BspIoctlRecord *>(call.argument);
        const auto *block =
            reinterpret_cast<const uint8_t *>(static_cast<uintptr_t>(record.slot[0]));
        std::memcpy(words, block, sizeof(words));
        tableAddress = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(block + 24));
        name = reinterpret_cast<const char *>(static_cast<uintptr_t>(record.slot[1]));
        nameLength = record.slot[2];
        for (size_t i = 3; i < BSP_REQ_SLOTS; ++i)
            others |= record.slot[i];
        return 0;
    };
    EXPECT_EQ(upgrade(BSP_IMAGE_CPLD, kFile), kSilentSuccess);
    EXPECT_EQ(recorder.calls,
              (Calls{"open /dev/bspHandle read-only", "request 0x1009", "close /dev/bspHandle"}))
        << "the file is the kernel module's to open";
    EXPECT_EQ(name, kFile);
    EXPECT_EQ(nameLength, std::strlen(kFile));
    EXPECT_EQ(others, 0u);

    EXPECT_EQ(words[0], 1u);
    EXPECT_EQ(reinterpret_cast<const uint8_t *>(words)[8], 1);
    EXPECT_EQ(words[3], 5500u);
    EXPECT_EQ(words[4], tableAddress) << "the low 32 bits of the line table's address";
    EXPECT_EQ(words[5], 0u);
    EXPECT_EQ(std::vector<uint32_t>(words + 6, words + 10), (std::vector<uint32_t>{9, 8, 10, 11}));
}

TEST_F(ImageUpgradeTest, TheKernelModulesAnswerIsTheUpgrades) {
    for (const int32_t result : {5, -5, 1002}) {
        recorder.before = [result](const SystemCall &call) -> std::optional<int64_t> {
            if (!call.is("ioctl"))
                return std::nullopt;
            static_cast<BspIoctlRecord *>(call.argument)->result = result;
            return 0;
        };
        EXPECT_EQ(upgrade(BSP_IMAGE_CPLD, "/tmp/bsp/missing"), (Answer{result}));
    }
    recorder.fail("request");
    EXPECT_EQ(upgrade(BSP_IMAGE_CPLD, "/f"), (Answer{-1, "ioctl fail, cmd=0x1009\n"}));
    recorder.clearFailures();
    recorder.fail("open");
    EXPECT_EQ(upgrade(BSP_IMAGE_CPLD, "/f"), (Answer{-1, "open file /dev/bspHandle fail\n"}));
}

} // namespace
