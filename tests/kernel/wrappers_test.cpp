// The functions that the rest of the library calls: registers, I2C transfers, GPIO lines.

#include "tests/kernel/request_test.h"

namespace {

class WrappersTest : public RequestTest {
  protected:
    /** The driver stores a word at the address in slot 1 and answers a result. */
    void driverStores(uint32_t word, int32_t result = 0) {
        driver = [=](BspIoctlRecord &arrived) {
            std::memcpy(reinterpret_cast<void *>(static_cast<uintptr_t>(arrived.slot[1])), &word,
                        sizeof(word));
            arrived.result = result;
        };
    }

    void expectSlots(const std::string &code, const std::vector<uint64_t> &slots) const {
        EXPECT_EQ(recorder.calls, requestOf(code));
        for (size_t slot = 0; slot < 8; ++slot)
            EXPECT_EQ(unit(8 * slot), slot < slots.size() ? slots[slot] : 0) << "slot " << slot;
    }
};

TEST_F(WrappersTest, ARegisterReadGivesTheLow16BitsOfTheDriversWord) {
    driverStores(0xABCD1312);
    struct {
        uint16_t value = 0;
        uint16_t behind = 0x5A5A;
    } output;
    EXPECT_EQ(ask([&] { return bspCpldGet(2, &output.value); }), Answer{BSP_OK});
    EXPECT_EQ(output.value, 0x1312);
    EXPECT_EQ(output.behind, 0x5A5A);
    EXPECT_EQ(unit(0), 2u);
    EXPECT_EQ(recorder.calls, requestOf("0x1001"));
}

TEST_F(WrappersTest, ARefusedRegisterReadLeavesTheOutput) {
    for (const int32_t result : {5, -5}) {
        driverStores(0x1312, result);
        uint16_t value = 0xA5A5;
        EXPECT_EQ(ask([&] { return bspCpldGet(2, &value); }), Answer{result});
        EXPECT_EQ(value, 0xA5A5);
    }
}

TEST_F(WrappersTest, ARegisterReadThatFailsOnTheWayLeavesTheOutput) {
    driverStores(0x1312);
    ioctlResult = -1;
    uint16_t value = 0xA5A5;
    EXPECT_EQ(ask([&] { return bspCpldGet(2, &value); }), (Answer{-1, "ioctl fail, cmd=0x1001\n"}));
    EXPECT_EQ(value, 0xA5A5);
}

TEST_F(WrappersTest, ARegisterWriteSendsTheLow16Bits) {
    EXPECT_EQ(ask([] { return bspCpldSet(0x1E, 0x12345); }), Answer{BSP_OK});
    expectSlots("0x1002", {0x1E, 0x2345});
}

TEST_F(WrappersTest, ARegisterWriteAnswersTheDriversResult) {
    driver = [](BspIoctlRecord &arrived) { arrived.result = 9; };
    EXPECT_EQ(ask([] { return bspCpldSet(0x1E, 1); }), Answer{9});
}

TEST_F(WrappersTest, ThereIsNoFpga) {
    uint16_t value = 0xA5A5;
    EXPECT_EQ(ask([&] { return bspFpgaGet(1, &value); }), Answer{BSP_E_NOT_SUPPORTED});
    EXPECT_EQ(value, 0xA5A5);
    EXPECT_EQ(ask([] { return bspFpgaGet(0, nullptr); }), Answer{BSP_E_NOT_SUPPORTED});
    EXPECT_EQ(ask([] { return bspFpgaSet(1, 2); }), Answer{BSP_E_NOT_SUPPORTED});
    EXPECT_EQ(recorder.calls, Calls{});
}

TEST_F(WrappersTest, AnI2cTransferPacksBusAndChannel) {
    struct {
        uint32_t bus, channel;
        uint64_t packed;
    } cases[] = {
        {3, 2, 0x0203},       {16, 0, 0x0010}, {0, 0x1FF, 0xFF00},
        {0x1FF, 0, 0x00FF},   {0, 0x100, 0},   {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFF},
        {0x80, 0x80, 0x8080},
    };
    auto *buf = reinterpret_cast<uint8_t *>(uintptr_t{0x80001000}); // NOLINT: never dereferenced
    for (const auto &expected : cases) {
        EXPECT_EQ(
            ask([&] { return bspI2cRead(expected.bus, expected.channel, 0x50, 0x10, 1, buf, 8); }),
            Answer{BSP_OK});
        expectSlots("0x1003", {expected.packed, 0x50, 0x10, 1, 0xFFFFFFFF80001000, 8});

        EXPECT_EQ(
            ask([&] { return bspI2cWrite(expected.bus, expected.channel, 0x51, 0x20, 2, buf, 9); }),
            Answer{BSP_OK});
        expectSlots("0x1004", {expected.packed, 0x51, 0x20, 2, 0xFFFFFFFF80001000, 9});
    }
}

TEST_F(WrappersTest, TheDriverJudgesTheArgumentsOfAnI2cTransfer) {
    driver = [](BspIoctlRecord &arrived) { arrived.result = -14; };
    EXPECT_EQ(ask([] { return bspI2cRead(0, 0, 0x1FF, 0x10000, 9, nullptr, -1); }), Answer{-14});
    expectSlots("0x1003", {0, 0x1FF, 0x10000, 9, 0, 0xFFFFFFFFFFFFFFFF});

    EXPECT_EQ(ask([] { return bspI2cWrite(0, 0, 0x1FF, 0x10000, 9, nullptr, 0); }), Answer{-14});
    expectSlots("0x1004", {0, 0x1FF, 0x10000, 9, 0, 0});
}

TEST_F(WrappersTest, GpioLinesAreForwardedUnchanged) {
    EXPECT_EQ(ask([] { return bspGpioDirectionInput(0x80000013); }), Answer{BSP_OK});
    expectSlots("0x1006", {0x80000013});

    EXPECT_EQ(ask([] { return bspGpioDirectionOutput(19, -2); }), Answer{BSP_OK});
    expectSlots("0x1007", {19, 0xFFFFFFFFFFFFFFFE});

    uint32_t value = 0;
    driverStores(0x80000001);
    EXPECT_EQ(ask([&] { return bspGpioGetValue(19, &value); }), Answer{BSP_OK});
    EXPECT_EQ(value, 0x80000001);
    EXPECT_EQ(unit(0), 19u);
    EXPECT_EQ(recorder.calls, requestOf("0x1008"));
}

TEST_F(WrappersTest, EveryWrapperAnswersTheDriversResult) {
    driver = [](BspIoctlRecord &arrived) { arrived.result = 77; };
    uint32_t value = 0;
    uint16_t content = 0;
    uint8_t byte = 0;
    EXPECT_EQ(bspCpldGet(1, &content), 77);
    EXPECT_EQ(bspCpldSet(1, 1), 77);
    EXPECT_EQ(bspI2cRead(0, 0, 0x50, 0, 1, &byte, 1), 77);
    EXPECT_EQ(bspI2cWrite(0, 0, 0x50, 0, 1, &byte, 1), 77);
    EXPECT_EQ(bspGpioDirectionInput(1), 77);
    EXPECT_EQ(bspGpioDirectionOutput(1, 1), 77);
    EXPECT_EQ(bspGpioGetValue(1, &value), 77);
}

TEST_F(WrappersTest, WithoutTheNodeEveryCallSaysSoOnce) {
    recorder.failAlways("open");
    uint32_t value = 0xA5A5A5A5;
    uint16_t content = 0xA5A5;
    uint8_t byte = 0xA5;
    const std::vector<std::function<int32_t()>> calls = {
        [&] { return bspCpldGet(1, &content); },
        [&] { return bspCpldSet(1, 1); },
        [&] { return bspI2cRead(0, 0, 0x50, 0, 1, &byte, 1); },
        [&] { return bspI2cWrite(0, 0, 0x50, 0, 1, &byte, 1); },
        [&] { return bspGpioDirectionInput(1); },
        [&] { return bspGpioDirectionOutput(1, 1); },
        [&] { return bspGpioGetValue(1, &value); },
    };
    for (const auto &call : calls)
        EXPECT_EQ(ask(call), (Answer{-1, "open file /dev/bspHandle fail\n"}));
    EXPECT_EQ(value, 0xA5A5A5A5);
    EXPECT_EQ(content, 0xA5A5);
    EXPECT_EQ(byte, 0xA5);
}

TEST_F(WrappersTest, ANullOutputIsRefusedBeforeAnythingIsDone) {
    EXPECT_EQ(ask([] { return bspCpldGet(1, nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(ask([] { return bspGpioGetValue(1, nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(recorder.calls, Calls{});
}

} // namespace
