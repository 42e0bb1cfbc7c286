// iodbg power.

#include "tests/iodbg/iodbg_test.h"
#include "virtual_board/board/circuits.h"
#include "virtual_board/board/factory.h"

#include <algorithm>
#include <cerrno>

namespace {

using vb::FaultDevice;
using vb::FaultOp;

class PowerCommandTest : public IodbgTest {
  protected:
    void unplug(uint32_t supply) const {
        devices().supply[supply - 1].isPresent = 0;
        vb::driveSupplyLines(board(), supply - 1);
    }

    /** A rule about one supply's PMBus alone. */
    vb::FaultRule ofSupply(uint32_t supply, vb::FaultRule rule) const {
        rule.hasAddress = 1;
        rule.bus = 0;
        rule.channel = supply + 1;
        rule.devAddr = 0x58;
        return rule;
    }

    /** Lets the board's record name supplies of these types. */
    void setRecordedTypes(const std::vector<uint8_t> &types) const {
        record()[96] = static_cast<uint8_t>(types.size());
        std::copy(types.begin(), types.end(), record() + 97);
        vb::setFactorySerial(devices().eeprom, "VB00000001"); // renews the CRC
    }
};

constexpr char kSupply1Text[] = "Supply 1\n"
                                "  Plugged         yes\n"
                                "  Presence line   0 (active low)\n"
                                "  Status          0\n"
                                "  Type            1\n"
                                "  Readings        taken over PMBus\n"
                                "  Input voltage   230.000 V\n"
                                "  Input current   0.500 A\n"
                                "  Input power     115.000 W\n"
                                "  Output voltage  54.000 V\n"
                                "  Output current  1.900 A\n"
                                "  Output power    102.625 W\n"
                                "  Temperature 1   28 C\n"
                                "  Temperature 2   41 C\n"
                                "  Temperature 3   45 C\n";

TEST_F(PowerCommandTest, PrintsTheSuppliesForPeople) {
    unplug(2);
    const ProcessResult result = iodbg({"power"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "Supplies  2\n\n" + std::string(kSupply1Text) +
                              "\n"
                              "Supply 2\n"
                              "  Plugged        no: it is not asked further\n"
                              "  Presence line  1 (active low)\n"
                              "  Status         1\n");
}

TEST_F(PowerCommandTest, AnswersProgramsInTheLibrarysUnits) {
    vb::PmbusSupply &pmbus = devices().supply[1].pmbus;
    pmbus.inputMv = 229000;
    pmbus.degrees[0] = -5;
    EXPECT_EQ(jsonAt(json({"power", "2"}), ""),
              "{\"supply_count\":2,\"supply2\":{\"plugged\":true,\"presence_line\":0,"
              "\"status\":0,\"type\":1,\"has_readings\":true,\"input_voltage_mv\":229000,"
              "\"input_current_ma\":500,\"input_power_mw\":115000,\"output_voltage_mv\":54000,"
              "\"output_current_ma\":1900,\"output_power_mw\":102625,\"temperature1_c\":-5,"
              "\"temperature2_c\":41,\"temperature3_c\":45},\"failures\":[]}");
    EXPECT_NE(iodbg({"power", "2"}).out.find("  Temperature 1   -5 C\n"), std::string::npos);
    EXPECT_EQ(iodbg({"power", "1"}).out, "Supplies  2\n\n" + std::string(kSupply1Text));
}

TEST_F(PowerCommandTest, TellsStatusAndTypeOfEachSupply) {
    devices().supply[0].pmbus.hasInputFailed = 1;
    devices().supply[1].pmbus.hasOutputFailed = 1;
    vb::driveSupplyLines(board(), 0);
    vb::driveSupplyLines(board(), 1);
    devices().cpld.reg[30] &= static_cast<uint16_t>(~(1u << 3)); // the type line of supply 2
    const std::string answer = json({"power"});
    EXPECT_EQ(jsonAt(answer, "/supply1/status"), "1");
    EXPECT_EQ(jsonAt(answer, "/supply1/input_voltage_mv"), "0");
    EXPECT_EQ(jsonAt(answer, "/supply1/temperature1_c"), "28");
    EXPECT_EQ(jsonAt(answer, "/supply2/status"), "4");
    EXPECT_EQ(jsonAt(answer, "/supply2/type"), "2");
}

TEST_F(PowerCommandTest, ReadsASupplyOnceAndWritesNothing) {
    iodbg({"power"}); // from here on the model is known
    trace();
    const uint64_t before = now();
    const BoardContent contentBefore = content();
    iodbg({"power", "1"});
    const std::string supplies = "CPLD read  reg 30 (supplies) = 0x03CC";
    Lines expected(4, supplies); // presence, status, type, and the type for the readings
    for (const char *command :
         {"0x88 len 2 (supply 1 READ_VIN)", "0x89 len 2 (supply 1 READ_IIN)",
          "0x97 len 2 (supply 1 READ_PIN)", "0x8B len 2 (supply 1 READ_VOUT)",
          "0x8C len 2 (supply 1 READ_IOUT)", "0x96 len 2 (supply 1 READ_POUT)",
          "0x8D len 2 (supply 1 READ_TEMPERATURE_1)", "0x8E len 2 (supply 1 READ_TEMPERATURE_2)",
          "0x8F len 2 (supply 1 READ_TEMPERATURE_3)"})
        expected.push_back("I2C read  bus 0 ch 2 dev 0x58 off " + std::string(command));
    EXPECT_EQ(withoutData(requests()), expected);
    EXPECT_EQ(now() - before, 900000000u);
    EXPECT_TRUE(content() == contentBefore);
}

TEST_F(PowerCommandTest, AnUnpluggedSupplyIsNotAsked) {
    unplug(2);
    iodbg({"power"}); // from here on the model is known
    trace();
    EXPECT_EQ(jsonAt(json({"power", "2"}), ""),
              "{\"supply_count\":2,\"supply2\":{\"plugged\":false,\"presence_line\":1,"
              "\"status\":1},\"failures\":[]}");
    EXPECT_EQ(requests(), Lines(2, "CPLD read  reg 30 (supplies) = 0x0146"));
}

TEST_F(PowerCommandTest, FixedSuppliesWithoutABusHaveNoReadings) {
    useModel(0x0309);
    unplug(1);
    const ProcessResult result = iodbg({"power"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "Supplies  2\n"
                          "\n"
                          "Supply 1\n"
                          "  Plugged        no: it is not asked further\n"
                          "  Presence line  1 (active low)\n"
                          "  Status         3\n"
                          "\n"
                          "Supply 2\n"
                          "  Plugged        yes\n"
                          "  Presence line  0 (active low)\n"
                          "  Status         0\n"
                          "  Type           1\n"
                          "  Readings       none: not with this model\n");
    EXPECT_EQ(jsonAt(json({"power", "2"}), "/supply2/has_readings"), "false");
}

TEST_F(PowerCommandTest, OtherModelsKnowTheirSuppliesFromTheRecord) {
    useModel(0x0109);
    setRecordedTypes({3, 4, 5});
    devices().cpld.reg[6] = 0x0200; // supply 1 is not there
    const ProcessResult result = iodbg({"power"});
    EXPECT_EQ(result.exitCode, 0) << result.out;
    EXPECT_EQ(result.out, "Supplies  3\n"
                          "\n"
                          "Supply 1\n"
                          "  Plugged        no: it is not asked further\n"
                          "  Presence line  1 (active low)\n"
                          "  Status         none: not with this model\n"
                          "\n"
                          "Supply 2\n"
                          "  Plugged        yes\n"
                          "  Presence line  0 (active low)\n"
                          "  Status         none: not with this model\n"
                          "  Type           4\n"
                          "  Readings       none: not with this model\n"
                          "\n"
                          "Supply 3\n"
                          "  Plugged   unknown: it has no presence line\n"
                          "  Status    none: not with this model\n"
                          "  Type      5\n"
                          "  Readings  none: not with this model\n");
    EXPECT_EQ(jsonAt(json({"power", "3"}), "/supply3"),
              "{\"plugged\":null,\"status\":null,\"type\":5,\"has_readings\":false}");
}

TEST_F(PowerCommandTest, ARecordWithTooManySuppliesIsRefused) {
    useModel(0x0109);
    setRecordedTypes({1, 1, 1, 1, 1, 1});
    EXPECT_EQ(jsonAt(json({"power"}), "/supply6/type"), "1");
    record()[96] = 7;
    vb::setFactorySerial(devices().eeprom, "VB00000001");
    expectFailure({"power"}, 1, {"cannot read the number of supplies: BSP_E_INVALID (1002)"});
}

TEST_F(PowerCommandTest, ADeadPmbusDoesNotHideTheRest) {
    addFault(ofSupply(1, silence(FaultDevice::I2c, FaultOp::Read)));
    const std::string answer = json({"power"}, 1);
    EXPECT_EQ(jsonAt(answer, "/supply1"), "{\"plugged\":true,\"presence_line\":0,\"status\":0,"
                                          "\"type\":1,\"has_readings\":null}");
    EXPECT_EQ(jsonAt(answer, "/supply2/output_voltage_mv"), "54000");
    EXPECT_EQ(jsonKeys(answer, "/failures").size(), 1u);
    EXPECT_EQ(jsonAt(answer, "/failures/0/item"), "\"supply1.has_readings\"");
    EXPECT_EQ(jsonAt(answer, "/failures/0/status_name"), "\"BSP_E_FAILED\"");
    const ProcessResult result = iodbg({"power", "1"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.out.find("  Readings       failed: BSP_E_FAILED (-1)\n"), std::string::npos);
}

TEST_F(PowerCommandTest, ASupplyThatStaysBusyReadsZero) {
    devices().supply[0].pmbus.busyEvery = 1;
    const std::string answer = json({"power", "1"});
    EXPECT_EQ(jsonAt(answer, "/supply1/has_readings"), "true");
    EXPECT_EQ(jsonAt(answer, "/supply1/output_voltage_mv"), "0");
    EXPECT_EQ(jsonAt(answer, "/supply1/temperature3_c"), "0");
}

TEST_F(PowerCommandTest, PrintsNegativeReadings) {
    vb::FaultRule sign = corrupt(FaultDevice::I2c, FaultOp::Read, 1);
    sign.mask = 0x04; // the sign of the mantissa
    addFault(at(ofSupply(1, sign), 0x89));
    EXPECT_NE(iodbg({"power", "1"}).out.find("  Input current   -0.500 A\n"), std::string::npos);
}

TEST_F(PowerCommandTest, AFailedLineDoesNotHideTheRest) {
    struct Row {
        uint32_t request; // of those that ask register 30
        const char *key;
        bool hasReadings;
    };
    for (const Row &row :
         {Row{1, "plugged", true}, Row{2, "status", true}, Row{3, "type", false}}) {
        clearFaults();
        vb::FaultRule rule = at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO, row.request), 30);
        rule.when = vb::FaultWhen::Once;
        addFault(rule);
        const std::string answer = json({"power", "1"}, 1);
        const std::string key = row.key;
        EXPECT_EQ(jsonAt(answer, "/supply1/" + key), "null");
        EXPECT_EQ(jsonAt(answer, "/failures/0/item"), "\"supply1." + key + "\"");
        EXPECT_EQ(jsonAt(answer, "/failures/0/status"), std::to_string(-EIO));
        EXPECT_EQ(jsonKeys(answer, "/failures").size(), 1u);
        const Words keys = jsonKeys(answer, "/supply1");
        EXPECT_EQ(std::count(keys.begin(), keys.end(), "has_readings"), row.hasReadings ? 1 : 0);
    }
}

TEST_F(PowerCommandTest, ReportsFailures) {
    addFault(openFails("/tmp/bsp/devId", EACCES));
    expectFailure({"power"}, 1, {"cannot read the number of supplies: BSP_E_OPEN"});
    clearFaults();
    addFault(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO));
    expectFailure({"power"}, 1, {"cannot read the number of supplies: status -5"});
    clearFaults();
    expectFailure({"power", "3"}, 2,
                  {"cannot read supply 3: BSP_E_INVALID (1002)", "; the board has 2 supplies"});
}

TEST_F(PowerCommandTest, RefusesWrongWords) {
    trace();
    expectRefusal({"power", "0"}, 2, "N: '0' is not a number from 1 to 6");
    expectRefusal({"power", "7"}, 2, "N: '7'");
    expectRefusal({"power", "one"}, 2, "N: 'one'");
    expectRefusal({"power", "1", "2"}, 2, "not expected");
    EXPECT_EQ(trace(), Lines{});
}

} // namespace
