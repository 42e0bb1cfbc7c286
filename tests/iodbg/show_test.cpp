// iodbg show.

#include "tests/iodbg/iodbg_test.h"
#include "tests/support/patterns.h"
#include "tests/support/world.h"
#include "virtual_board/board/circuits.h"

#include <cerrno>

namespace {

using vb::FaultDevice;
using vb::FaultOp;
using ShowTest = IodbgTest;

/** The lines that depend on the host's clock. */
std::string withoutSystemTime(const std::string &text) {
    return replaced(text, "  (System clock|Difference).*\n", "");
}

TEST_F(ShowTest, PrintsTheBoardForPeople) {
    const ProcessResult result = iodbg({"show"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(withoutSystemTime(result.out),
              "Board\n"
              "  Model (device id)                0x0709\n"
              "  Device serial version            0x09\n"
              "  Hardware version                 A.3\n"
              "  CPLD version                     V1.2\n"
              "  FPGA version                     ---\n"
              "  Boot-loader version              1.2.3\n"
              "  Serial number                    VB00000001\n"
              "  Base MAC (stored)                02:00:5E:10:00:00\n"
              "  Board MAC (base, last byte + 1)  02:00:5E:10:00:01\n"
              "\n"
              "Product record\n"
              "  Magic check   ok\n"
              "  CRC check     ok\n"
              "  CRC stored    0x2F346F7C\n"
              "  CRC computed  0x2F346F7C\n"
              "\n"
              "Climate\n"
              "  Temperature       40 C\n"
              "  Fan level (1-10)  1\n"
              "\n"
              "FAN  PRESENT  RPM\n"
              "1    yes      2400\n"
              "2    yes      2400\n"
              "\n"
              "Clock\n"
              "  Clock chip (local time)    2024-01-01 00:00:00\n"
              "  Valid                      yes\n"
              "\n"
              "Supply 1\n"
              "  Plugged         yes\n"
              "  Presence line   0 (active low)\n"
              "  Status          0\n"
              "  Type            1\n"
              "  Readings        taken over PMBus\n"
              "  Output voltage  54.000 V\n"
              "  Output power    102.625 W\n"
              "  Temperature 1   28 C\n"
              "  Record          readable\n"
              "  Product name    AC SUPPLY 54V\n"
              "  Serial number   PSU0000001\n"
              "  Product data 1  5649525455414C000000000000000000\n"
              "  Product data 2  414320535550504C5920353456" +
                  std::string(36, '0') +
                  "\n                  00\n"
                  "  Product data 3  00000000\n"
                  "\n"
                  "Supply 2\n"
                  "  Plugged         yes\n"
                  "  Presence line   0 (active low)\n"
                  "  Status          0\n"
                  "  Type            1\n"
                  "  Readings        taken over PMBus\n"
                  "  Output voltage  54.000 V\n"
                  "  Output power    102.625 W\n"
                  "  Temperature 1   28 C\n"
                  "  Record          readable\n"
                  "  Product name    AC SUPPLY 54V\n"
                  "  Serial number   PSU0000002\n"
                  "  Product data 1  5649525455414C000000000000000000\n"
                  "  Product data 2  414320535550504C5920353456" +
                  std::string(36, '0') +
                  "\n                  00\n"
                  "  Product data 3  00000000\n"
                  "\n"
                  "PoE\n"
                  "  Controller                present\n"
                  "  Firmware                  usable\n"
                  "  Firmware version          V1.0.0.0\n"
                  "  Initialised               no\n"
                  "  Power budget, W           0.000\n"
                  "  Power drawn, W            0.000\n"
                  "  Rated for each supply, W  1440.000\n"
                  "\n"
                  "SFP cages\n"
                  "  Ports       49-54\n"
                  "  Modules in  none\n");
}

TEST_F(ShowTest, AnswersProgramsWithStableKeys) {
    const std::string answer = json({"show"});
    EXPECT_EQ(jsonKeys(answer, ""), (Words{"board", "record", "climate", "fans", "clock", "supply1",
                                           "supply2", "poe", "sfp", "cages", "failures"}));
    EXPECT_EQ(jsonAt(answer, "/climate"), "{\"temperature_c\":40,\"fan_level\":1}");
    EXPECT_EQ(jsonAt(answer, "/fans/1"), "{\"fan\":2,\"present\":true,\"speed_rpm\":2400}");
    EXPECT_EQ(jsonKeys(answer, "/clock"), (Words{"chip", "valid", "system", "drift_s"}));
    EXPECT_EQ(jsonAt(answer, "/sfp"), "{\"ports\":[49,50,51,52,53,54],\"plugged\":[]}");
    EXPECT_EQ(jsonAt(answer, "/cages"), "[]");
    EXPECT_EQ(
        jsonKeys(answer, "/board"),
        (Words{"device_id", "device_serial_version", "hardware_version", "cpld_version",
               "fpga_version", "boot_loader_version", "serial_number", "base_mac", "board_mac"}));
    EXPECT_EQ(jsonAt(answer, "/board/device_id"), "1801");
    EXPECT_EQ(jsonAt(answer, "/board/device_serial_version"), "9");
    EXPECT_EQ(jsonAt(answer, "/board/hardware_version"), "\"A.3\"");
    EXPECT_EQ(jsonAt(answer, "/board/cpld_version"), "\"V1.2\"");
    EXPECT_EQ(jsonAt(answer, "/board/boot_loader_version"), "\"1.2.3\"");
    EXPECT_EQ(jsonAt(answer, "/board/board_mac"), "\"02:00:5E:10:00:01\"");
    EXPECT_EQ(jsonAt(answer, "/record"), "{\"magic_ok\":true,\"crc_ok\":true,\"crc_stored\":"
                                         "791965564,\"crc_computed\":791965564}");
    EXPECT_EQ(
        jsonKeys(answer, "/supply2"),
        (Words{"plugged", "presence_line", "status", "type", "has_readings", "output_voltage_mv",
               "output_power_mw", "temperature1_c", "has_record", "product_name", "serial_number",
               "product_data_1_hex", "product_data_2_hex", "product_data_3_hex"}));
    EXPECT_EQ(jsonAt(answer, "/supply2/output_power_mw"), "102625");
    EXPECT_EQ(jsonAt(answer, "/supply2/temperature1_c"), "28");
    EXPECT_EQ(jsonAt(answer, "/supply2/has_record"), "true");
    EXPECT_EQ(jsonAt(answer, "/supply2/serial_number"), "\"PSU0000002\"");
    EXPECT_EQ(jsonAt(answer, "/failures"), "[]");
}

TEST_F(ShowTest, SaysThatAModelHasNoSupplyRecords) {
    useModel(0x0309);
    const ProcessResult result = iodbg({"show"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.out.find("Supply 1\n"
                              "  Plugged        yes\n"
                              "  Presence line  0 (active low)\n"
                              "  Status         0\n"
                              "  Type           1\n"
                              "  Readings       none: not with this model\n"
                              "  Record         none: not with this model\n"),
              std::string::npos);
    EXPECT_EQ(jsonAt(json({"show"}), "/supply1"),
              "{\"plugged\":true,\"presence_line\":0,\"status\":0,\"type\":1,"
              "\"has_readings\":false,\"has_record\":false}");
}

TEST_F(ShowTest, ListsTheModulesAlone) {
    world::set("sfp.50.module", "lr");
    const std::string answer = json({"show"});
    EXPECT_EQ(jsonAt(answer, "/sfp/plugged"), "[50]");
    EXPECT_EQ(jsonKeys(answer, "/cages").size(), 1u);
    EXPECT_EQ(jsonAt(answer, "/cages/0"), jsonAt(json({"sfp", "list"}), "/cages/1"));
}

TEST_F(ShowTest, AModelWithoutAClockHasNone) {
    useModel(0x0409);
    EXPECT_EQ(jsonKeys(json({"show"}), ""), (Words{"board", "record", "climate", "fans", "supply1",
                                                   "supply2", "sfp", "cages", "failures"}));
}

TEST_F(ShowTest, WhatIsUnreadableHidesNothingElse) {
    world::set("sfp.50.module", "dead");
    iodbg({"show"}); // from here on the model is known
    vb::FaultRule sensor = refuse(FaultDevice::I2c, FaultOp::Read, -ENXIO);
    sensor.hasAddress = 1;
    sensor.channel = 1;
    vb::FaultRule clock = sensor;
    sensor.devAddr = 0x4F;
    clock.devAddr = 0x51;
    for (const vb::FaultRule &rule :
         {sensor, clock, at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO), 28)})
        addFault(rule);
    const std::string answer = json({"show"}, 1);
    EXPECT_EQ(jsonAt(answer, "/climate"), "{\"temperature_c\":null,\"fan_level\":1}");
    EXPECT_EQ(jsonAt(answer, "/fans/0"), "{\"fan\":1,\"present\":true,\"speed_rpm\":null}");
    EXPECT_EQ(jsonAt(answer, "/clock"), "{\"chip\":null}");
    EXPECT_EQ(jsonAt(answer, "/supply1/plugged"), "true");
    EXPECT_EQ(jsonAt(answer, "/cages/0/port"), "50");
    EXPECT_EQ(jsonAt(answer, "/cages/0/vendor"), "null");
    for (const auto &[i, item] : {std::pair{0, "climate.temperature_c"},
                                  {1, "fan1.speed_rpm"},
                                  {2, "fan2.speed_rpm"},
                                  {3, "clock.chip"},
                                  {4, "port 50.identification"}})
        EXPECT_EQ(jsonAt(answer, "/failures/" + std::to_string(i) + "/item"),
                  "\"" + std::string(item) + "\"");

    addFault(at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO), 8));
    const std::string dark = json({"show"}, 1);
    EXPECT_EQ(jsonAt(dark, "/sfp/plugged"), "null");
    EXPECT_EQ(jsonAt(dark, "/failures/4/item"), "\"sfp.plugged\"");
}

TEST_F(ShowTest, DoesNotAskAnUnpluggedSupply) {
    devices().supply[1].isPresent = 0;
    vb::driveSupplyLines(board(), 1);
    trace();
    const std::string answer = json({"show"});
    EXPECT_EQ(jsonAt(answer, "/supply1/serial_number"), "\"PSU0000001\"");
    EXPECT_EQ(jsonAt(answer, "/supply2"),
              "{\"plugged\":false,\"presence_line\":1,\"status\":1,\"has_record\":null}");
    for (const std::string &line : requests())
        EXPECT_EQ(line.find("bus 0 ch 3"), std::string::npos) << line;
    EXPECT_NE(iodbg({"show"}).out.find("Supply 2\n"
                                       "  Plugged        no: it is not asked further\n"
                                       "  Presence line  1 (active low)\n"
                                       "  Status         1\n"
                                       "  Record         not read\n"),
              std::string::npos);
}

TEST_F(ShowTest, ShowsTheRestWhenASupplyDoesNotAnswer) {
    devices().supply[1].isPresent = 0; // but its presence line says otherwise
    const std::string answer = json({"show"}, 1);
    EXPECT_EQ(jsonAt(answer, "/supply1/output_voltage_mv"), "54000");
    EXPECT_EQ(jsonAt(answer, "/supply2"),
              "{\"plugged\":true,\"presence_line\":0,\"status\":0,\"type\":1,"
              "\"has_readings\":null,\"has_record\":null}");
    EXPECT_EQ(jsonKeys(answer, "/failures").size(), 2u);
    EXPECT_EQ(jsonKeys(answer, "/failures/0"),
              (Words{"item", "status", "status_name", "meaning", "next"}));
    EXPECT_EQ(jsonAt(answer, "/failures/0/item"), "\"supply2.has_readings\"");
    EXPECT_EQ(jsonAt(answer, "/failures/1/item"), "\"supply2\"");
    EXPECT_EQ(jsonAt(answer, "/failures/1/status"), "-1");
    EXPECT_EQ(jsonAt(answer, "/failures/1/status_name"), "\"BSP_E_FAILED\"");
}

TEST_F(ShowTest, SaysThatThePoeControllerIsMissing) {
    devices().cpld.reg[6] |= 0x4000;
    EXPECT_EQ(jsonAt(json({"show"}), "/poe"), "{\"controller_present\":false}");
    useModel(0x8609);
    EXPECT_EQ(jsonKeys(json({"show"}), ""),
              (Words{"board", "record", "climate", "fans", "clock", "supply1", "supply2", "sfp",
                     "cages", "failures"}));
}

TEST_F(ShowTest, ShowsTheRestWhenTheCpldRefuses) {
    addFault(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO));
    const ProcessResult result = iodbg({"show"});
    EXPECT_EQ(result.exitCode, 1);
    for (const char *line : {"  Model (device id)                failed: status -5\n",
                             "  Hardware version                 failed: status -5\n",
                             "  Serial number                    VB00000001\n",
                             "\nFailures\n  board.device_id: status -5, an answer of the kernel "
                             "module; as an error\n      number 'Input/output error'\n    next: "})
        EXPECT_NE(result.out.find(line), std::string::npos) << line << "\n" << result.out;
}

TEST_F(ShowTest, ShowsTheRestWhenFilesCannotBeOpened) {
    addFault(openFails("/tmp/bsp/devId", EACCES));
    addFault(openFails("/proc/cmdline", ENOENT));
    const std::string answer = json({"show"}, 1);
    EXPECT_EQ(jsonAt(answer, "/board/device_id"), "null");
    EXPECT_EQ(jsonAt(answer, "/board/boot_loader_version"), "null");
    EXPECT_EQ(jsonAt(answer, "/board/cpld_version"), "\"V1.2\"");
    EXPECT_EQ(jsonAt(answer, "/failures/0/status_name"), "\"BSP_E_OPEN\"");
    EXPECT_EQ(jsonAt(answer, "/failures/1/item"), "\"board.boot_loader_version\"");
    EXPECT_EQ(jsonAt(answer, "/supply1"), "{\"plugged\":null,\"has_record\":null}");
    EXPECT_EQ(jsonAt(answer, "/failures/2/item"), "\"supply1.plugged\"");
}

TEST_F(ShowTest, JudgesADamagedRecord) {
    record()[64] ^= 0x01;
    const std::string wrongCrc = json({"show"}, 1);
    EXPECT_EQ(jsonAt(wrongCrc, "/record/magic_ok"), "true");
    EXPECT_EQ(jsonAt(wrongCrc, "/record/crc_ok"), "false");
    EXPECT_EQ(jsonAt(wrongCrc, "/record/crc_stored"), "791965564");
    EXPECT_NE(jsonAt(wrongCrc, "/record/crc_computed"), "791965564");
    EXPECT_EQ(jsonAt(wrongCrc, "/board/serial_number"), "null");
    EXPECT_EQ(jsonAt(wrongCrc, "/failures/0/status_name"), "\"BSP_E_INVALID\"");

    record()[0] = 'X';
    const std::string noMagic = json({"show"}, 1);
    EXPECT_EQ(jsonAt(noMagic, "/record/magic_ok"), "false");
    EXPECT_EQ(jsonAt(noMagic, "/failures/0/status_name"), "\"BSP_E_NO_RECORD\"");
}

TEST_F(ShowTest, KeepsTheLibrarysMessagesOffStandardOutput) {
    addFault(ioctlFails(FaultDevice::I2c, FaultOp::Read, EIO));
    const ProcessResult result = iodbg({"show"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("ioctl fail, cmd=0x1003\n"), std::string::npos);
    EXPECT_EQ(result.out.find("ioctl fail"), std::string::npos);
}

TEST_F(ShowTest, PrintsUnreadableTextEscaped) {
    std::fill_n(supplyRecord(1), 80, uint8_t{0xFF});
    const std::string answer = json({"show"});
    EXPECT_EQ(jsonAt(answer, "/supply1/product_data_3_hex"), "\"FFFFFFFF\"");
    EXPECT_EQ(jsonAt(answer, "/supply1/product_name").substr(0, 7), "\"\\\\xFF\\");
}

TEST_F(ShowTest, EndsAShortBootLoaderVersionAtItsSpace) {
    for (const auto &[line, version] :
         {std::pair{"bootver=1.2 root=/dev/x\n", "\"1.2\""}, std::pair{"bootver=7.8\n", "\"7.8\""},
          std::pair{"console=ttyS0\n", "\"\""}}) {
        std::FILE *file = std::fopen(boardFile("/proc/cmdline").c_str(), "w");
        ASSERT_NE(file, nullptr);
        std::fputs(line, file);
        std::fclose(file);
        EXPECT_EQ(jsonAt(json({"show"}), "/board/boot_loader_version"), version) << line;
    }
}

} // namespace
