// iodbg sfp and mdio.

#include "tests/iodbg/iodbg_test.h"
#include "tests/support/patterns.h"
#include "tests/support/world.h"

#include <cerrno>

namespace {

using vb::FaultDevice;
using vb::FaultOp;

class SfpCommandsTest : public IodbgTest {
  protected:
    void plug(uint32_t port, const std::string &module) {
        world::set("sfp." + std::to_string(port) + ".module", module);
    }
    std::string shown(uint32_t port, const std::string &key) const {
        return jsonAt(json({"sfp", "show", std::to_string(port)}), "/" + key);
    }
};
using MdioCommandsTest = SfpCommandsTest;

TEST_F(SfpCommandsTest, ListsEveryCageOfTheModel) {
    plug(49, "sr");
    world::set("sfp.49.link", "up");
    const std::string answer = json({"sfp", "list"});
    EXPECT_EQ(jsonAt(answer, "/cages/0"),
              "{\"port\":49,\"present\":true,\"transmitter_on\":true,\"rx_loss\":false,"
              "\"tx_fault\":false,\"compliance\":\"10GBASE-SR\",\"vendor\":\"VIRTUAL\","
              "\"part_number\":\"VIRTUAL-SR\",\"temperature_mc\":48125,"
              "\"tx_power_nw\":572200,\"rx_power_nw\":500000,\"verdict\":\"good\"}");
    EXPECT_EQ(jsonAt(answer, "/cages/5/port"), "54");
    EXPECT_EQ(jsonAt(answer, "/cages/5/present"), "false");
    for (const char *key : {"vendor", "temperature_mc", "rx_power_nw", "verdict"})
        EXPECT_EQ(jsonAt(answer, std::string("/cages/5/") + key), "null");
    useModel(0x0609);
    EXPECT_EQ(jsonAt(json({"sfp", "list"}), "/cages/53/port"), "54");
}

TEST_F(SfpCommandsTest, AnswersProgramsWithStableKeys) {
    plug(49, "sr");
    const std::string list = json({"sfp", "list"});
    EXPECT_EQ(jsonKeys(list, ""), (Words{"cages", "failures"}));
    const std::string module = json({"sfp", "show", "49"});
    EXPECT_EQ(jsonKeys(module, ""), (Words{"port",
                                           "present",
                                           "transmitter_on",
                                           "rx_loss",
                                           "tx_fault",
                                           "kind",
                                           "connector",
                                           "compliance",
                                           "encoding",
                                           "rate_mbaud",
                                           "wavelength_nm",
                                           "reach",
                                           "vendor",
                                           "oui",
                                           "part_number",
                                           "revision",
                                           "serial_number",
                                           "date",
                                           "base_checksum_ok",
                                           "extended_checksum_ok",
                                           "copper_kind",
                                           "has_diagnostics",
                                           "diagnostics_checksum_ok",
                                           "data_ready",
                                           "diagnostics",
                                           "failures"}));
    EXPECT_EQ(jsonKeys(module, "/diagnostics/0"),
              (Words{"quantity", "value", "judgement", "low_alarm", "low_warning", "high_warning",
                     "high_alarm"}));
    EXPECT_EQ(jsonKeys(json({"sfp", "show", "50"}), ""),
              (Words{"port", "present", "transmitter_on", "rx_loss", "tx_fault", "failures"}));
    EXPECT_EQ(jsonKeys(json({"sfp", "dump", "49"}), ""), (Words{"a0h", "a2h", "failures"}));
    EXPECT_EQ(jsonKeys(json({"sfp", "tx", "49", "on"}), ""),
              (Words{"port", "transmitter_on", "failures"}));
    plug(49, "copper-mode4");
    const std::string phy = json({"sfp", "phy", "49"});
    EXPECT_EQ(jsonKeys(phy, ""), (Words{"registers", "failures"}));
    EXPECT_EQ(jsonKeys(phy, "/registers/0"), (Words{"register", "value"}));
}

TEST_F(SfpCommandsTest, WhatALineAnswersIsNamedByItsKey) {
    iodbg({"sfp", "list"}); // from here on the model is known
    addFault(at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO), 12));
    const std::string answer = json({"sfp", "show", "49"}, 1);
    EXPECT_EQ(jsonAt(answer, "/failures/0/item"), "\"transmitter_on\"");
    EXPECT_EQ(jsonAt(answer, "/present"), "false");
}

TEST_F(SfpCommandsTest, APageThatCannotBeReadIsNamedByItsKey) {
    plug(49, "sr");
    vb::FaultRule rule = refuse(FaultDevice::I2c, FaultOp::Read, -EIO);
    rule.hasAddress = 1;
    rule.bus = 1;
    rule.channel = 0;
    rule.devAddr = 0x51;
    addFault(rule);
    const std::string answer = json({"sfp", "show", "49"}, 1);
    EXPECT_EQ(jsonAt(answer, "/failures/0/item"), "\"diagnostics\"");
    EXPECT_EQ(jsonAt(answer, "/part_number"), "\"VIRTUAL-SR\"");
}

TEST_F(SfpCommandsTest, ADeadModuleDoesNotHideTheOthers) {
    plug(49, "dead");
    plug(50, "lr");
    const std::string answer = json({"sfp", "list"}, 1);
    EXPECT_EQ(jsonAt(answer, "/cages/0/compliance"), "null");
    EXPECT_EQ(jsonAt(answer, "/cages/1/compliance"), "\"10GBASE-LR\"");
    EXPECT_EQ(jsonAt(answer, "/failures/0/item"), "\"port 49.identification\"");
    EXPECT_EQ(jsonAt(answer, "/cages/0/verdict"), "\"fault\"");
}

TEST_F(SfpCommandsTest, TheListHasLightTemperatureAndVerdict) {
    for (const uint32_t port : {49u, 50u, 52u})
        plug(port, "sr");
    plug(51, "dac");
    for (const char *port : {"49", "50", "51", "52"})
        world::set("sfp." + std::string(port) + ".link", "up");
    world::set("sfp.49.rx-power", "500");
    world::set("sfp.50.rx-power", "60"); // below the maker's limit
    world::set("sfp.52.state", "tx-fault");
    const ProcessResult result = iodbg({"sfp", "list"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const std::string light = result.out.substr(result.out.find("\n\n") + 2);
    const Words lines = linesOf(light);
    ASSERT_EQ(lines.size(), 5u) << "only what is plugged" << result.out;
    EXPECT_EQ(replaced(lines[0], "  +", "|"), "PORT|TEMPERATURE|TX POWER|RX POWER|VERDICT");
    EXPECT_TRUE(matches(lines[1], "49 +[0-9.]+ C +-2.4[0-9] dBm +-3.01 dBm +good")) << lines[1];
    EXPECT_TRUE(matches(lines[2], "50 .* -12.22 dBm +warning: received power too low")) << lines[2];
    EXPECT_TRUE(matches(lines[3], "51 +- +- +- +good")) << lines[3];
    EXPECT_TRUE(matches(lines[4], "52 .* fault: transmitter fault.*")) << lines[4];
    world::set("sfp.52.rx-power", "60"); // less than what is found first
    const std::string answer = json({"sfp", "list"});
    EXPECT_EQ(jsonAt(answer, "/cages/1/verdict"), "\"warning\"");
    EXPECT_EQ(jsonAt(answer, "/cages/1/rx_power_nw"), "60000");
    EXPECT_EQ(jsonAt(answer, "/cages/2/rx_power_nw"), "null") << "it measures none";
    EXPECT_EQ(jsonAt(answer, "/cages/3/verdict"), "\"fault\"");
}

TEST_F(SfpCommandsTest, ShowsAllThatArePlugged) {
    plug(49, "sr");
    plug(51, "dac");
    plug(53, "lr");
    const std::string answer = json({"sfp", "show", "all"});
    EXPECT_EQ(jsonKeys(answer, ""),
              (Words{"plugged", "port49", "port51", "port53", "diagnostics", "failures"}));
    EXPECT_EQ(jsonAt(answer, "/plugged"), "[49,51,53]");
    EXPECT_EQ(jsonAt(answer, "/port53/part_number"), "\"VIRTUAL-LR\"");
    Words keys = jsonKeys(json({"sfp", "show", "49"}), "");
    keys.resize(keys.size() - 2); // diagnostics and failures are those of all
    EXPECT_EQ(jsonKeys(answer, "/port49"), keys);
    EXPECT_EQ(jsonKeys(answer, "/diagnostics/0"),
              (Words{"port", "quantity", "value", "judgement", "low_alarm", "low_warning",
                     "high_warning", "high_alarm"}));
    EXPECT_EQ(jsonAt(answer, "/diagnostics/0/port"), "49");
    EXPECT_EQ(jsonAt(answer, "/diagnostics/5/port"), "53");
    const std::string shown = iodbg({"sfp", "show", "all"}).out;
    EXPECT_EQ(shown.find("Modules in  49, 51, 53\n\nPort 49\n  Port "), 0u) << shown;
    EXPECT_LT(shown.find("Temperature "), shown.find("\nPort 51\n")) << "beside its module";
    EXPECT_NE(shown.find("\nPort 53\n"), std::string::npos) << shown;
    plug(49, "dead");
    const std::string failed = json({"sfp", "show", "all"}, 1);
    EXPECT_EQ(jsonAt(failed, "/failures/0/item"), "\"port49.identification\"");
    EXPECT_EQ(jsonAt(failed, "/port53/part_number"), "\"VIRTUAL-LR\"");
    for (const char *port : {"49", "51", "53"})
        world::set("sfp." + std::string(port) + ".module", "none");
    EXPECT_EQ(iodbg({"sfp", "show", "all"}).out, "Modules in  none\n");
}

TEST_F(SfpCommandsTest, ShowsWhatAModuleIs) {
    plug(49, "lr");
    EXPECT_EQ(shown(49, "kind"), "\"SFP or SFP+\"");
    EXPECT_EQ(shown(49, "connector"), "\"LC\"");
    EXPECT_EQ(shown(49, "wavelength_nm"), "1310");
    EXPECT_EQ(shown(49, "base_checksum_ok"), "true");
    EXPECT_EQ(shown(49, "extended_checksum_ok"), "true");
    EXPECT_EQ(shown(49, "diagnostics_checksum_ok"), "true");
    EXPECT_EQ(shown(49, "copper_kind"), "0");
    plug(49, "dac");
    EXPECT_EQ(shown(49, "wavelength_nm"), "null");
    EXPECT_EQ(shown(49, "has_diagnostics"), "false");
    EXPECT_EQ(shown(49, "reach"), "\"3 m over cable\"");
    plug(49, "bad-checksum");
    EXPECT_EQ(shown(49, "base_checksum_ok"), "false");
    EXPECT_EQ(shown(49, "extended_checksum_ok"), "true");
}

TEST_F(SfpCommandsTest, TellsTheModeOfACopperModulesPhy) {
    plug(49, "copper-mode4");
    EXPECT_EQ(shown(49, "copper_kind"), "1");
    plug(49, "copper-mode12");
    EXPECT_EQ(shown(49, "copper_kind"), "2");
    plug(49, "copper-other");
    EXPECT_EQ(shown(49, "copper_kind"), "3");
    EXPECT_EQ(jsonAt(json({"sfp", "phy", "49"}), "/registers/31/register"), "31");
    plug(49, "sr");
    expectFailure({"sfp", "phy", "49"}, 1, {"which may be no copper module"});
}

TEST_F(SfpCommandsTest, DiagnosticsAreDecodedAndJudged) {
    plug(49, "sr");
    world::set("sfp.49.link", "up");
    world::set("sfp.49.rx-power", "500");
    std::string answer = json({"sfp", "show", "49"});
    EXPECT_EQ(jsonAt(answer, "/diagnostics/4/quantity"), "\"rx_power_nw\"");
    EXPECT_EQ(jsonAt(answer, "/diagnostics/4/value"), "500000");
    EXPECT_EQ(jsonAt(answer, "/diagnostics/4/judgement"), "\"normal\"");
    EXPECT_EQ(jsonAt(answer, "/diagnostics/0/high_alarm"), "75000");
    EXPECT_EQ(jsonAt(answer, "/diagnostics/0/low_alarm"), "-5000");
    EXPECT_EQ(jsonAt(answer, "/diagnostics/1/value"), "3300000");
    world::set("sfp.49.rx-power", "60");
    answer = json({"sfp", "show", "49"});
    EXPECT_EQ(jsonAt(answer, "/diagnostics/4/judgement"), "\"low warning\"");
    const ProcessResult result = iodbg({"sfp", "show", "49"});
    EXPECT_NE(result.out.find("0.0600 mW (-12.22 dBm)"), std::string::npos) << result.out;
}

TEST_F(SfpCommandsTest, DumpsThePages) {
    plug(49, "sr");
    const std::string answer = json({"sfp", "dump", "49"});
    EXPECT_EQ(jsonAt(answer, "/a0h").size(), 512u + 2);
    EXPECT_EQ(jsonAt(answer, "/a0h").substr(0, 7), "\"030407");
    plug(49, "dac");
    EXPECT_EQ(jsonAt(json({"sfp", "dump", "49"}, 1), "/a2h"), "null");
}

TEST_F(SfpCommandsTest, SwitchesATransmitterAndReadsItsLineBack) {
    plug(50, "sr");
    EXPECT_EQ(jsonAt(json({"sfp", "tx", "50", "off"}), "/transmitter_on"), "false");
    EXPECT_EQ(devices().cpld.reg[12] >> 7 & 1, 1);
    EXPECT_EQ(jsonAt(json({"sfp", "tx", "50", "on"}), "/transmitter_on"), "true");
    EXPECT_EQ(devices().cpld.reg[12] >> 7 & 1, 0);
    addFault(silence(FaultDevice::Cpld, FaultOp::Write));
    expectFailure({"sfp", "tx", "50", "off"}, 3, {"was written and did not change"});
}

TEST_F(SfpCommandsTest, OnlyCagesAreAsked) {
    for (const char *command : {"show", "dump", "phy"}) {
        expectFailure({"sfp", command, "48"}, 2, {"port 48", "49-54"});
        expectRefusal({"sfp", command, "0"}, 2, "'0'");
        expectRefusal({"sfp", command}, 2, "PORT is required");
    }
    expectFailure({"sfp", "tx", "1", "on"}, 2, {"port 1", "49-54"});
    expectRefusal({"sfp", "tx", "49", "maybe"}, 2, "'maybe'");
    expectRefusal({"sfp", "tx", "49"}, 2, "STATE is required");
}

TEST_F(MdioCommandsTest, ReadsAndWrites) {
    world::set("mdio.3.5", "0x1234");
    EXPECT_EQ(jsonAt(json({"mdio", "read", "3", "5"}), ""),
              "{\"a\":3,\"b\":5,\"value\":4660,\"failures\":[]}");
    const std::string answer = json({"mdio", "write", "3", "5", "0xABCD"});
    EXPECT_EQ(jsonKeys(answer, ""), (Words{"a", "b", "before", "written", "after", "failures"}));
    EXPECT_EQ(jsonAt(answer, "/before"), "4660");
    EXPECT_EQ(jsonAt(answer, "/after"), "43981");
}

TEST_F(MdioCommandsTest, FailuresAreTold) {
    world::set("mdio.state", "error");
    expectFailure({"mdio", "read", "3", "5"}, 1, {"cannot read MDIO register 3.5"});
    world::set("mdio.state", "stuck");
    expectFailure({"mdio", "read", "3", "5"}, 1, {"BSP_E_TIMEOUT"});
    for (const char *address : {"32", "x"}) {
        expectRefusal({"mdio", "read", address, "1"}, 2, std::string("'") + address + "'");
        expectRefusal({"mdio", "write", "1", address, "1"}, 2, std::string("'") + address + "'");
    }
    expectRefusal({"mdio", "write", "1", "1", "0x10000"}, 2, "'0x10000'");
}

} // namespace
