// Every request that a function makes fails once: the status says so, and nothing stays open.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"

#include <cstring>
#include <filesystem>

namespace {

struct Call {
    const char *name;
    uint32_t requests; // to the driver
    uint32_t files;    // of the board that it opens
    std::function<int32_t()> run;
};

uint8_t buffer[128];
uint32_t word;
char *const kTextBuffer = reinterpret_cast<char *>(buffer);
auto *const kRecordBuffer = reinterpret_cast<BspDevinfo *>(buffer);
auto *const kSupplyRecord = reinterpret_cast<BspSupplyRecord *>(buffer);

const Call kCalls[] = {
    {"bspGpioDirectionInput", 1, 0, [] { return bspGpioDirectionInput(1); }},
    {"bspGpioDirectionOutput", 1, 0, [] { return bspGpioDirectionOutput(1, 1); }},
    {"bspGpioGetValue", 1, 0, [] { return bspGpioGetValue(1, &word); }},
    {"bspCpldSet", 1, 0, [] { return bspCpldSet(6, 1); }},
    {"bspLocalEepromRead", 4, 0, [] { return bspLocalEepromRead(250, buffer, 40); }},
    {"bspLocalEepromWrite", 2, 0, [] { return bspLocalEepromWrite(10, buffer, 20); }},
    {"bspPowerPieGet", 5, 0, [] { return bspPowerPieGet(1, kSupplyRecord); }},
    {"bspPowerPieSet", 5, 0, [] { return bspPowerPieSet(2, kSupplyRecord); }},
    {"ioDevIdGet", 1, 1, [] { return ioDevIdGet(&word); }},
    {"ioDevSerialVerGet", 1, 0, [] { return ioDevSerialVerGet(&word); }},
    {"ioHwVersionGet", 1, 0, [] { return ioHwVersionGet(kTextBuffer); }},
    {"ioCpldVersionGet", 1, 0, [] { return ioCpldVersionGet(kTextBuffer); }},
    {"ioBiosVersionGet", 0, 1, [] { return ioBiosVersionGet(kTextBuffer); }},
    {"ioDevinfoGet 0", 8, 0, [] { return ioDevinfoGet(0, kRecordBuffer); }},
    {"ioDevinfoGet 0x50", 6, 1, [] { return ioDevinfoGet(0x50, kRecordBuffer); }},
    {"ioDevinfoSet 0", 8, 0, [] { return ioDevinfoSet(0, kRecordBuffer); }},
    {"ioDevinfoSet 0x51", 6, 1, [] { return ioDevinfoSet(0x51, kRecordBuffer); }},
    {"ioMacAddrGet", 8, 0, [] { return ioMacAddrGet(0, buffer); }},
    {"ioMacAddrSet", 16, 0, [] { return ioMacAddrSet(0, buffer); }},
    {"ioSerialNumGet", 8, 0, [] { return ioSerialNumGet(kTextBuffer, &word); }},
    {"ioSerialNumSet", 16, 0, [] { return ioSerialNumSet("ABC", 3); }},
};

class EveryFailureTest : public VirtualBoardTest {
  protected:
    void SetUp() override {
        VirtualBoardTest::SetUp();
        healthy_ = devices();
    }

    /**
     * Fails the n-th request that a rule matches, for n = 1, 2 ... until a call makes no n-th one;
     * answers how many calls failed. Each failed call must answer the status.
     */
    uint32_t failEach(const Call &call, vb::FaultRule rule, int32_t status) {
        SCOPED_TRACE(call.name);
        rule.when = vb::FaultWhen::Once;
        for (rule.nth = 1;; ++rule.nth) {
            devices() = healthy_;
            std::memset(buffer, 0, sizeof(buffer));
            std::memcpy(buffer, "DEVINFO", 8);
            std::filesystem::remove(boardFile("/tmp/bsp/devId"));
            clearFaults();
            addFault(rule);
            const int32_t answered = answerOf(call.run).status;
            if (board().faults.rule[0].fired == 0) {
                EXPECT_EQ(answered, BSP_OK);
                return rule.nth - 1;
            }
            EXPECT_EQ(answered, status) << "request " << rule.nth;
        }
    }

  private:
    vb::Devices healthy_;
};

TEST_F(EveryFailureTest, TheDriversResultIsAnswered) {
    for (const Call &call : kCalls) {
        uint32_t failed = 0;
        failed += failEach(call, refuse(vb::FaultDevice::Gpio, vb::FaultOp::Any, 21), 21);
        failed += failEach(call, refuse(vb::FaultDevice::Cpld, vb::FaultOp::Any, 22), 22);
        failed += failEach(call, refuse(vb::FaultDevice::I2c, vb::FaultOp::Any, 23), BSP_E_FAILED);
        EXPECT_EQ(failed, call.requests) << call.name;
    }
}

TEST_F(EveryFailureTest, AFailedIoctlIsAnswered) {
    for (const Call &call : kCalls) {
        uint32_t failed = 0;
        for (const auto device :
             {vb::FaultDevice::Gpio, vb::FaultDevice::Cpld, vb::FaultDevice::I2c})
            failed += failEach(call, ioctlFails(device, vb::FaultOp::Any, EIO), -1);
        EXPECT_EQ(failed, call.requests) << call.name;
    }
}

TEST_F(EveryFailureTest, AFailedOpenIsAnswered) {
    for (const Call &call : kCalls) {
        EXPECT_EQ(failEach(call, openFails("/dev/bspHandle", ENOENT), -1), call.requests)
            << call.name;
        const uint32_t failed = failEach(call, openFails("/tmp/bsp/devId", EACCES), BSP_E_OPEN) +
                                failEach(call, openFails("/proc/cmdline", EACCES), BSP_E_FAILED);
        EXPECT_EQ(failed, call.files) << call.name;
    }
}

} // namespace
