// iodbg fan, temperature and clock.

#include "tests/iodbg/iodbg_test.h"
#include "tests/support/world.h"

#include <cerrno>

namespace {

using vb::FaultDevice;
using vb::FaultOp;

class ChassisCommandsTest : public IodbgTest {
  protected:
    void failSensor(int32_t result) {
        vb::FaultRule rule = refuse(FaultDevice::I2c, FaultOp::Read, result);
        rule.hasAddress = 1;
        rule.channel = 1;
        rule.devAddr = 0x4F;
        addFault(rule);
    }
};

using FanCommandsTest = ChassisCommandsTest;
using TemperatureCommandTest = ChassisCommandsTest;
using ClockCommandsTest = ChassisCommandsTest;

TEST_F(FanCommandsTest, ShowsLevelPresenceAndSpeed) {
    const ProcessResult result = iodbg({"fan", "get"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "Level (1-10)  1\n"
                          "\n"
                          "FAN  PRESENT  RPM\n"
                          "1    yes      2400\n"
                          "2    yes      2400\n");
    world::set("fan.1.present", "no");
    EXPECT_EQ(jsonAt(json({"fan", "get"}), "/fans/0/present"), "false");
}

TEST_F(ChassisCommandsTest, AnswerProgramsWithStableKeys) {
    const std::string fans = json({"fan", "get"});
    EXPECT_EQ(jsonKeys(fans, ""), (Words{"level", "fans", "failures"}));
    EXPECT_EQ(jsonKeys(fans, "/fans/0"), (Words{"fan", "present", "speed_rpm"}));
    EXPECT_EQ(jsonKeys(json({"fan", "set", "3"}), ""), (Words{"level", "verified", "failures"}));
    EXPECT_EQ(jsonKeys(json({"temperature"}), ""), (Words{"temperature_c", "failures"}));
    EXPECT_EQ(jsonKeys(json({"clock", "get"}), ""),
              (Words{"chip", "valid", "system", "drift_s", "failures"}));
    EXPECT_EQ(jsonKeys(json({"clock", "set", "now"}), ""), (Words{"before", "after", "failures"}));
    EXPECT_EQ(jsonKeys(json({"clock", "sync"}), ""), (Words{"system", "verified", "failures"}));
    EXPECT_EQ(jsonKeys(json({"init"}), ""), (Words{"system", "failures"}));
    iodbg({"i2c", "write", "0", "1", "0x51", "7", "13"}); // a month of 13, counted from 0
    EXPECT_EQ(jsonKeys(json({"clock", "get"}), ""), (Words{"chip", "valid", "system", "failures"}));
}

TEST_F(FanCommandsTest, SaysWhereNoLineTellsOfPresence) {
    useModel(0x0109);
    EXPECT_EQ(jsonAt(json({"fan", "get"}), "/fans/1/present"), "null");
    useModel(0x0309);
    const std::string answer = json({"fan", "get"});
    EXPECT_EQ(jsonAt(answer, "/fans/3/fan"), "4");
    EXPECT_EQ(jsonAt(answer, "/fans/3/present"), "null") << "the supplies have the same line";
}

TEST_F(FanCommandsTest, SetsTheLevelAndReadsItBack) {
    devices().cpld.reg[6] |= 0x0012; // other bits of the register stay
    const ProcessResult result = iodbg({"fan", "set", "10"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(devices().cpld.reg[6] & 0x01F2, 9 << 5 | 0x12);
    EXPECT_EQ(jsonAt(json({"fan", "set", "1"}), ""),
              "{\"level\":1,\"verified\":true,\"failures\":[]}");

    addFault(silence(FaultDevice::Cpld, FaultOp::Write));
    expectFailure({"fan", "set", "5"}, 3, {"the fans' level 5 was written, and it reads 1"});
}

TEST_F(FanCommandsTest, OneFanThatFailsDoesNotHideTheOthers) {
    useModel(0x0309);
    iodbg({"fan", "get"}); // from here on the model is known
    addFault(at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO), 29));
    const std::string answer = json({"fan", "get"}, 1);
    EXPECT_EQ(jsonAt(answer, "/fans/0/speed_rpm"), "2400");
    EXPECT_EQ(jsonAt(answer, "/fans/2/speed_rpm"), "null");
    EXPECT_EQ(jsonAt(answer, "/failures/0/item"), "\"fan3.speed_rpm\"");
}

TEST_F(FanCommandsTest, RefusesWrongWords) {
    expectRefusal({"fan"}, 2, "a command is missing: give one of get|set");
    expectRefusal({"fan", "set"}, 2, "LEVEL is required");
    for (const char *level : {"0", "11", "-1", "x"})
        expectRefusal({"fan", "set", "--", level}, 2, std::string("'") + level + "'");
}

TEST_F(TemperatureCommandTest, ShowsTheSensor) {
    world::set("temperature.ambient", "-40");
    EXPECT_EQ(iodbg({"temperature"}).out,
              "Temperature  " + world::get("temperature.sensor") + " C\n");
    EXPECT_EQ(jsonAt(json({"temperature"}), "/temperature_c"), world::get("temperature.sensor"));
    failSensor(-ENXIO);
    expectFailure({"temperature"}, 1, {"cannot read the temperature sensor"});
}

TEST_F(ClockCommandsTest, ShowsBothClocks) {
    world::set("rtc.time", "2051-02-28 12:34:56");
    const std::string answer = json({"clock", "get"});
    EXPECT_EQ(jsonAt(answer, "/chip"), "\"2051-02-28 12:34:56\"");
    EXPECT_EQ(jsonAt(answer, "/valid"), "true");
    EXPECT_GT(std::stoll(jsonAt(answer, "/drift_s")), 0);
}

TEST_F(ClockCommandsTest, SetsTheChipAndReadsItBack) {
    for (const char *time : {"2051-02-28T23:59:59", "2024-02-29 00:00:00", "1900-01-01T00:00:00",
                             "2059-12-31T23:59:59"}) {
        std::string shown = time;
        shown[10] = ' ';
        EXPECT_EQ(jsonAt(json({"clock", "set", time}), "/after"), "\"" + shown + "\"");
        EXPECT_EQ(world::get("rtc.time"), shown);
    }
    EXPECT_EQ(iodbg({"clock", "set", "now"}).exitCode, 0);
    const int64_t drift = std::stoll(jsonAt(json({"clock", "get"}), "/drift_s"));
    EXPECT_NEAR(static_cast<double>(drift), 0, 10);
}

TEST_F(ClockCommandsTest, AChipThatHoldsNoDateIsToldOf) {
    iodbg({"i2c", "write", "0", "1", "0x51", "7", "13"}); // a month of 13, counted from 0
    const ProcessResult result = iodbg({"clock", "get"});
    EXPECT_NE(result.out.find("no: the chip was without power; set it with 'iodbg"),
              std::string::npos)
        << result.out;
    expectFailure({"clock", "sync"}, 1, {"holds no date and time", "iodbg clock set"});
}

TEST_F(ClockCommandsTest, ATimeThatWasLostIsToldOf) {
    world::set("rtc.battery", "empty");
    world::set("power", "cycle");
    EXPECT_EQ(jsonKeys(json({"clock", "get"}), ""), (Words{"chip", "valid", "system", "failures"}));
    EXPECT_EQ(jsonAt(json({"clock", "get"}), "/valid"), "false");
    expectFailure({"clock", "sync"}, 1, {"holds no date and time", "iodbg clock set"});
    EXPECT_EQ(iodbg({"clock", "set", "now"}).exitCode, 0);
    EXPECT_EQ(jsonAt(json({"clock", "get"}), "/valid"), "true");
}

TEST_F(ClockCommandsTest, TheSystemClockIsSetFromTheChip) {
    EXPECT_EQ(world::get("system-clock"), "host");
    world::set("rtc.time", "2051-02-28 12:34:00");
    const std::string answer = json({"clock", "sync"});
    EXPECT_EQ(jsonAt(answer, "/system").substr(0, 18), "\"2051-02-28 12:34:");
    EXPECT_EQ(jsonAt(json({"clock", "get"}), "/system").substr(0, 15), "\"2051-02-28 12:");
    EXPECT_NE(world::get("system-clock"), "host");
    world::set("rtc.time", "2001-01-01 00:00:00");
    EXPECT_EQ(jsonAt(json({"init"}), "/system").substr(0, 18), "\"2001-01-01 00:00:");
}

TEST_F(ClockCommandsTest, AModelWithoutTheChipSaysSo) {
    useModel(0x0409);
    for (const Words &words : {Words{"clock", "get"}, {"clock", "set", "now"}, {"clock", "sync"}})
        expectFailure(words, 1, {"this model has none"});
}

TEST_F(ClockCommandsTest, RefusesWhatIsNoTime) {
    for (const char *time :
         {"", "x", "2051-02-29T00:00:00", "2024-13-01T00:00:00", "2024-00-01T00:00:00",
          "2024-01-01T24:00:00", "2024-01-01T00:00:60", "2060-01-01T00:00:00",
          "1899-12-31T23:59:59", "2024-01-01T00:00:00 ", "+024-01-01T00:00:00"})
        expectRefusal({"clock", "set", time}, 2, "is no time from 1900 to 2059");
    expectRefusal({"clock", "set"}, 2, "TIME is required");
}

} // namespace
