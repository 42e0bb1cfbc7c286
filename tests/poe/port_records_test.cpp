// Records of a port: the values of the single functions, in fewer exchanges.

#include "bsp.h"
#include "poe/driver_extension.h"
#include "tests/poe/poe_board.h"
#include "tests/support/answer.h"
#include "tests/support/scripted_controller.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace {

using Lines = std::vector<std::string>;

constexpr uint32_t kUnread = UINT32_MAX;
constexpr uint64_t kExchangeUs = 200000;

/** A record with a pattern that no answer leaves behind. */
template <typename Record>
Record marked() {
    Record record;
    std::memset(&record, 0xA5, sizeof(record));
    return record;
}

template <typename Record>
bool isMarked(const Record &record) {
    const auto untouched = marked<Record>();
    return std::memcmp(&record, &untouched, sizeof(record)) == 0;
}

using Single = int32_t (*)(uint32_t port, uint32_t *out);

class PortRecordsTest : public PoeTest {
  protected:
    /** What a single function makes of a reply. */
    Answer single(Single get, const std::string &reply, uint32_t &value) {
        controller.answer({reply});
        const Answer answer = answerOf([&] { return get(kPort, &value); });
        controller.exchanges();
        return answer;
    }
    uint32_t single(Single get, const std::string &reply) {
        uint32_t value = 0;
        EXPECT_EQ(single(get, reply, value), kSilentSuccess);
        return value;
    }
};

TEST_F(PortRecordsTest, StateIsOneExchangeAndTheValuesOfTheSingleFunctions) {
    for (const char *status : {"00", "01", "02", "03", "04", "05", "06", "FF"}) {
        for (const char *found : {"00", "11", "35", "47", "58", "80", "9F", "CF", "FF"}) {
            const std::string reply = std::string("05 ") + status + " " + found;
            SCOPED_TRACE(reply);
            auto state = marked<BspPoePortState>();
            controller.answer({reply});
            elapsed();
            EXPECT_EQ(answerOf([&] { return bspPoePortStateGet(kPort, &state); }), kSilentSuccess);
            EXPECT_EQ(elapsed(), kExchangeUs);
            EXPECT_EQ(controller.requests(), (Lines{"42: 05"}));
            EXPECT_EQ(state.detection, single(bspPoePortDetectionGet, reply));
            EXPECT_EQ(state.classification, single(bspPoePortClassificationGet, reply));
            EXPECT_EQ(state.fault, single(bspPoePortFaultGet, reply));
            EXPECT_EQ(state.disconnect, single(bspPoePortDisconnectGet, reply));
        }
    }
}

TEST_F(PortRecordsTest, StateTellsEachValueInItsPlace) {
    BspPoePortState state{};
    controller.answer({"05 02 35"});
    EXPECT_EQ(bspPoePortStateGet(kPort, &state), BSP_OK);
    EXPECT_EQ(listed({state.detection, state.classification, state.fault, state.disconnect}),
              "5 3 2 2");
    controller.answer({"05 04 35"});
    EXPECT_EQ(bspPoePortStateGet(kPort, &state), BSP_OK);
    EXPECT_EQ(listed({state.detection, state.classification, state.fault, state.disconnect}),
              "0 0 1 1");
}

TEST_F(PortRecordsTest, MeasurementIsOneExchangeAndTheValuesOfTheSingleFunctions) {
    for (const char *reply :
         {"05 03 46 01 02 00 00 03 04", "05 03 45 00 00 00 DC 00 00", "05 FF FF FF FF FF FF FF FF",
          "05 00 00 00 00 00 DD 00 00", "05 00 0F 80 00 01 00 FF 00"}) {
        SCOPED_TRACE(reply);
        auto measurement = marked<BspPoePortMeasurement>();
        controller.answer({reply});
        elapsed();
        EXPECT_EQ(answerOf([&] { return bspPoePortMeasurementGet(kPort, &measurement); }),
                  kSilentSuccess);
        EXPECT_EQ(elapsed(), kExchangeUs);
        EXPECT_EQ(controller.requests(), (Lines{"44: 05"}));
        EXPECT_EQ(measurement.voltageV, single(bspPoePortVoltageGet, reply));
        EXPECT_EQ(measurement.currentMa, single(bspPoePortCurrentGet, reply));
        EXPECT_EQ(measurement.powerMw, single(bspPoePortPowerGet, reply));
        uint32_t millivolts = 0;
        controller.answer({reply});
        EXPECT_EQ(bspPoeRtl8239PortVoltageGet(kPort - 1, &millivolts), BSP_OK);
        EXPECT_EQ(measurement.voltageMv, millivolts);
        controller.exchanges();
    }
}

TEST_F(PortRecordsTest, MeasurementTellsEachValueInItsPlace) {
    BspPoePortMeasurement measurement{};
    controller.answer({"05 03 46 01 02 00 B8 03 04"});
    EXPECT_EQ(bspPoePortMeasurementGet(kPort, &measurement), BSP_OK);
    EXPECT_EQ(listed({measurement.voltageMv, measurement.voltageV, measurement.currentMa,
                      measurement.powerMw, measurement.temperature}),
              "54009 54 258 77200 45");
}

TEST_F(PortRecordsTest, TemperatureFallsAsItsCodeRises) {
    for (const auto &[code, temperature] :
         {std::pair{"00 00", 275}, {"00 DC", 0}, {"00 DD", -1}, {"00 E0", -5}, {"FF FF", -81643}}) {
        BspPoePortMeasurement measurement{};
        controller.answer({std::string("05 00 00 00 00 ") + code});
        EXPECT_EQ(bspPoePortMeasurementGet(kPort, &measurement), BSP_OK);
        EXPECT_EQ(measurement.temperature, temperature) << code;
    }
}

TEST_F(PortRecordsTest, SettingsAreTwoExchangesAndTheValuesOfTheSingleFunctions) {
    for (const char *mode : {"05 00 07", "05 01 00", "05 02 01", "05 FF 02"}) {
        for (const char *power : {"05 00 00 00", "05 07 00 E1", "05 09 00 FF", "05 0A 00 01"}) {
            SCOPED_TRACE(mode + std::string(", ") + power);
            auto settings = marked<BspPoePortSettings>();
            controller.answer({mode});
            controller.answer({power}, 1);
            elapsed();
            EXPECT_EQ(answerOf([&] { return bspPoePortSettingsGet(kPort, &settings); }),
                      kSilentSuccess);
            EXPECT_EQ(elapsed(), 2 * kExchangeUs);
            EXPECT_EQ(controller.requests(), (Lines{"48: 05", "49: 05"}));
            EXPECT_EQ(listed({settings.modeStatus, settings.powerStatus}), "0 0");
            EXPECT_EQ(settings.mode, single(bspPoePortModeGet, mode));
            EXPECT_EQ(settings.powerLimitMw, single(bspPoePortMaxPowerGet, power));
            EXPECT_EQ(settings.inrushMode, single(bspPoePortInrushModeGet, power));
        }
    }
}

/** How an exchange can fail; the single function of the same exchange answers and prints the same.
 */
const ScriptedReply kFailures[] = {
    {"04"},
    {"05", Spoil::Write},
    {"05", Spoil::Read},
    {"05", Spoil::CommandEcho},
    {"05", Spoil::Checksum},
};

TEST_F(PortRecordsTest, AFailedExchangeAnswersAndPrintsWhatTheSingleFunctionDoes) {
    for (const ScriptedReply &reply : kFailures) {
        SCOPED_TRACE(static_cast<int>(reply.spoil));
        controller.answerAlways(reply);
        uint32_t value = 0;
        auto state = marked<BspPoePortState>();
        const Answer stateAnswer = answerOf([&] { return bspPoePortFaultGet(kPort, &value); });
        ASSERT_NE(stateAnswer.status, BSP_OK);
        EXPECT_EQ(answerOf([&] { return bspPoePortStateGet(kPort, &state); }), stateAnswer);
        EXPECT_TRUE(isMarked(state));
        auto measurement = marked<BspPoePortMeasurement>();
        const Answer powerAnswer = answerOf([&] { return bspPoePortPowerGet(kPort, &value); });
        EXPECT_EQ(answerOf([&] { return bspPoePortMeasurementGet(kPort, &measurement); }),
                  powerAnswer);
        EXPECT_TRUE(isMarked(measurement));
    }
}

TEST_F(PortRecordsTest, AFailedExchangeOfSettingsHidesNothingOfTheOther) {
    for (const ScriptedReply &reply : kFailures) {
        SCOPED_TRACE(static_cast<int>(reply.spoil));
        uint32_t value = 0;
        controller.answer(reply);
        const Answer mode = answerOf([&] { return bspPoePortModeGet(kPort, &value); });
        controller.answer(reply);
        const Answer power = answerOf([&] { return bspPoePortMaxPowerGet(kPort, &value); });
        controller.exchanges();

        auto settings = marked<BspPoePortSettings>();
        controller.answer(reply);
        controller.answer({"05 03 00 E1"}, 1);
        EXPECT_EQ(answerOf([&] { return bspPoePortSettingsGet(kPort, &settings); }),
                  (Answer{BSP_OK, mode.printed}));
        EXPECT_EQ(listed({settings.modeStatus, settings.mode, settings.powerStatus,
                          settings.powerLimitMw, settings.inrushMode}),
                  listed({mode.status, kUnread, BSP_OK, 90000, 3}));

        controller.answer({"05 01 02"});
        controller.answer(reply, 1);
        EXPECT_EQ(answerOf([&] { return bspPoePortSettingsGet(kPort, &settings); }),
                  (Answer{BSP_OK, power.printed}));
        EXPECT_EQ(listed({settings.modeStatus, settings.mode, settings.powerStatus,
                          settings.powerLimitMw, settings.inrushMode}),
                  listed({BSP_OK, 2, power.status, kUnread, kUnread}));
        EXPECT_EQ(controller.requests().size(), 4u);
    }
}

TEST_F(PortRecordsTest, AnUnknownModeByteHidesNothingElse) {
    auto settings = marked<BspPoePortSettings>();
    controller.answer({"05 01 03"});
    controller.answer({"05 09 00 10"}, 1);
    EXPECT_EQ(answerOf([&] { return bspPoePortSettingsGet(kPort, &settings); }), kSilentSuccess);
    EXPECT_EQ(listed({settings.modeStatus, settings.mode, settings.powerStatus,
                      settings.powerLimitMw, settings.inrushMode}),
              listed({BSP_E_POE_CONTENT, kUnread, BSP_OK, 6400, 8}));
}

TEST_F(PortRecordsTest, SettingsOfWhichNothingWasReadAreTheFirstFailure) {
    auto settings = marked<BspPoePortSettings>();
    controller.answer({"05 01 03"});
    controller.answer({"05", Spoil::Write}, 1);
    EXPECT_EQ(answerOf([&] { return bspPoePortSettingsGet(kPort, &settings); }),
              (Answer{BSP_E_POE_CONTENT,
                      "ERROR: rtl8239CmdMessage(#): rtl8239CmdRequest failed, cmd=0x49.\n"}));
    EXPECT_TRUE(isMarked(settings));
    EXPECT_EQ(controller.requests().size(), 2u);
}

TEST_F(PortRecordsTest, PortsCountFromOne) {
    BspPoePortState state{};
    BspPoePortMeasurement measurement{};
    BspPoePortSettings settings{};
    controller.answerAlways({"00"});
    EXPECT_EQ(bspPoePortStateGet(1, &state), BSP_OK);
    controller.answerAlways({"2F"});
    EXPECT_EQ(bspPoePortMeasurementGet(48, &measurement), BSP_OK);
    EXPECT_EQ(controller.requests(), (Lines{"42: 00", "44: 2F"}));
    for (const uint32_t port : {0u, 49u, UINT32_MAX}) {
        SCOPED_TRACE(port);
        state = marked<BspPoePortState>();
        measurement = marked<BspPoePortMeasurement>();
        settings = marked<BspPoePortSettings>();
        EXPECT_EQ(bspPoePortStateGet(port, &state), BSP_E_POE_INVALID);
        EXPECT_EQ(bspPoePortMeasurementGet(port, &measurement), BSP_E_POE_INVALID);
        EXPECT_EQ(bspPoePortSettingsGet(port, &settings), BSP_E_POE_INVALID);
        EXPECT_TRUE(isMarked(state) && isMarked(measurement) && isMarked(settings));
    }
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(PortRecordsTest, ANullRecordIsRefusedOnceThereIsADriver) {
    for (const uint32_t port : {kPort, 0u}) { // the record comes before the port
        EXPECT_EQ(bspPoePortStateGet(port, nullptr), BSP_E_POE_NULL);
        EXPECT_EQ(bspPoePortMeasurementGet(port, nullptr), BSP_E_POE_NULL);
        EXPECT_EQ(bspPoePortSettingsGet(port, nullptr), BSP_E_POE_NULL);
    }
    unplugController();
    EXPECT_EQ(bspPoePortStateGet(kPort, nullptr), BSP_E_POE_UNAVAILABLE);
    EXPECT_EQ(bspPoePortMeasurementGet(kPort, nullptr), BSP_E_POE_UNAVAILABLE);
    EXPECT_EQ(bspPoePortSettingsGet(kPort, nullptr), BSP_E_POE_UNAVAILABLE);
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(PortRecordsTest, TheDriverIsChosenAnewAtEveryCall) {
    BspPoePortState state{};
    controller.answerAlways({"05"});
    EXPECT_EQ(bspPoePortStateGet(kPort, &state), BSP_OK);
    unplugController();
    state = marked<BspPoePortState>();
    EXPECT_EQ(bspPoePortStateGet(kPort, &state), BSP_E_POE_UNAVAILABLE);
    EXPECT_TRUE(isMarked(state));
    devices().cpld.reg[6] = 0;
    EXPECT_EQ(bspPoePortStateGet(kPort, &state), BSP_OK);
    EXPECT_EQ(controller.exchanges().size(), 2u);
}

// A driver of another controller. Its slots answer 10 times their number, plus the port; one of
// them fails on command.

constexpr uint32_t kNoSlot = 0;
uint32_t failingSlot = kNoSlot;
constexpr int32_t kSlotFailure = -1234;

template <uint32_t number>
int32_t slot(uint32_t port, uint32_t *out) {
    if (failingSlot == number)
        return kSlotFailure;
    *out = 10 * number + port;
    return BSP_OK;
}

int32_t volts(uint32_t port, uint32_t *out) {
    const int32_t status = slot<21>(port, out);
    *out += 53999 - 10 * 21 - port; // millivolts
    return status;
}

BspPoeDriver inventedDriver() {
    BspPoeDriver driver{};
    driver.portModeGet = slot<19>;
    driver.portCurrentGet = slot<20>;
    driver.portVoltageGet = volts;
    driver.portPowerGet = slot<22>;
    driver.portMaxPowerGet = slot<23>;
    driver.portFaultGet = slot<24>;
    driver.portDetectionGet = slot<25>;
    driver.portClassificationGet = slot<26>;
    driver.portDisconnectGet = slot<27>;
    driver.portInrushModeGet = slot<28>;
    return driver;
}

const BspPoeDriver kInvented = inventedDriver();

class InventedDriverTest : public ::testing::Test {
  protected:
    void SetUp() override { failingSlot = kNoSlot; }

    std::string stateWith(const BspPoeDriver &slots, const BspPoeDriverExtension *extension) {
        auto state = marked<BspPoePortState>();
        const int32_t status = bsp::poePortStateGet({slots, extension}, 4, &state);
        if (status != BSP_OK)
            return std::to_string(status) + (isMarked(state) ? "" : ", but something is stored");
        return listed({state.detection, state.classification, state.fault, state.disconnect});
    }
    std::string measurementWith(const BspPoeDriver &slots, const BspPoeDriverExtension *extension) {
        auto record = marked<BspPoePortMeasurement>();
        const int32_t status = bsp::poePortMeasurementGet({slots, extension}, 4, &record);
        if (status != BSP_OK)
            return std::to_string(status) + (isMarked(record) ? "" : ", but something is stored");
        return listed({record.voltageMv, record.voltageV, record.currentMa, record.powerMw,
                       record.temperature});
    }
    std::string settingsWith(const BspPoeDriver &slots, const BspPoeDriverExtension *extension) {
        auto record = marked<BspPoePortSettings>();
        const int32_t status = bsp::poePortSettingsGet({slots, extension}, 4, &record);
        if (status != BSP_OK)
            return std::to_string(status) + (isMarked(record) ? "" : ", but something is stored");
        return listed({record.modeStatus, record.mode, record.powerStatus, record.powerLimitMw,
                       record.inrushMode});
    }
};

TEST_F(InventedDriverTest, WithoutASecondTableItsSlotsServe) {
    EXPECT_EQ(stateWith(kInvented, nullptr), "254 264 244 274");
    EXPECT_EQ(measurementWith(kInvented, nullptr),
              "53999 53 204 224 " + std::to_string(BSP_POE_TEMPERATURE_UNKNOWN));
    EXPECT_EQ(settingsWith(kInvented, nullptr), "0 194 0 234 284");
}

TEST_F(InventedDriverTest, ANullRecordIsRefused) {
    EXPECT_EQ(bsp::poePortStateGet({kInvented, nullptr}, 4, nullptr), BSP_E_POE_NULL);
    EXPECT_EQ(bsp::poePortMeasurementGet({kInvented, nullptr}, 4, nullptr), BSP_E_POE_NULL);
    EXPECT_EQ(bsp::poePortSettingsGet({kInvented, nullptr}, 4, nullptr), BSP_E_POE_NULL);
}

TEST_F(InventedDriverTest, ASlotThatFailsIsAnswered) {
    for (failingSlot = 24; failingSlot <= 27; ++failingSlot)
        EXPECT_EQ(stateWith(kInvented, nullptr), "-1234") << failingSlot;
    for (failingSlot = 20; failingSlot <= 22; ++failingSlot)
        EXPECT_EQ(measurementWith(kInvented, nullptr), "-1234") << failingSlot;
    failingSlot = 19;
    EXPECT_EQ(settingsWith(kInvented, nullptr), listed({kSlotFailure, kUnread, BSP_OK, 234, 284}));
    for (const uint32_t failing : {23u, 28u}) {
        failingSlot = failing;
        EXPECT_EQ(settingsWith(kInvented, nullptr),
                  listed({BSP_OK, 194, kSlotFailure, kUnread, kUnread}))
            << failing;
    }
}

TEST_F(InventedDriverTest, AnEmptySlotIsUnavailable) {
    BspPoeDriver driver = kInvented;
    driver.portFaultGet = nullptr;
    driver.portPowerGet = nullptr;
    driver.portInrushModeGet = nullptr;
    EXPECT_EQ(stateWith(driver, nullptr), "-1100");
    EXPECT_EQ(measurementWith(driver, nullptr), "-1100");
    EXPECT_EQ(settingsWith(driver, nullptr),
              listed({BSP_OK, 194, BSP_E_POE_UNAVAILABLE, kUnread, kUnread}));
    driver.portModeGet = nullptr;
    EXPECT_EQ(settingsWith(driver, nullptr), "-1100");
}

int32_t stateAtOnce(uint32_t port, BspPoePortState *state) {
    *state = {port, 2, 3, 4};
    return BSP_OK;
}
int32_t measurementAtOnce(uint32_t port, BspPoePortMeasurement *measurement) {
    measurement->voltageMv = 1000 * port + 999;
    measurement->currentMa = 5;
    measurement->powerMw = 6;
    return BSP_OK;
}
int32_t settingsAtOnce(uint32_t port, BspPoePortSettings *settings) {
    *settings = {BSP_OK, port, BSP_OK, 7, 8};
    return BSP_OK;
}

constexpr BspPoeDriverExtension kWholeTable = {sizeof(BspPoeDriverExtension), stateAtOnce,
                                               measurementAtOnce, settingsAtOnce};
constexpr const char *kStateAtOnce = "4 2 3 4";
constexpr const char *kSettingsAtOnce = "0 4 0 7 8";

TEST_F(InventedDriverTest, ItsSecondTableComesFirst) {
    EXPECT_EQ(stateWith(kInvented, &kWholeTable), kStateAtOnce);
    EXPECT_EQ(measurementWith(kInvented, &kWholeTable),
              "4999 4 5 6 " + std::to_string(BSP_POE_TEMPERATURE_UNKNOWN));
    EXPECT_EQ(settingsWith(kInvented, &kWholeTable), kSettingsAtOnce);
}

TEST_F(InventedDriverTest, WhatItsSecondTableLacksTheSlotsServe) {
    BspPoeDriverExtension table = kWholeTable;
    table.portMeasurementGet = nullptr;
    EXPECT_EQ(stateWith(kInvented, &table), kStateAtOnce);
    EXPECT_TRUE(measurementWith(kInvented, &table).starts_with("53999 53 204 224"));
    EXPECT_EQ(settingsWith(kInvented, &table), kSettingsAtOnce);
}

TEST_F(InventedDriverTest, AnOlderTableEndsSooner) {
    BspPoeDriverExtension table = kWholeTable;
    table.size = offsetof(BspPoeDriverExtension, portMeasurementGet);
    EXPECT_EQ(stateWith(kInvented, &table), kStateAtOnce);
    EXPECT_TRUE(measurementWith(kInvented, &table).starts_with("53999 53 204 224"));
    EXPECT_EQ(settingsWith(kInvented, &table), "0 194 0 234 284");
    table.size = sizeof(table.size);
    EXPECT_EQ(stateWith(kInvented, &table), "254 264 244 274");
}

TEST_F(InventedDriverTest, AFailureOfItsSecondTableIsAnswered) {
    BspPoeDriverExtension table = kWholeTable;
    table.portStateGet = [](uint32_t, BspPoePortState *state) {
        state->detection = 1; // read before the failure
        return kSlotFailure;
    };
    table.portMeasurementGet = [](uint32_t, BspPoePortMeasurement *) { return kSlotFailure; };
    table.portSettingsGet = [](uint32_t, BspPoePortSettings *) { return kSlotFailure; };
    EXPECT_EQ(stateWith(kInvented, &table), "-1234");
    EXPECT_EQ(measurementWith(kInvented, &table), "-1234");
    EXPECT_EQ(settingsWith(kInvented, &table), "-1234");
}

} // namespace
