// Watchdog, reset, PTP line and supplies of the board.

#include "virtual_board/board/circuits.h"

#include "bsp.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/devices/poe_ports.h"

#include <cmath>
#include <unistd.h>

namespace {

using vb::ResetReason;

class CircuitsTest : public VirtualBoardTest {
  protected:
    /** Lets a request reach the board, which then catches up. */
    static uint16_t reg(uint32_t number) {
        uint16_t value = 0;
        EXPECT_EQ(bspCpldGet(number, &value), BSP_OK);
        return value;
    }
    static void sleepMs(unsigned ms) { usleep(ms * 1000); }
};

TEST_F(CircuitsTest, AWatchdogThatIsNotFedResetsTheBoard) {
    EXPECT_EQ(bspCpldSet(7, 3), BSP_OK);
    EXPECT_EQ(bspGpioDirectionOutput(7, 1), BSP_OK);
    EXPECT_EQ(bspWatchdogPeriodSet(5), BSP_OK);
    sleepMs(4999);
    EXPECT_EQ(reg(7), 3);
    EXPECT_EQ(devices().resets, 0u);
    sleepMs(1);
    EXPECT_EQ(reg(7), 0);
    EXPECT_EQ(devices().resets, 1u);
    EXPECT_EQ(devices().lastReset, ResetReason::Watchdog);
    EXPECT_EQ(devices().gpio.isOutput[7], 0);
    EXPECT_EQ(reg(4), 0); // disarmed
    EXPECT_EQ(reg(1), 0x0709);
    EXPECT_EQ(reg(6), 0x0000);
    sleep(100);
    reg(1);
    EXPECT_EQ(devices().resets, 1u);
}

TEST_F(CircuitsTest, FeedingKeepsTheWatchdogQuiet) {
    EXPECT_EQ(bspWatchdogPeriodSet(1), BSP_OK);
    for (int i = 0; i < 10; ++i) {
        sleepMs(999);
        EXPECT_EQ(bspWatchdogFeed(), BSP_OK);
    }
    EXPECT_EQ(devices().resets, 0u);
    // A level that stays is no edge.
    for (int i = 0; i < 3; ++i) {
        sleepMs(400);
        EXPECT_EQ(bspGpioDirectionOutput(0, 0), BSP_OK);
    }
    EXPECT_EQ(devices().resets, 1u);
}

TEST_F(CircuitsTest, AStoppedWatchdogSleeps) {
    EXPECT_EQ(bspWatchdogPeriodSet(1), BSP_OK);
    EXPECT_EQ(bspWatchdogStop(), BSP_OK);
    sleep(100);
    reg(1);
    EXPECT_EQ(devices().resets, 0u);
}

TEST_F(CircuitsTest, WritingZeroToTheResetRegisterResets) {
    EXPECT_EQ(bspCpldSet(10, 0x1234), BSP_OK);
    EXPECT_EQ(bspCpldSet(13, 0x1234), BSP_OK);
    EXPECT_EQ(bspCpldSet(5, 1), BSP_OK);
    EXPECT_EQ(devices().resets, 0u);
    EXPECT_EQ(bspHwReboot(), BSP_OK);
    EXPECT_EQ(devices().resets, 1u);
    EXPECT_EQ(devices().lastReset, ResetReason::Register);
    EXPECT_EQ(reg(10), 0);
    EXPECT_EQ(reg(13), 0xFFFF); // the LEDs are dark
}

TEST_F(CircuitsTest, AResetStartsThePoeControllerAnew) {
    ASSERT_EQ(bspPoeDeviceInit(), BSP_OK);
    vb::poeSetDevice(devices().poe, 0, {1, vb::PoeSignature::Good, 4, 0, 20000, 20000}, now());
    sleepMs(1000);
    reg(1);
    EXPECT_EQ(devices().poe.port[0].phase, vb::PoePhase::Delivering);
    EXPECT_EQ(bspHwReboot(), BSP_OK);
    EXPECT_EQ(devices().poe.port[0].phase, vb::PoePhase::Disabled);
    sleepMs(1000);
    uint32_t isInitialised = 7;
    EXPECT_EQ(bspPoeInitStatusGet(&isInitialised), BSP_OK);
    EXPECT_EQ(isInitialised, 0u);
}

TEST_F(CircuitsTest, PtpPulsesAreCounted) {
    for (uint32_t pulses = 1; pulses <= 3; ++pulses) {
        EXPECT_EQ(bspPtpTriggerSet(0), BSP_OK);
        EXPECT_EQ(devices().ptpPulses, pulses);
    }
    EXPECT_EQ(reg(6) & 0x8000, 0x8000);
}

TEST_F(CircuitsTest, SuppliesAreRead) {
    vb::PmbusSupply &supply = devices().supply[1].pmbus;
    supply.inputMv = 118500;
    supply.inputMa = 3250;
    supply.inputMw = 385000;
    supply.outputMv = 54250;
    supply.outputMa = 6640;
    supply.outputMw = 360000;
    supply.degrees[0] = -5;
    supply.degrees[1] = 40;
    supply.degrees[2] = 85;
    BspPowerInfo info = {};
    EXPECT_EQ(bspPowerInfoGet(2, &info), BSP_OK);
    EXPECT_EQ(info.type, 1);
    EXPECT_EQ(info.inputVoltage, 118500);
    EXPECT_NEAR(info.inputCurrent, 3250, 4);
    EXPECT_EQ(info.inputPower, 385000);
    EXPECT_EQ(info.outputVoltage, 54250);
    EXPECT_NEAR(info.outputCurrent, 6640, 7);
    EXPECT_EQ(info.outputPower, 360000);
    EXPECT_EQ(info.temperature1, -5);
    EXPECT_EQ(info.temperature2, 40);
    EXPECT_EQ(info.temperature3, 85);
}

TEST_F(CircuitsTest, ABusySupplyIsAskedAgainAndASilentOneLeavesItsFields) {
    BspPowerInfo info = {};
    devices().supply[0].pmbus.busyEvery = 2;
    const uint64_t start = now();
    EXPECT_EQ(bspPowerInfoGet(1, &info), BSP_OK);
    EXPECT_EQ(info.inputVoltage, 230000);
    EXPECT_EQ(info.temperature3, 45);
    EXPECT_EQ(now() - start, 17u * 100000000 + 8 * 5000000);
    devices().supply[0].pmbus.busyEvery = 1;
    EXPECT_EQ(bspPowerInfoGet(1, &info), BSP_OK);
    EXPECT_EQ(info.inputVoltage, 0);
}

TEST_F(CircuitsTest, SupplyLinesFollowTheSupply) {
    const struct {
        uint32_t model;
        uint32_t isPresent, hasInputFailed, hasOutputFailed;
        int32_t present, status;
    } cases[] = {{0x0709, 1, 0, 0, 0, 0}, {0x0709, 1, 1, 0, 0, 1}, {0x0709, 1, 0, 1, 0, 4},
                 {0x0709, 0, 0, 0, 1, 1}, {0x0309, 1, 0, 0, 0, 0}, {0x0309, 1, 1, 0, 0, 1},
                 {0x0309, 1, 0, 1, 0, 2}, {0x0309, 0, 0, 0, 1, 3}};
    for (const auto &expected : cases) {
        for (const uint32_t index : {0u, 1u}) {
            useModel(expected.model);
            vb::Supply &supply = devices().supply[index];
            supply.isPresent = expected.isPresent;
            supply.pmbus.hasInputFailed = expected.hasInputFailed;
            supply.pmbus.hasOutputFailed = expected.hasOutputFailed;
            vb::driveSupplyLines(board(), index);
            const auto n = static_cast<int32_t>(index + 1);
            int32_t value = 7;
            EXPECT_EQ(bspPowerPresentGet(n, &value), BSP_OK);
            EXPECT_EQ(value, expected.present);
            EXPECT_EQ(bspPowerStatusGet(n, &value), BSP_OK);
            EXPECT_EQ(value, expected.status);
            EXPECT_EQ(bspPowerStatusGet(3 - n, &value), BSP_OK); // the other one
            EXPECT_EQ(value, 0);
            const int32_t typeStatus = bspPowerTypeGet(n, &value);
            EXPECT_EQ(typeStatus, expected.isPresent != 0 ? BSP_OK : BSP_E_FAILED);
        }
    }
}

TEST_F(CircuitsTest, AFailedSupplyHasNoPower) {
    devices().supply[0].pmbus.hasOutputFailed = 1;
    BspPowerInfo info = {};
    EXPECT_EQ(bspPowerInfoGet(1, &info), BSP_OK);
    EXPECT_EQ(info.inputVoltage, 230000);
    EXPECT_EQ(info.outputVoltage, 0);
    EXPECT_EQ(info.outputPower, 0);
    devices().supply[0].pmbus.hasInputFailed = 1;
    EXPECT_EQ(bspPowerInfoGet(1, &info), BSP_OK);
    EXPECT_EQ(info.inputVoltage, 0);
    devices().supply[0].isPresent = 0;
    EXPECT_EQ(bspPowerInfoGet(1, &info), BSP_E_FAILED);
}

TEST(PmbusModel, Linear11KeepsTenBits) {
    EXPECT_EQ(vb::toLinear11(25000) & 0x7FF, 800);
    EXPECT_EQ(vb::toLinear11(0) & 0x7FF, 0);
    for (int64_t value = 1000; value < 4000000000; value += value / 3) {
        for (const int64_t sign : {1, -1}) {
            const uint16_t word = vb::toLinear11(sign * value);
            const int exponent = static_cast<int>(word >> 11) - (word >> 15 != 0 ? 32 : 0);
            const int mantissa = (word & 0x7FF) - ((word & 0x400) != 0 ? 2048 : 0);
            EXPECT_NEAR(std::ldexp(mantissa * 1000.0, exponent), static_cast<double>(sign * value),
                        static_cast<double>(value) / 1000);
        }
    }
}

} // namespace
