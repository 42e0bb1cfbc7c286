// The boot loader's settings and the block of flash that holds them.

#include "bsp.h"
#include "identity/boot_block.h"
#include "tests/support/flash_board_test.h"

#include <climits>
#include <cstring>

namespace {

constexpr char kDevice[] = "/dev/mtd4";
constexpr uint32_t kSize = 0x2000;
constexpr uint32_t kBlock = 0x1000;

class BootSettingsTest : public FlashCallsTest {
  protected:
    void SetUp() override {
        FlashCallsTest::SetUp();
        usePartition(4, {vb::FlashType::Nor, kSize, kBlock, 256, 0});
        // A console that takes every rate.
        recorder.before = [](const SystemCall &call) {
            return call.is("system") ? std::optional<int64_t>(0) : std::nullopt;
        };
    }

    /** A block of zeros with a text at an offset. */
    void store(size_t offset, const std::string &text) const {
        fill(0, 256, 0);
        FlashCallsTest::store(4, static_cast<uint32_t>(offset), charactersOf(text));
    }
    void fill(uint32_t offset, uint32_t size, uint8_t byte) const {
        FlashCallsTest::store(4, offset, Bytes(size, byte));
    }

    Bytes slot(uint32_t offset, uint32_t size = 32) const { return stored(4, offset, size); }

    template <typename Value>
    Answer get(int32_t (*getter)(Value *), Value &value) {
        return recorder.run([&] { return getter(&value); });
    }

    template <typename Value>
    Answer set(int32_t (*setter)(Value), Value value) {
        return recorder.run([&] { return setter(value); });
    }
};

/** A slot's text: zeros behind it. */
Bytes slotOf(const std::string &text, size_t size = 32) {
    Bytes bytes = charactersOf(text);
    bytes.resize(size);
    return bytes;
}

const Calls kReading = {"open /dev/mtd4 read-only", "read /dev/mtd4 256"};
const Calls kWriting = {"open /dev/mtd4 read-write data-sync", "geometry /dev/mtd4",
                        "erase /dev/mtd4 0+4096", "seek /dev/mtd4 0", "write /dev/mtd4 256"};

TEST_F(BootSettingsTest, AGetterReadsTheBlock) {
    uint32_t mode = 7;
    EXPECT_EQ(get(bspBootModeGet, mode), kSilentSuccess);
    EXPECT_EQ(recorder.work(), kReading);
}

TEST_F(BootSettingsTest, ASetterReadsErasesAndWritesTheBlock) {
    EXPECT_EQ(set(bspBootModeSet, 1), kSilentSuccess);
    EXPECT_EQ(recorder.work(), joined({kReading, kWriting}));
}

TEST_F(BootSettingsTest, TheRestOfTheEraseBlockIsErased) {
    fill(0, kSize, 0x11);
    EXPECT_EQ(set(bspBootFlagSet, 1), kSilentSuccess);
    EXPECT_EQ(slot(256, kBlock - 256), Bytes(kBlock - 256, 0xFF));
    EXPECT_EQ(slot(kBlock, kSize - kBlock), Bytes(kSize - kBlock, 0x11));
}

using Switch = int32_t (*)(uint32_t *);

TEST_F(BootSettingsTest, SwitchesAreNumbersOtherThanZero) {
    struct Case {
        Switch getter;
        size_t offset;
        std::string text;
        uint32_t value;
    };
    const Case cases[] = {
        {bspBootModeGet, 0, "main_system=1", 1},
        {bspBootModeGet, 0, "main_system=0", 0},
        {bspBootModeGet, 0, "main_system=-4", 1},
        {bspBootModeGet, 0, "main_system=12x", 1},
        {bspBootModeGet, 0, "main_system=", 0},
        {bspBootModeGet, 0, "main_system", 0},
        {bspBootModeGet, 0, "", 0},
        {bspBootModeGet, 32, "main_system=1", 0}, // in another slot
        {bspBootModeGet, 0, "x main_system=1", 1},
        {bspBootModeGet, 0, std::string("\0main_system=1", 14), 0}, // behind the text's end
        {bspConsolePwdValidGet, 96, "password=1", 1},
        {bspConsolePwdValidGet, 96, "password=0", 0},
        {bspConsolePwdValidGet, 96, "", 0},
        {bspConsolePwdValidGet, 128, "password=1", 0},
        {bspUserPwdValidGet, 128, "user_pwd=0", 0},
        {bspUserPwdValidGet, 128, "user_pwd=1", 1},
        {bspUserPwdValidGet, 128, "user_pwd=", 0},
        {bspUserPwdValidGet, 128, "user_pwd=on", 0},
        {bspUserPwdValidGet, 128, "", 1},
        {bspUserPwdValidGet, 96, "user_pwd=0", 1},
    };
    for (const Case &row : cases) {
        SCOPED_TRACE(row.text);
        store(row.offset, row.text);
        uint32_t value = 77;
        EXPECT_EQ(get(row.getter, value), kSilentSuccess);
        EXPECT_EQ(value, row.value);
    }
}

TEST_F(BootSettingsTest, TextsEndWithTheirSlotsAtTheLatest) {
    // The digits go on in the next slot, which is another setting's.
    store(0, std::string(19, ' ') + "main_system=0" + "99999");
    uint32_t mode = 77;
    EXPECT_EQ(get(bspBootModeGet, mode), kSilentSuccess);
    EXPECT_EQ(mode, 0u);
    store(32, std::string(20, ' ') + "boot_type=12" + "345");
    int32_t flag = 77;
    EXPECT_EQ(get(bspBootFlagGet, flag), kSilentSuccess);
    EXPECT_EQ(flag, 12);
    // And a key that begins in a slot and ends in the next is none.
    store(64, std::string(24, ' ') + "baudrate=9600");
    uint32_t rate = 0;
    EXPECT_EQ(get(bspBaudrateGet, rate), kSilentSuccess);
    EXPECT_EQ(rate, 115200u);
}

TEST_F(BootSettingsTest, TheBootFlagIsANumberOrNotThere) {
    for (const auto &[text, value] :
         {std::pair{"boot_type=1", 1}, {"boot_type=-3", -3}, {"boot_type=", 0}}) {
        store(32, text);
        int32_t flag = 77;
        EXPECT_EQ(get(bspBootFlagGet, flag), kSilentSuccess);
        EXPECT_EQ(flag, value);
    }
    for (const size_t offset : {size_t{0}, size_t{64}}) {
        store(offset, "boot_type=1");
        int32_t flag = 77;
        EXPECT_EQ(get(bspBootFlagGet, flag), (Answer{-1}));
        EXPECT_EQ(flag, 77);
    }
}

TEST_F(BootSettingsTest, TheBaudrateIsADecimalNumber) {
    for (const auto &[text, value] : {std::pair{"baudrate=38400", 38400u},
                                      {"baudrate=9600", 9600u},
                                      {"baudrate=", 0u},
                                      {"baudrate=010", 10u},
                                      {"baudrate=0x10", 0u},
                                      {"baudrate=4294967295", 4294967295u},
                                      {"", 115200u}}) {
        store(64, text);
        uint32_t rate = 77;
        EXPECT_EQ(get(bspBaudrateGet, rate), kSilentSuccess);
        EXPECT_EQ(rate, value) << text;
    }
}

TEST_F(BootSettingsTest, AnErasedBlockReadsAsTheDefaults) {
    uint32_t value = 77;
    EXPECT_EQ(get(bspBootModeGet, value), kSilentSuccess);
    EXPECT_EQ(value, 0u);
    int32_t flag = 77;
    EXPECT_EQ(get(bspBootFlagGet, flag), (Answer{-1}));
    EXPECT_EQ(get(bspBaudrateGet, value), kSilentSuccess);
    EXPECT_EQ(value, 115200u);
    EXPECT_EQ(get(bspConsolePwdValidGet, value), kSilentSuccess);
    EXPECT_EQ(value, 0u);
    EXPECT_EQ(get(bspUserPwdValidGet, value), kSilentSuccess);
    EXPECT_EQ(value, 1u);
    char password[64] = "xxxx";
    EXPECT_EQ(recorder.run([&] { return bspBootPwdGet(password); }), kSilentSuccess);
    EXPECT_STREQ(password, "");
}

struct Stored {
    const char *name;
    std::function<int32_t()> setter;
    size_t offset;
    Bytes slot;
};

const std::string kLongest(40, 'p');

const Stored kStored[] = {
    {"mode 1", [] { return bspBootModeSet(1); }, 0, slotOf("main_system=1")},
    {"mode 7", [] { return bspBootModeSet(7); }, 0, slotOf("main_system=1")},
    {"mode 0", [] { return bspBootModeSet(0); }, 0, slotOf("main_system=0")},
    {"mode -3", [] { return bspBootModeSet(-3); }, 0, slotOf("main_system=0")},
    {"flag 5", [] { return bspBootFlagSet(5); }, 32, slotOf("boot_type=5")},
    {"flag -3", [] { return bspBootFlagSet(-3); }, 32, slotOf("boot_type=-3")},
    {"flag min", [] { return bspBootFlagSet(INT_MIN); }, 32, slotOf("boot_type=-2147483648")},
    {"rate 9600", [] { return bspBaudrateSet(9600); }, 64, slotOf("baudrate=9600")},
    {"rate 115200", [] { return bspBaudrateSet(115200); }, 64, slotOf("baudrate=115200")},
    {"console 1", [] { return bspConsolePwdValidSet(1); }, 96, slotOf("password=1")},
    {"console 9", [] { return bspConsolePwdValidSet(9); }, 96, slotOf("password=1")},
    {"console 0", [] { return bspConsolePwdValidSet(0); }, 96, slotOf("password=0")},
    {"console -1", [] { return bspConsolePwdValidSet(-1); }, 96, slotOf("password=0")},
    {"user 0", [] { return bspUserPwdValidSet(0); }, 128, slotOf("user_pwd=0")},
    {"user 1", [] { return bspUserPwdValidSet(1); }, 128, Bytes(32, 0xFF)},
    {"user -1", [] { return bspUserPwdValidSet(-1); }, 128, Bytes(32, 0xFF)},
    {"password", [] { return bspBootPwdSet("a b%d"); }, 192, slotOf("boot_pwd=a b%d", 64)},
    {"longest password", [] { return bspBootPwdSet(kLongest.c_str()); }, 192,
     slotOf("boot_pwd=" + kLongest, 64)},
    {"no password", [] { return bspBootPwdSet(""); }, 192, Bytes(64, 0)},
};

TEST_F(BootSettingsTest, ASetterReplacesItsSlotAndNothingElse) {
    for (const Stored &row : kStored) {
        SCOPED_TRACE(row.name);
        Bytes expected = patterned(256); // stale characters in every slot
        FlashCallsTest::store(4, 0, expected);
        std::copy(row.slot.begin(), row.slot.end(),
                  expected.begin() + static_cast<ptrdiff_t>(row.offset));
        EXPECT_EQ(recorder.run(row.setter), kSilentSuccess);
        EXPECT_EQ(slot(0, 256), expected);
    }
}

TEST_F(BootSettingsTest, WhatIsStoredIsReadBack) {
    fill(0, kSize, 0xFF);
    uint32_t value = 77;
    int32_t flag = 77;
    char password[BSP_BOOT_PASSWORD_MAX + 1] = "";
    set(bspBootModeSet, 4);
    set(bspBootFlagSet, -3);
    set(bspBaudrateSet, 57600u);
    set(bspConsolePwdValidSet, 1);
    set(bspUserPwdValidSet, 0);
    recorder.run([] { return bspBootPwdSet(kLongest.c_str()); });
    get(bspBootModeGet, value);
    EXPECT_EQ(value, 1u);
    get(bspBootFlagGet, flag);
    EXPECT_EQ(flag, -3);
    get(bspBaudrateGet, value);
    EXPECT_EQ(value, 57600u);
    get(bspConsolePwdValidGet, value);
    EXPECT_EQ(value, 1u);
    get(bspUserPwdValidGet, value);
    EXPECT_EQ(value, 0u);
    set(bspUserPwdValidSet, 1);
    get(bspUserPwdValidGet, value);
    EXPECT_EQ(value, 1u);
    EXPECT_EQ(recorder.run([&] { return bspBootPwdGet(password); }), kSilentSuccess);
    EXPECT_EQ(password, kLongest);
}

TEST_F(BootSettingsTest, TheBootPasswordHasUpTo40Characters) {
    const std::string tooLong(41, 'p');
    EXPECT_EQ(recorder.run([&] { return bspBootPwdSet(tooLong.c_str()); }),
              (Answer{BSP_E_INVALID}));
    EXPECT_EQ(recorder.run([] { return bspBootPwdSet(nullptr); }), (Answer{BSP_E_NULL}));
    EXPECT_EQ(recorder.work(), (Calls{})) << "the block is not even read";
}

TEST_F(BootSettingsTest, APasswordEndsWithItsSlot) {
    store(192, "boot_pwd=" + std::string(64, 'q')); // goes on behind the block
    char password[64];
    std::memset(password, 0x55, sizeof(password));
    EXPECT_EQ(recorder.run([&] { return bspBootPwdGet(password); }), kSilentSuccess);
    EXPECT_EQ(password, std::string(55, 'q'));
    EXPECT_EQ(password[56], 0x55) << "56 bytes are enough";
}

TEST_F(BootSettingsTest, NullOutputsAreRefusedBeforeAnythingIsDone) {
    for (const Switch getter :
         {bspBootModeGet, bspBaudrateGet, bspConsolePwdValidGet, bspUserPwdValidGet})
        EXPECT_EQ(recorder.run([&] { return getter(nullptr); }), (Answer{BSP_E_NULL}));
    EXPECT_EQ(recorder.run([] { return bspBootFlagGet(nullptr); }), (Answer{BSP_E_NULL}));
    EXPECT_EQ(recorder.run([] { return bspBootPwdGet(nullptr); }), (Answer{BSP_E_NULL}));
    EXPECT_EQ(recorder.work(), (Calls{}));
}

TEST_F(BootSettingsTest, TheRunningConsoleIsSwitchedFirst) {
    for (const uint32_t rate : {9600u, 19200u, 38400u, 57600u, 115200u}) {
        EXPECT_EQ(set(bspBaudrateSet, rate), kSilentSuccess);
        const std::string text = std::to_string(rate);
        EXPECT_EQ(recorder.work(),
                  joined({{"system stty -F /dev/ttyS0 ispeed " + text + " ospeed " + text + " cs8"},
                          kReading,
                          kWriting}));
        EXPECT_EQ(slot(64), slotOf("baudrate=" + text));
    }
}

TEST_F(BootSettingsTest, OtherRatesAreRefused) {
    for (const auto &[rate, printed] :
         {std::pair{4800u, "4800"}, {0u, "0"}, {115201u, "115201"}, {UINT_MAX, "-1"}}) {
        EXPECT_EQ(set(bspBaudrateSet, rate),
                  (Answer{BSP_E_INVALID, std::string("bspBaudrateSet-#: Baudrate ") + printed +
                                             " is not supported. i=5\n"}));
        EXPECT_EQ(recorder.work(), (Calls{}));
    }
}

TEST_F(BootSettingsTest, ARateThatTheConsoleRefusesIsNotStored) {
    for (const int64_t result : {256, -1}) {
        recorder.clearFailures();
        recorder.fail("system", 1, result);
        EXPECT_EQ(set(bspBaudrateSet, 9600u),
                  (Answer{-1, "bspBaudrateSet-#: set console baudrate to 9600 error, ret = " +
                                  std::to_string(result) + "\n"}));
        EXPECT_EQ(recorder.work().size(), 1u);
    }
}

TEST_F(BootSettingsTest, ABlockThatCannotBeReadCountsAsEmpty) {
    for (const auto &[call, result] :
         {std::pair{"open", -1}, {"read", -1}, {"read", 255}, {"read", 0}}) {
        SCOPED_TRACE(call);
        store(32, "boot_type=1");
        recorder.clearFailures();
        recorder.fail(call, 1, result);
        int32_t flag = 77;
        EXPECT_EQ(get(bspBootFlagGet, flag), (Answer{-1}));
        EXPECT_EQ(flag, 77);

        recorder.clearFailures();
        recorder.fail(call, 1, result);
        EXPECT_EQ(set(bspBootModeSet, 1), kSilentSuccess);
        EXPECT_EQ(slot(0, 256), slotOf("main_system=1", 256)) << "the slot alone is written";
    }
}

TEST_F(BootSettingsTest, ABlockThatCannotBeWrittenIsNotNoticed) {
    struct Case {
        const char *call;
        int nth;
        int64_t result;
        size_t steps; // of writing
        std::string complaint;
    };
    const Case cases[] = {
        {"open", 2, -1, 1, ""},
        {"geometry", 1, -1, 2, ""},
        {"erase", 1, -1, 3, ""},
        {"seek", 1, -1, 4, "lseek(): Input/output error\n"},
        {"seek", 1, 5, 4, "lseek(): Input/output error\n"},
        {"write", 1, -1, 5, ""},
        {"write", 1, 255, 5, ""},
    };
    for (const Case &row : cases) {
        SCOPED_TRACE(row.call);
        recorder.clearFailures();
        recorder.fail(row.call, row.nth, row.result);
        EXPECT_EQ(set(bspBootFlagSet, 1), kSilentSuccess);
        EXPECT_TRUE(recorder.allFailed());
        EXPECT_EQ(recorder.complaints, row.complaint);
        EXPECT_EQ(recorder.work().size(), kReading.size() + row.steps);
    }
}

TEST_F(BootSettingsTest, WithoutThePartitionSettersSucceed) {
    addFault(openFails(kDevice, ENOENT));
    EXPECT_EQ(set(bspBootFlagSet, 1), kSilentSuccess);
    EXPECT_EQ(recorder.work(), (Calls{kReading[0], kWriting[0]})) << "no file is made in its place";
    int32_t flag = 77;
    EXPECT_EQ(get(bspBootFlagGet, flag), (Answer{-1}));
    EXPECT_EQ(recorder.run([] { return bspBootPwdSet("x"); }), kSilentSuccess);
}

// The block's own answers, which no setting passes on.

TEST_F(BootSettingsTest, TheBlocksOwnStatuses) {
    Bytes block(256, 0x33);
    const auto read = [&] {
        return recorder.run([&] { return bsp::readBootBlock(block.data()); });
    };
    const auto write = [&] {
        return recorder.run([&] { return bsp::writeBootBlock(block.data()); });
    };
    struct Case {
        const char *call;
        int64_t result;
        int32_t readStatus;
        int32_t writeStatus;
    };
    const Case cases[] = {
        {"open", -1, BSP_E_OPEN, BSP_E_OPEN},  {"read", 255, BSP_E_SHORT_READ, BSP_OK},
        {"geometry", -1, BSP_OK, BSP_E_ERASE}, {"erase", -1, BSP_OK, BSP_E_ERASE},
        {"seek", 1, BSP_OK, BSP_E_WRITE},      {"write", 0, BSP_OK, BSP_OK},
    };
    for (const Case &row : cases) {
        recorder.clearFailures();
        recorder.fail(row.call, 1, row.result);
        EXPECT_EQ(read().status, row.readStatus);
        recorder.clearFailures();
        recorder.fail(row.call, 1, row.result);
        EXPECT_EQ(write().status, row.writeStatus);
    }
    recorder.clearFailures();
    block.assign(256, 0x33);
    recorder.fail("read", 1, 255);
    read();
    EXPECT_EQ(block, Bytes(256, 0x33));
    EXPECT_EQ(recorder.run([] { return bsp::readBootBlock(nullptr); }), (Answer{BSP_E_NULL}));
    EXPECT_EQ(recorder.run([] { return bsp::writeBootBlock(nullptr); }), (Answer{BSP_E_NULL}));
    EXPECT_EQ(recorder.work(), (Calls{}));
}

} // namespace
