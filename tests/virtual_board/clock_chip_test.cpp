// The calendar clock.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"
#include "tests/support/world.h"

#include <unistd.h>

namespace {

using world::get;
using world::refusal;
using world::set;

constexpr uint32_t kWithClock[] = {0x0309, 0x0509, 0x0609, 0x0709, 0x0809,
                                   0x8409, 0x8509, 0x8609, 0x8709, 0x8809};
constexpr uint32_t kWithout[] = {0x0109, 0x0409, 0x8209, 0x8309};

class ClockChipTest : public VirtualBoardTest {
  protected:
    /** A register's byte; -1 when nothing answers. */
    static int byteAt(uint32_t reg) {
        uint8_t byte = 0;
        return bspI2cRead(0, 1, 0x51, reg, 1, &byte, 1) == BSP_OK ? byte : -1;
    }
    static void writeByte(uint32_t reg, uint8_t byte) {
        EXPECT_EQ(bspI2cWrite(0, 1, 0x51, reg, 1, &byte, 1), BSP_OK);
    }
    /** The time some seconds behind another one. */
    static std::string after(const std::string &time, unsigned seconds) {
        set("rtc.time", time);
        sleep(seconds);
        return get("rtc.time");
    }
};

TEST_F(ClockChipTest, RegistersAreDecimalDigits) {
    set("rtc.time", "2051-11-30 21:58:37");
    const int expected[] = {0x37, 0x58, 0x21, 0x30, 4, 0x10, 0xF1}; // a Thursday, month from 0
    for (uint32_t i = 0; i < 7; ++i)
        EXPECT_EQ(byteAt(2 + i), expected[i]) << 2 + i;
    uint8_t all[7] = {};
    EXPECT_EQ(bspI2cRead(0, 1, 0x51, 2, 1, all, 7), BSP_OK);
    EXPECT_EQ(all[6], 0xF1);
    set("rtc.time", "2024-01-01 00:00:00");
    EXPECT_EQ(byteAt(8), 0xC4);
    EXPECT_EQ(byteAt(6), 1);
}

TEST_F(ClockChipTest, ProgramsSetItRegisterByRegister) {
    const uint8_t bytes[] = {0x05, 0x59, 0x23, 0x28, 3, 0x01, 0x99};
    for (uint32_t i = 0; i < 7; ++i)
        writeByte(2 + i, bytes[i]);
    EXPECT_EQ(get("rtc.time"), "1999-02-28 23:59:05");
    sleep(55);
    EXPECT_EQ(get("rtc.time"), "1999-03-01 00:00:00");
    EXPECT_EQ(byteAt(6), 4);
}

TEST_F(ClockChipTest, RunsOnTheBoardsClock) {
    EXPECT_EQ(get("rtc.time"), "2024-01-01 00:00:00");
    usleep(999999);
    EXPECT_EQ(get("rtc.time"), "2024-01-01 00:00:00");
    usleep(1);
    EXPECT_EQ(get("rtc.time"), "2024-01-01 00:00:01");
    for (int i = 0; i < 10; ++i) {
        usleep(700000);
        byteAt(2);
    }
    EXPECT_EQ(get("rtc.time"), "2024-01-01 00:00:08");
}

TEST_F(ClockChipTest, CarriesGoAllTheWay) {
    EXPECT_EQ(after("2023-12-31 23:59:59", 1), "2024-01-01 00:00:00");
    EXPECT_EQ(after("2024-02-28 23:59:59", 1), "2024-02-29 00:00:00");
    EXPECT_EQ(after("2023-02-28 23:59:59", 1), "2023-03-01 00:00:00");
    EXPECT_EQ(after("2024-04-30 12:00:00", 86400), "2024-05-01 12:00:00");
    EXPECT_EQ(after("2024-01-01 00:00:00", 366 * 86400), "2025-01-01 00:00:00");
    EXPECT_EQ(after("1999-12-31 23:59:59", 1), "2000-01-01 00:00:00");
    EXPECT_EQ(byteAt(8), 0xA0);
    EXPECT_EQ(after("2059-12-31 23:59:59", 1), "1900-01-01 00:00:00"); // no digit is left
}

TEST_F(ClockChipTest, BitsThatAreNoDigitsReadAsTheChipHasThem) {
    writeByte(4, 0xFF);
    EXPECT_EQ(byteAt(4), 0x3F);
    writeByte(2, 0x80 | 0x12);
    EXPECT_EQ(byteAt(2), 0x92);
    sleep(1);
    EXPECT_EQ(byteAt(2), 0x93);
    writeByte(7, 0x80);
    EXPECT_EQ(byteAt(7), 0x80);
    EXPECT_EQ(get("rtc.time").substr(0, 7), "2024-01");
}

TEST_F(ClockChipTest, AStoppedChipDoesNotCount) {
    writeByte(0, 0x20);
    sleep(10);
    EXPECT_EQ(get("rtc.time"), "2024-01-01 00:00:00");
    writeByte(0, 0);
    sleep(2);
    EXPECT_EQ(get("rtc.time"), "2024-01-01 00:00:02");
}

TEST_F(ClockChipTest, TheBatteryKeepsTheTimeWhileThePowerIsOff) {
    set("rtc.time", "2030-05-06 07:08:09");
    set("power", "cycle");
    EXPECT_EQ(get("rtc.time"), "2030-05-06 07:08:09");
    set("rtc.battery", "empty");
    EXPECT_EQ(bspHwReboot(), BSP_OK); // the power stays on
    EXPECT_EQ(get("rtc.time"), "2030-05-06 07:08:09");
    set("power", "cycle");
    EXPECT_EQ(get("rtc.time"), "1900-01-01 00:00:00");
    EXPECT_EQ(byteAt(2), 0x80); // it says so
    sleep(5);
    EXPECT_EQ(byteAt(2), 0x85);
    set("rtc.battery", "good");
    set("rtc.time", "2030-05-06 07:08:09");
    EXPECT_EQ(byteAt(2), 0x09);
    set("power", "cycle");
    EXPECT_EQ(get("rtc.time"), "2030-05-06 07:08:09");
}

TEST_F(ClockChipTest, SomeModelsHaveNone) {
    for (const uint32_t devId : kWithClock) {
        useModel(devId);
        EXPECT_EQ(byteAt(8), 0xC4) << devId;
    }
    for (const uint32_t devId : kWithout) {
        useModel(devId);
        EXPECT_EQ(byteAt(8), -1) << devId;
        EXPECT_NE(refusal("rtc.time").find("it has no clock"), std::string::npos);
    }
}

TEST_F(ClockChipTest, TimesThatThereAreNotAreRefused) {
    for (const char *time :
         {"", "2024-02-30 00:00:00", "2023-02-29 00:00:00", "2024-13-01 00:00:00",
          "2024-00-01 00:00:00", "2024-01-00 00:00:00", "1899-01-01 00:00:00",
          "2060-01-01 00:00:00", "2024-01-01 24:00:00", "2024-01-01 00:60:00",
          "2024-01-01 00:00:60", "2024-01-01 00:00:00x", "2024-01-01", "2024-1--1 00:00:00"})
        EXPECT_NE(refusal("rtc.time", time).find("is no time from 1900 to 2059"), std::string::npos)
            << time;
    EXPECT_EQ(get("rtc.time"), "2024-01-01 00:00:00");
    EXPECT_NE(refusal("rtc.battery", "low").find("is none of good|empty"), std::string::npos);
}

} // namespace
