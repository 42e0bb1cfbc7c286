// iodbg cpld, i2c and gpio.

#include "tests/iodbg/iodbg_test.h"
#include "tests/support/world.h"

#include <cerrno>

namespace {

using vb::FaultDevice;
using vb::FaultOp;
using CpldCommandsTest = IodbgTest;
using I2cCommandsTest = IodbgTest;
using GpioCommandsTest = IodbgTest;

TEST_F(CpldCommandsTest, GetsRegisters) {
    EXPECT_EQ(iodbg({"cpld", "get", "1", "0x2"}).out,
              "REGISTER  VALUE   NAME\n"
              "1         0x0709  device id\n"
              "2         0x1312  version\n"
              "\n"
              "REGISTER  BITS   FIELD                              VALUE\n"
              "1         0-7    device serial version              9\n"
              "2         12-15  hardware version, letter (0 is @)  1\n"
              "2         8-11   hardware version, number           3\n"
              "2         4-7    CPLD version, major                1\n"
              "2         0-3    CPLD version, minor                2\n");
    EXPECT_EQ(jsonAt(json({"cpld", "get", "1", "9"}), ""),
              "{\"registers\":[{\"register\":1,\"value\":1801,\"name\":\"device id\"},"
              "{\"register\":9,\"value\":0,\"name\":null}],"
              "\"fields\":[{\"register\":1,\"bits\":\"0-7\",\"field\":\"device serial "
              "version\",\"value\":9}],\"failures\":[]}");
}

TEST_F(CpldCommandsTest, TakesRangesAndTellsWhichLinesAreSet) {
    devices().cpld.reg[17] = 0x8001;
    const std::string answer = json({"cpld", "get", "16-17", "6"});
    EXPECT_EQ(jsonAt(answer, "/registers/1"),
              "{\"register\":17,\"value\":32769,\"name\":\"SFP receive loss\"}");
    EXPECT_EQ(jsonAt(answer, "/registers/2/name"), "\"control\"");
    EXPECT_EQ(jsonAt(answer, "/fields/1"), "{\"register\":17,\"bits\":\"0-15\",\"field\":"
                                           "\"ports without a signal\",\"value\":[17,32]}");
    EXPECT_EQ(jsonAt(json({"cpld", "get", "1-5"}), "/registers/4/register"), "5");
}

TEST_F(CpldCommandsTest, AFailedRegisterDoesNotHideTheOthers) {
    addFault(at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO), 9));
    const std::string answer = json({"cpld", "get", "9", "1"}, 1);
    EXPECT_EQ(jsonAt(answer, "/registers/0/value"), "null");
    EXPECT_EQ(jsonAt(answer, "/registers/1/value"), "1801");
    EXPECT_EQ(jsonAt(answer, "/failures/0/status"), std::to_string(-EIO));
    EXPECT_EQ(jsonAt(answer, "/failures/0/status_name"), "null");
}

TEST_F(CpldCommandsTest, ScansTheRegistersThatAnswer) {
    addFault(at(refuse(FaultDevice::Cpld, FaultOp::Read, -EINVAL), 7));
    const std::string answer = json({"cpld", "get"});
    EXPECT_EQ(jsonAt(answer, "/registers/6/register"), "6");
    EXPECT_EQ(jsonAt(answer, "/registers/7/register"), "8");
    EXPECT_EQ(jsonAt(answer, "/registers/62/register"), "63");
}

TEST_F(CpldCommandsTest, AScanFailsWhenNothingAnswers) {
    addFault(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO));
    expectFailure({"cpld", "get"}, 1, {"cannot read any CPLD register: status -5"});
}

TEST_F(CpldCommandsTest, SetsARegister) {
    devices().cpld.reg[10] = 0x00FF;
    EXPECT_EQ(iodbg({"cpld", "set", "10", "0xA5A5"}).out, "Register  10\n"
                                                          "Before    0x00FF\n"
                                                          "Written   0xA5A5\n"
                                                          "After     0xA5A5\n");
    EXPECT_EQ(devices().cpld.reg[10], 0xA5A5);
    EXPECT_EQ(jsonAt(json({"cpld", "set", "10", "65535"}), ""),
              "{\"register\":10,\"before\":42405,\"written\":65535,\"after\":65535,"
              "\"failures\":[]}");
}

TEST_F(CpldCommandsTest, DetectsARegisterThatReadsBackDifferently) {
    expectFailure({"cpld", "set", "1", "5"}, 3, {"CPLD register 1 was 0x0709", "reads 0x0709"});
    addFault(corrupt(FaultDevice::Cpld, FaultOp::Write, 1));
    expectFailure({"cpld", "set", "10", "0x10"}, 3, {"0x0010 was written, and it reads 0x0011"});
}

TEST_F(CpldCommandsTest, ReportsFailures) {
    addFault(refuse(FaultDevice::Cpld, FaultOp::Write, 77));
    expectFailure({"cpld", "set", "10", "1"}, 1,
                  {"cannot write CPLD register 10: status 77, an answer of the kernel module's "
                   "own; check"});
    vb::FaultRule rule = refuse(FaultDevice::Cpld, FaultOp::Read, EIO);
    rule.effect = vb::FaultEffect::IoctlFails;
    addFault(rule);
    expectFailure({"cpld", "set", "10", "1"}, 1, {"cannot read CPLD register 10: BSP_E_FAILED"});
}

TEST_F(CpldCommandsTest, RefusesWrongWords) {
    expectRefusal({"cpld", "set", "10", "0x10000"}, 2, "VALUE: '0x10000' is not a number from 0");
    expectRefusal({"cpld", "set", "10", "-1"}, 2, "is not a number");
    expectRefusal({"cpld", "set", "10"}, 2, "VALUE is required");
    expectRefusal({"cpld", "set", "10", "1", "2"}, 2, "not expected");
    expectRefusal({"cpld", "get", "1", "x"}, 2, "REG: 'x' is not a number");
    expectRefusal({"cpld", "get", "0x100000000"}, 2, "REG: ");
    for (const char *range : {"5-1", "1-64", "-5", "1-", "1-2-3", "1-x"})
        expectRefusal({"cpld", "get", "--", range}, 2, "REG: '");
    expectRefusal({"cpld"}, 2, "see 'iodbg cpld --help'");
}

TEST_F(I2cCommandsTest, Reads) {
    EXPECT_EQ(iodbg({"i2c", "read", "0", "2", "0x50", "0xB0", "3"}).out,
              "0x00B0  41 43 20                                         |AC |\n");
    EXPECT_EQ(jsonAt(json({"i2c", "read", "0", "0", "0x51", "0", "7"}), ""),
              "{\"bus\":0,\"channel\":0,\"device\":81,\"offset\":0,\"length_bytes\":7,"
              "\"data_hex\":\"444556494E464F\",\"failures\":[]}");
}

TEST_F(I2cCommandsTest, SendsItsArguments) {
    trace();
    iodbg({"i2c", "read", "0", "3", "0x50", "0x10", "4"});
    EXPECT_EQ(requests(), Words{"I2C read  bus 0 ch 3 dev 0x50 off 0x10 len 4: FF FF FF FF"});
    EXPECT_EQ(iodbg({"i2c", "read", "0", "0", "0x51", "0", "1", "--offset-length", "0"}).exitCode,
              0);
}

TEST_F(I2cCommandsTest, Writes) {
    const std::string answer = json({"i2c", "write", "0", "0", "0x50", "4", "0AFF10"});
    EXPECT_EQ(jsonAt(answer, "/data_hex"), "\"0AFF10\"");
    EXPECT_EQ(jsonAt(answer, "/length_bytes"), "3");
    const uint8_t *bytes = devices().eeprom.bytes + 4;
    EXPECT_EQ(std::vector<uint8_t>(bytes, bytes + 3), (std::vector<uint8_t>{0x0A, 0xFF, 0x10}));
}

TEST_F(I2cCommandsTest, ReportsFailures) {
    expectFailure({"i2c", "read", "9", "0", "0x50", "0", "1"}, 1,
                  {"cannot read bus 9 channel 0 device 0x50 offset 0x00: status -6"});
    addFault(refuse(FaultDevice::I2c, FaultOp::Write, -EIO));
    expectFailure({"i2c", "write", "0", "0", "0x50", "0", "00"}, 1, {"cannot write bus 0"});
}

TEST_F(I2cCommandsTest, ScansForDevices) {
    const std::string answer = json({"i2c", "scan"});
    EXPECT_EQ(jsonKeys(answer, ""), (Words{"devices", "failures"}));
    EXPECT_EQ(jsonAt(answer, "/devices/0"),
              "{\"bus\":0,\"channel\":0,\"device\":80,\"answers\":true,\"name\":\"EEPROM of the "
              "board\"}");
    const std::string shown = iodbg({"i2c", "scan", "0", "1"}).out;
    EXPECT_EQ(shown, "BUS  CHANNEL  DEVICE  ANSWERS  USUALLY\n"
                     "0    1        0x4F    yes      temperature sensor\n"
                     "0    1        0x51    yes      clock chip\n");
    world::set("sfp.49.module", "sr");
    EXPECT_EQ(iodbg({"i2c", "scan", "1", "0"}).out,
              "BUS  CHANNEL  DEVICE  ANSWERS  USUALLY\n"
              "1    0        0x50    yes      SFP module, identification\n"
              "1    0        0x51    yes      SFP module, diagnostics\n");
    EXPECT_EQ(iodbg({"i2c", "scan", "1", "5"}).out, "no device answers\n");
}

TEST_F(I2cCommandsTest, AScanTakesNothingFromThePoeController) {
    trace();
    const std::string answer = json({"i2c", "scan", "16", "0"});
    EXPECT_EQ(jsonAt(answer, "/devices/0"), "{\"bus\":16,\"channel\":0,\"device\":32,\"answers\":"
                                            "null,\"name\":\"PoE controller\"}");
    const Lines sent = requests();
    EXPECT_EQ(sent.size(), 111u) << "of 112 addresses";
    for (const std::string &request : sent)
        EXPECT_EQ(request.find("dev 0x20"), std::string::npos) << request;
}

TEST_F(I2cCommandsTest, AScanEndsWhereABusIsHeld) {
    addFault(refuse(FaultDevice::I2c, FaultOp::Read, -ETIMEDOUT));
    expectFailure({"i2c", "scan"}, 1, {"cannot read bus 0 channel 0 device 0x08"});
    expectRefusal({"i2c", "scan", "0"}, 2, "CHANNEL is required with BUS");
}

TEST_F(I2cCommandsTest, RefusesWrongWords) {
    expectRefusal({"i2c", "read", "256", "0", "0x50", "0", "1"}, 2, "BUS: ");
    expectRefusal({"i2c", "read", "0", "256", "0x50", "0", "1"}, 2, "CHANNEL: ");
    expectRefusal({"i2c", "read", "0", "0", "0x80", "0", "1"}, 2, "DEVICE: ");
    expectRefusal({"i2c", "read", "0", "0", "0x50", "256", "1"}, 2, "does not fit in 1 bytes");
    expectRefusal({"i2c", "read", "0", "0", "0x50", "1", "1", "--offset-length", "0"}, 2,
                  "does not fit in 0 bytes");
    expectRefusal({"i2c", "read", "0", "0", "0x50", "0", "1", "--offset-length", "5"}, 2,
                  "--offset-length: ");
    expectRefusal({"i2c", "read", "0", "0", "0x50", "0", "0"}, 2, "LENGTH: ");
    expectRefusal({"i2c", "read", "0", "0", "0x50", "0", "65536"}, 2, "LENGTH: ");
    expectRefusal({"i2c", "write", "0", "0", "0x50", "0", "ABC"}, 2, "HEX: ");
    expectRefusal({"i2c", "write", "0", "0", "0x50", "0"}, 2, "HEX is required");
    expectRefusal({"i2c", "write", "0", "300", "0x50", "0", "AA"}, 2, "CHANNEL: ");
}

TEST_F(GpioCommandsTest, Gets) {
    devices().gpio.external[5] = 1;
    EXPECT_EQ(iodbg({"gpio", "get", "5"}).out, "Line   5\nLevel  1\n");
    EXPECT_EQ(jsonAt(json({"gpio", "get", "5"}), ""), "{\"line\":5,\"level\":1,\"failures\":[]}");
}

TEST_F(GpioCommandsTest, ListsTheLinesThatAreWired) {
    devices().gpio.external[19] = 1;
    EXPECT_EQ(iodbg({"gpio", "list"}).out, "LINE  LEVEL  NAME\n"
                                           "0     0      watchdog: an edge feeds it\n"
                                           "19    1      reset of the PoE controller: low\n");
    addFault(at(refuse(FaultDevice::Gpio, FaultOp::Read, -EIO), 19));
    const std::string answer = json({"gpio", "list"}, 1);
    EXPECT_EQ(jsonKeys(answer, "/lines/0"), (Words{"line", "level", "name"}));
    EXPECT_EQ(jsonAt(answer, "/lines/0/level"), "0");
    EXPECT_EQ(jsonAt(answer, "/lines/1/level"), "null");
    EXPECT_EQ(jsonAt(answer, "/failures/0/item"), "\"line19\"");
}

TEST_F(GpioCommandsTest, Sets) {
    EXPECT_EQ(iodbg({"gpio", "set", "5", "1"}).exitCode, 0);
    EXPECT_EQ(devices().gpio.isOutput[5], 1);
    EXPECT_EQ(devices().gpio.driven[5], 1);
    EXPECT_EQ(jsonAt(json({"gpio", "set", "5", "0"}), "/level"), "0");
    EXPECT_EQ(devices().gpio.driven[5], 0);
}

TEST_F(GpioCommandsTest, DetectsALineThatDoesNotFollow) {
    devices().gpio.external[5] = 1;
    addFault(silence(FaultDevice::Gpio, FaultOp::Write));
    expectFailure({"gpio", "set", "5", "0"}, 3, {"was driven to 0 but reads 1"});
}

TEST_F(GpioCommandsTest, ReportsFailures) {
    expectFailure({"gpio", "get", "32"}, 2, {"cannot read GPIO line 32: status -22"});
    expectFailure({"gpio", "set", "32", "1"}, 2, {"cannot drive GPIO line 32: status -22"});
}

TEST_F(GpioCommandsTest, RefusesWrongWords) {
    expectRefusal({"gpio", "set", "5", "2"}, 2, "LEVEL: '2' is not a number from 0 to 1");
    expectRefusal({"gpio", "set", "five", "1"}, 2, "LINE: ");
    expectRefusal({"gpio", "get", "-5"}, 2, "LINE: ");
    expectRefusal({"gpio", "get", "4294967296"}, 2, "LINE: ");
    expectRefusal({"gpio", "get"}, 2, "LINE is required");
}

} // namespace
