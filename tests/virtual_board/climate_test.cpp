// Fans and temperature: what the registers and the sensor tell.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"
#include "tests/support/world.h"
#include "virtual_board/devices/poe_ports.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace {

using world::get;
using world::refusal;
using world::set;

class ClimateTest : public VirtualBoardTest {
  protected:
    static uint16_t reg(uint32_t number) {
        uint16_t value = 0;
        EXPECT_EQ(bspCpldGet(number, &value), BSP_OK);
        return value;
    }
    static void setLevel(uint32_t level) { // 1 to 10, as the register has it from 0
        EXPECT_EQ(bspCpldSet(6, static_cast<uint16_t>((reg(6) & ~0x1E0u) | (level - 1) << 5)),
                  BSP_OK);
    }
    /** What the sensor answers; nothing: 999. */
    static int sensed() {
        uint8_t byte = 0;
        return bspI2cRead(0, 1, 0x4F, 0, 0, &byte, 1) == BSP_OK ? static_cast<int8_t>(byte) : 999;
    }
};

TEST_F(ClimateTest, FourFansHaveAByteEach) {
    useModel(0x0309);
    EXPECT_EQ(reg(28), 0x1414); // 20 counts of 120 rpm at the lowest level
    EXPECT_EQ(reg(29), 0x1414);
    set("fan.2.state", "stuck");
    set("fan.3.state", "failing");
    sleep(60);
    EXPECT_EQ(reg(28), 0x0014);
    EXPECT_EQ(reg(29), 0x140A);
    EXPECT_EQ(get("fan.2.speed"), "0");
    EXPECT_EQ(get("fan.3.speed"), "1200");
}

TEST_F(ClimateTest, TwoFansShareTheByteOfTheSlowerOne) {
    EXPECT_EQ(reg(28), 0x0014);
    EXPECT_EQ(reg(29), 0);
    set("fan.2.state", "failing");
    sleep(60);
    EXPECT_EQ(reg(28), 0x000A);
    set("fan.2.state", "good");
    set("fan.1.state", "stuck");
    sleep(60);
    EXPECT_EQ(reg(28), 0);
}

TEST_F(ClimateTest, EachLevelHasItsSpeed) {
    for (uint32_t level = 1; level <= 10; ++level) {
        setLevel(level);
        sleep(60);
        EXPECT_EQ(reg(28), 20 + 10 * (level - 1)) << level;
        EXPECT_EQ(get("fan.1.speed"), std::to_string(2400 + 1200 * (level - 1)));
    }
    setLevel(16); // the field has room for more than there are
    sleep(60);
    EXPECT_EQ(reg(28), 110);
}

TEST_F(ClimateTest, SpeedFollowsWithInertiaInBothDirections) {
    setLevel(10); // 10800 rpm to go, 600 a second
    EXPECT_EQ(reg(28), 20);
    sleep(1);
    EXPECT_EQ(reg(28), 25);
    sleep(9);
    EXPECT_EQ(get("fan.1.speed"), "8400");
    setLevel(1);
    sleep(1);
    EXPECT_EQ(get("fan.1.speed"), "7800");
    sleep(9);
    EXPECT_EQ(reg(28), 20);
}

TEST_F(ClimateTest, AHeldFanKeepsItsSpeed) {
    setLevel(5);
    sleep(60);
    set("fan.1.state", "held");
    setLevel(1);
    sleep(60);
    EXPECT_EQ(get("fan.1.speed"), "7200");
    set("fan.1.state", "good");
    sleep(60);
    EXPECT_EQ(get("fan.1.speed"), "2400");
}

TEST_F(ClimateTest, HowOftenSomebodyAsksChangesNothing) {
    setLevel(7);
    set("temperature.ambient", "40");
    for (int i = 0; i < 300; ++i) {
        usleep(130000);
        reg(28);
    }
    const std::string often = get("temperature.board") + get("fan.1.speed");
    useModel(0x0709);
    setLevel(7);
    set("temperature.ambient", "40");
    sleep(39);
    EXPECT_EQ(get("temperature.board") + get("fan.1.speed"), often);
}

TEST_F(ClimateTest, APulledFanOfAPairClearsThePairsPresence) {
    EXPECT_EQ(reg(31), 0x0100);
    set("fan.2.present", "no");
    EXPECT_EQ(reg(31), 0);
    EXPECT_EQ(get("fan.2.speed"), "0");
    set("fan.2.present", "yes");
    EXPECT_EQ(reg(31), 0x0100);
    EXPECT_EQ(reg(28), 0); // it starts from standstill
    sleep(2);
    EXPECT_EQ(reg(28), 10);
    EXPECT_EQ(bspHwReboot(), BSP_OK);
    EXPECT_EQ(reg(31), 0x0100);
}

TEST_F(ClimateTest, FourFansTellOfPairsOnTheSuppliesLines) {
    useModel(0x0609);
    EXPECT_EQ(reg(30) & 3, 0); // the supplies' lines at first
    for (const auto &[fan, bit] : {std::pair{"fan.1.present", 1},
                                   {"fan.2.present", 1},
                                   {"fan.3.present", 2},
                                   {"fan.4.present", 2}}) {
        set(fan, "no");
        EXPECT_EQ(reg(30) & 3 & bit, 0) << fan;
        set(fan, "yes");
        EXPECT_EQ(reg(30) & bit, bit) << fan;
    }
    EXPECT_EQ(reg(31), 0);
}

TEST_F(ClimateTest, WhatTheWorldPutsOnTheLinesStaysUntilTheFansChange) {
    set("cpld.28", "0xABCD");
    set("cpld.31", "0");
    EXPECT_EQ(reg(28), 0xABCD);
    EXPECT_EQ(reg(31), 0);
    setLevel(2);
    sleep(60);
    EXPECT_EQ(reg(28), 30);
}

TEST_F(ClimateTest, TheSensorTellsWholeDegreesAndBelowZero) {
    EXPECT_EQ(sensed(), 40); // 25, 10 for an idle board, 5 for the supplies' output
    EXPECT_EQ(get("temperature.board"), "40.1");
    set("temperature.ambient", "-30");
    sleep(3600);
    EXPECT_EQ(sensed(), -15);
    EXPECT_EQ(get("temperature.board"), "-14.9");
    EXPECT_EQ(get("temperature.sensor"), "-15");
}

TEST_F(ClimateTest, TheTemperatureFollowsSlowly) {
    set("temperature.ambient", "65");
    sleep(120); // its time constant: two thirds of the way
    EXPECT_NEAR(std::stod(get("temperature.board")), 40.1 + 40 * 0.632, 0.2);
    sleep(10000);
    EXPECT_EQ(get("temperature.board"), "80.1");
}

TEST_F(ClimateTest, FansCoolAndLoadWarms) {
    setLevel(10);
    sleep(3600);
    EXPECT_EQ(get("temperature.board"), "28.5");
    setLevel(1);
    set("fan.1.state", "stuck");
    set("fan.2.state", "stuck");
    sleep(3600);
    EXPECT_EQ(get("temperature.board"), "85.5");
    set("fan.1.state", "good");
    set("fan.2.state", "good");
    set("supply.1.output-power", "902600"); // 800 W more
    sleep(3600);
    EXPECT_EQ(get("temperature.board"), "60.1");
    set("supply.1.output", "failed");
    sleep(3600);
    EXPECT_EQ(get("temperature.board"), "37.5");
}

TEST_F(ClimateTest, PoePowerWarms) {
    ASSERT_EQ(bspPoeDeviceInit(), BSP_OK);
    set("poe.1.device", "class=8 draws=80000 requests=80000");
    sleep(3600);
    ASSERT_EQ(get("poe.1.state"), "delivering");
    EXPECT_EQ(get("temperature.board"), "42.1");
}

TEST_F(ClimateTest, ASensorCanBeMissingOrStuck) {
    set("temperature.state", "missing");
    EXPECT_EQ(sensed(), 999);
    EXPECT_EQ(get("temperature.sensor"), "none");
    set("temperature.state", "stuck");
    set("temperature.ambient", "50");
    sleep(3600);
    EXPECT_EQ(sensed(), 40);
    set("temperature.state", "good");
    EXPECT_EQ(sensed(), 65);
}

TEST_F(ClimateTest, AResetByTheWatchdogEndsTheLevelWhenItHappens) {
    EXPECT_EQ(bspWatchdogPeriodSet(10), BSP_OK);
    setLevel(10);
    sleep(15); // 10 s up, then 5 s down
    EXPECT_EQ(reg(28), (2400 + 10 * 600 - 5 * 600) / 120);
}

TEST_F(ClimateTest, ModelsWithoutFansHaveAnEmptyTachometer) {
    useModel(0x0109);
    EXPECT_EQ(reg(28), 0);
    EXPECT_EQ(reg(31), 0);
    EXPECT_EQ(sensed(), 35);
    EXPECT_NE(refusal("fan.1.speed").find("it has no fans"), std::string::npos);
}

TEST_F(ClimateTest, BadValuesAreRefused) {
    EXPECT_NE(refusal("fan.3.present", "no").find("1 to 2"), std::string::npos);
    EXPECT_NE(refusal("fan.1.present", "perhaps").find("is none of no|yes"), std::string::npos);
    EXPECT_NE(refusal("fan.1.state", "").find("none of good|failing|stuck|held"),
              std::string::npos);
    EXPECT_NE(refusal("fan.1.speed", "100").find("can only be read"), std::string::npos);
    EXPECT_NE(refusal("temperature.ambient", "86").find("-40 to 85"), std::string::npos);
    EXPECT_NE(refusal("temperature.ambient", "warm").find("-40 to 85"), std::string::npos);
    EXPECT_NE(refusal("temperature.state", "bad").find("none of good|stuck|missing"),
              std::string::npos);
}

} // namespace
