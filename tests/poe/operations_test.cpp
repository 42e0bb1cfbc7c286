// The driver's operations: what each sends for its argument, and makes of the answer.

#include "bsp.h"
#include "tests/poe/poe_board.h"
#include "tests/support/answer.h"
#include "tests/support/scripted_controller.h"

namespace {

using Lines = std::vector<std::string>;
using Output = int32_t (*)(uint32_t *out);

struct PortSetting {
    const char *name;
    int32_t (*set)(uint32_t port, uint32_t value);
    uint32_t value;
    Lines requests; // empty: BSP_E_POE_INVALID
};

const PortSetting kPortSettings[] = {
    {"mode", bspPoeRtl8239PortModeSet, 0, {"08: 05 00", "01: 05 01"}},
    {"mode", bspPoeRtl8239PortModeSet, 1, {"08: 05 01", "01: 05 01"}},
    {"mode", bspPoeRtl8239PortModeSet, 2, {"08: 05 02", "01: 05 01"}},
    {"mode", bspPoeRtl8239PortModeSet, 3, {}},
    {"mode", bspPoeRtl8239PortModeSet, 4, {}},
    {"mode", bspPoeRtl8239PortModeSet, 5, {"01: 05 00", "08: 05 00"}},
    {"mode", bspPoeRtl8239PortModeSet, 6, {}},
    {"mode", bspPoeRtl8239PortModeSet, UINT32_MAX, {}},
    {"priority", bspPoeRtl8239PortPrioritySet, 0, {}},
    {"priority", bspPoeRtl8239PortPrioritySet, 1, {"15: 05 02"}},
    {"priority", bspPoeRtl8239PortPrioritySet, 2, {"15: 05 01"}},
    {"priority", bspPoeRtl8239PortPrioritySet, 3, {"15: 05 00"}},
    {"priority", bspPoeRtl8239PortPrioritySet, 4, {}},
    {"maximum power", bspPoeRtl8239PortMaxPowerSet, 0, {"14: 05 00"}},
    {"maximum power", bspPoeRtl8239PortMaxPowerSet, 30001, {"14: 05 4C"}},
    {"maximum power", bspPoeRtl8239PortMaxPowerSet, 102001, {}},
    {"legacy", bspPoeRtl8239PortLegacyEnableSet, 0, {}},
    {"legacy", bspPoeRtl8239PortLegacyEnableSet, 1, {"09: 05 01"}},
    {"legacy", bspPoeRtl8239PortLegacyEnableSet, 2, {"09: 05 00"}},
    {"legacy", bspPoeRtl8239PortLegacyEnableSet, 3, {}},
    {"inrush mode", bspPoeRtl8239PortInrushModeSet, 0, {"0C: 05 00"}},
    {"inrush mode", bspPoeRtl8239PortInrushModeSet, 7, {"0C: 05 07"}},
    {"inrush mode", bspPoeRtl8239PortInrushModeSet, 8, {"0C: 05 09"}},
    {"inrush mode", bspPoeRtl8239PortInrushModeSet, 9, {}},
    {"force inrush", bspPoeRtl8239PortForceInrushSet, 0, {}},
    {"force inrush", bspPoeRtl8239PortForceInrushSet, 1, {"0D: 05 01"}},
    {"force inrush", bspPoeRtl8239PortForceInrushSet, 2, {"0D: 05 00"}},
    {"force inrush", bspPoeRtl8239PortForceInrushSet, 3, {}},
    {"maximum power type", bspPoeRtl8239PortMaxPowerTypeSet, 0, {}},
    {"maximum power type", bspPoeRtl8239PortMaxPowerTypeSet, 1, {"12: 05 01"}},
    {"maximum power type", bspPoeRtl8239PortMaxPowerTypeSet, 2, {"12: 05 02"}},
    {"maximum power type", bspPoeRtl8239PortMaxPowerTypeSet, 3, {}},
};

using OperationsTest = PoeTest;

TEST_F(OperationsTest, PortSettingsTranslateTheirValue) {
    for (const PortSetting &row : kPortSettings) {
        SCOPED_TRACE(row.name + std::string(" ") + std::to_string(row.value));
        EXPECT_EQ(answerOf([&] { return row.set(5, row.value); }),
                  (Answer{row.requests.empty() ? BSP_E_POE_INVALID : BSP_OK, ""}));
        EXPECT_EQ(controller.requests(), row.requests);
    }
}

TEST_F(OperationsTest, PortSettingsRefusePortsThatTheControllerDoesNotHave) {
    for (const PortSetting &row : kPortSettings) {
        EXPECT_EQ(row.set(48, row.value), BSP_E_POE_INVALID) << row.name;
        EXPECT_EQ(row.set(UINT32_MAX, row.value), BSP_E_POE_INVALID) << row.name;
    }
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(OperationsTest, PortSettingsStopAtTheFirstFailure) {
    for (const PortSetting &row : kPortSettings) {
        for (size_t step = 0; step < row.requests.size(); ++step) {
            controller.answer({"05 01"}, step);
            EXPECT_EQ(answerOf([&] { return row.set(5, row.value); }).status, BSP_E_POE_STATUS);
            EXPECT_EQ(controller.exchanges().size(), step + 1) << row.name;
        }
    }
}

TEST_F(OperationsTest, PortActionsTriggerOnce) {
    EXPECT_EQ(bspPoeRtl8239PortDetectionSet(47), BSP_OK);
    EXPECT_EQ(bspPoeRtl8239PortClassificationSet(0), BSP_OK);
    EXPECT_EQ(controller.requests(), (Lines{"0A/00: 2F 01", "0B: 00 01"}));
    EXPECT_EQ(bspPoeRtl8239PortDetectionSet(48), BSP_E_POE_INVALID);
    EXPECT_EQ(bspPoeRtl8239PortClassificationSet(UINT32_MAX), BSP_E_POE_INVALID);
}

TEST_F(OperationsTest, PowerIsSwitchedByTheMethodOfThePortsMode) {
    struct Case {
        uint32_t port, on;
        const char *config; // answer to 0x48
        int32_t status;
        Lines requests; // after the question
    };
    const Case cases[] = {
        {5, 1, "05 01 02", BSP_OK, {"18: 05 03"}},
        {5, 2, "05 01 02", BSP_OK, {"18: 05 00"}},
        {5, 1, "05 00 01", BSP_OK, {"01: 05 02"}},
        {5, 2, "05 01 01", BSP_OK, {"01: 05 00", "01: 05 01"}},
        {5, 0, "05 01 01", BSP_E_POE_INVALID, {}},
        {5, 3, "05 01 02", BSP_E_POE_INVALID, {}},
        {5, 1, "05 01 00", BSP_E_POE_UNAVAILABLE, {}},
        {5, 1, "05 01 03", BSP_E_POE_UNAVAILABLE, {}},
        {5, 3, "05 01 00", BSP_E_POE_UNAVAILABLE, {}}, // the method comes first
        {5, 1, "06 01 02", BSP_E_POE_CONTENT, {}},
    };
    for (const Case &row : cases) {
        SCOPED_TRACE(std::to_string(row.on) + " with " + row.config);
        controller.answer({row.config});
        EXPECT_EQ(answerOf([&] { return bspPoeRtl8239PortPowerOnSet(row.port, row.on); }),
                  (Answer{row.status, ""}));
        Lines expected = row.requests;
        expected.insert(expected.begin(), "48: 05");
        EXPECT_EQ(controller.requests(), expected);
    }
    EXPECT_EQ(bspPoeRtl8239PortPowerOnSet(48, 3), BSP_E_POE_INVALID);
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(OperationsTest, PowerOffStopsWhenThePortStaysEnabled) {
    controller.answer({"05 01 01"});
    controller.answer({"05 07"}, 1);
    EXPECT_EQ(answerOf([] { return bspPoeRtl8239PortPowerOnSet(5, 2); }),
              (Answer{BSP_E_POE_STATUS, "ERROR: rtl8239CmdPortEnableSet(#): port 5 response "
                                        "status check failed.\n"}));
    EXPECT_EQ(controller.requests(), (Lines{"48: 05", "01: 05 00"}));
}

struct Reading {
    const char *name;
    int32_t (*get)(uint32_t port, uint32_t *out);
    const char *request;
    const char *reply;
    uint32_t value;
};

constexpr Reading kReadings[] = {
    {"mode", bspPoeRtl8239PortModeGet, "48: 05", "05 00 01", 5},
    {"mode", bspPoeRtl8239PortModeGet, "48: 05", "05 00 07", 5},
    {"mode", bspPoeRtl8239PortModeGet, "48: 05", "05 01 00", 0},
    {"mode", bspPoeRtl8239PortModeGet, "48: 05", "05 02 01", 1},
    {"mode", bspPoeRtl8239PortModeGet, "48: 05", "05 FF 02", 2},
    {"voltage", bspPoeRtl8239PortVoltageGet, "44: 05", "05 03 46 01 02 00 00 03 04", 54009},
    {"voltage", bspPoeRtl8239PortVoltageGet, "44: 05", "05 FF FF", 4223730},
    {"current", bspPoeRtl8239PortCurrentGet, "44: 05", "05 03 46 01 02 00 00 03 04", 258},
    {"power", bspPoeRtl8239PortPowerGet, "44: 05", "05 03 46 01 02 00 00 03 04", 77200},
    {"maximum power", bspPoeRtl8239PortMaxPowerGet, "49: 05", "05 03 00 E1", 90000},
    {"inrush mode", bspPoeRtl8239PortInrushModeGet, "49: 05", "05 00 01", 0},
    {"inrush mode", bspPoeRtl8239PortInrushModeGet, "49: 05", "05 07 01", 7},
    {"inrush mode", bspPoeRtl8239PortInrushModeGet, "49: 05", "05 08 01", 8},
    {"inrush mode", bspPoeRtl8239PortInrushModeGet, "49: 05", "05 09 01", 8},
    {"inrush mode", bspPoeRtl8239PortInrushModeGet, "49: 05", "05 0A 01", 10},
    {"fault", bspPoeRtl8239PortFaultGet, "42: 05", "05 04 11", 1},
    {"fault", bspPoeRtl8239PortFaultGet, "42: 05", "05 02 11", 2},
    {"fault", bspPoeRtl8239PortFaultGet, "42: 05", "05 05 11", 2},
    {"disconnect", bspPoeRtl8239PortDisconnectGet, "42: 05", "05 02 11", 2},
    {"disconnect", bspPoeRtl8239PortDisconnectGet, "42: 05", "05 04 11", 1},
    {"disconnect", bspPoeRtl8239PortDisconnectGet, "42: 05", "05 03 11", 1},
    {"detection", bspPoeRtl8239PortDetectionGet, "42: 05", "05 01 F0", 0},
    {"detection", bspPoeRtl8239PortDetectionGet, "42: 05", "05 01 F1", 1},
    {"detection", bspPoeRtl8239PortDetectionGet, "42: 05", "05 01 F7", 7},
    {"detection", bspPoeRtl8239PortDetectionGet, "42: 05", "05 01 F8", 0},
    {"detection", bspPoeRtl8239PortDetectionGet, "42: 05", "05 04 11", 0},
    {"class", bspPoeRtl8239PortClassificationGet, "42: 05", "05 01 0F", 9},
    {"class", bspPoeRtl8239PortClassificationGet, "42: 05", "05 01 1F", 1},
    {"class", bspPoeRtl8239PortClassificationGet, "42: 05", "05 01 8F", 8},
    {"class", bspPoeRtl8239PortClassificationGet, "42: 05", "05 01 9F", 0},
    {"class", bspPoeRtl8239PortClassificationGet, "42: 05", "05 01 BF", 0},
    {"class", bspPoeRtl8239PortClassificationGet, "42: 05", "05 01 CF", 9},
    {"class", bspPoeRtl8239PortClassificationGet, "42: 05", "05 01 DF", 0},
    {"class", bspPoeRtl8239PortClassificationGet, "42: 05", "05 04 11", 0},
};

TEST_F(OperationsTest, PortReadingsTranslateTheAnswer) {
    for (const Reading &row : kReadings) {
        SCOPED_TRACE(row.name + std::string(" from ") + row.reply);
        uint32_t value = kMark;
        controller.answer({row.reply});
        EXPECT_EQ(answerOf([&] { return row.get(5, &value); }), kSilentSuccess);
        EXPECT_EQ(value, row.value);
        EXPECT_EQ(controller.requests(), (Lines{row.request}));
    }
}

TEST_F(OperationsTest, PortReadingsThatFailLeaveTheOutputAlone) {
    for (const Reading &row : kReadings) {
        SCOPED_TRACE(row.name);
        uint32_t value = kMark;
        controller.answer({"06 01 02"});
        EXPECT_EQ(row.get(5, &value), BSP_E_POE_CONTENT);
        EXPECT_EQ(row.get(48, &value), BSP_E_POE_INVALID);
        EXPECT_EQ(row.get(UINT32_MAX, &value), BSP_E_POE_INVALID);
        EXPECT_EQ(value, kMark);
        EXPECT_EQ(controller.exchanges().size(), 1u);
        EXPECT_EQ(row.get(48, nullptr), BSP_E_POE_NULL) << "the output is checked first";
        EXPECT_EQ(row.get(5, nullptr), BSP_E_POE_NULL);
        EXPECT_TRUE(controller.exchanges().empty());
    }
}

TEST_F(OperationsTest, AModeThatIsNoneIsRefused) {
    for (const char *reply : {"05 01 03", "05 01 05", "05 01 FF"}) {
        uint32_t mode = kMark;
        controller.answer({reply});
        EXPECT_EQ(answerOf([&] { return bspPoeRtl8239PortModeGet(5, &mode); }),
                  (Answer{BSP_E_POE_CONTENT, ""}));
        EXPECT_EQ(mode, kMark);
    }
}

TEST_F(OperationsTest, GlobalPowerIsSetAndRead) {
    EXPECT_EQ(bspPoeRtl8239GlobalMaxPowerSet(1440050), BSP_OK);
    EXPECT_EQ(controller.requests(), (Lines{"04: 00 38 41 00 00"}));
    EXPECT_EQ(bspPoeRtl8239GlobalMaxPowerSet(6553501), BSP_E_POE_INVALID);
    EXPECT_TRUE(controller.exchanges().empty());

    uint32_t power = kMark;
    controller.answer({"01 38 40 11 11"});
    EXPECT_EQ(bspPoeRtl8239GlobalMaxPowerGet(&power), BSP_OK);
    EXPECT_EQ(power, 1440000u);
    EXPECT_EQ(controller.requests(), (Lines{"4B/00:"}));

    controller.answer({"11 11 22 22 33 01 02"});
    EXPECT_EQ(bspPoeRtl8239GlobalPowerGet(&power), BSP_OK);
    EXPECT_EQ(power, 25800u);
    EXPECT_EQ(controller.requests(), (Lines{"41:"}));
}

TEST_F(OperationsTest, GlobalPowerNeedsThePortMapOfAControllerThatIsThere) {
    uint32_t power = kMark;
    unplugController();
    EXPECT_EQ(bspPoeRtl8239GlobalMaxPowerSet(1000), BSP_E_POE_UNAVAILABLE);
    EXPECT_EQ(bspPoeRtl8239GlobalMaxPowerGet(&power), BSP_E_POE_UNAVAILABLE);
    EXPECT_EQ(bspPoeRtl8239GlobalMaxPowerGet(nullptr), BSP_E_POE_NULL);
    EXPECT_EQ(power, kMark);
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(OperationsTest, GlobalReadingsThatFailLeaveTheOutputAlone) {
    for (const Output get : {bspPoeRtl8239GlobalMaxPowerGet, bspPoeRtl8239GlobalPowerGet}) {
        uint32_t power = kMark;
        controller.answer({"", Spoil::Read});
        EXPECT_EQ(answerOf([&] { return get(&power); }).status, BSP_E_POE_READ);
        EXPECT_EQ(power, kMark);
        controller.exchanges();
        EXPECT_EQ(get(nullptr), BSP_E_POE_NULL);
        EXPECT_TRUE(controller.exchanges().empty());
    }
}

TEST_F(OperationsTest, InitialisationShowsInBytes4And5) {
    for (const auto &[reply, expected] :
         {std::pair{"FF FF 00 00 FF FF FF", 0u}, {"00 00 00 01", 1u}, {"00 00 80 00", 1u}}) {
        uint32_t isInitialised = kMark;
        controller.answer({reply});
        EXPECT_EQ(bspPoeRtl8239InitStatusGet(&isInitialised), BSP_OK);
        EXPECT_EQ(isInitialised, expected) << reply;
        EXPECT_EQ(controller.requests(), (Lines{"41:"}));
    }
    EXPECT_EQ(bspPoeRtl8239InitStatusGet(nullptr), BSP_E_POE_NULL);
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(OperationsTest, AControllerThatDoesNotAnswerLeavesTheInitialisationOpen) {
    uint32_t isInitialised = kMark;
    controller.answer({"", Spoil::Read});
    EXPECT_EQ(answerOf([&] { return bspPoeRtl8239InitStatusGet(&isInitialised); }),
              (Answer{BSP_OK, silenceText("41")}));
    EXPECT_EQ(isInitialised, kMark);
}

TEST_F(OperationsTest, InitStatusCannotBeSet) {
    EXPECT_EQ(bspPoeRtl8239InitStatusSet(1), BSP_OK);
    EXPECT_TRUE(trace().empty());
}

TEST_F(OperationsTest, VersionIsFourNibbles) {
    for (const auto &[reply, expected] : {std::pair{"00 00 00 00 00 12 FF FF 34", "V1.2.3.4"},
                                          {"FF FF FF FF FF FF 00 00 FF", "V15.15.15.15"},
                                          {"FF FF FF FF FF 00 FF FF 0A", "V0.0.0.10"}}) {
        char text[16];
        controller.answer({reply});
        EXPECT_EQ(bspPoeRtl8239AppVersionGet(text), BSP_OK);
        EXPECT_STREQ(text, expected);
        EXPECT_EQ(controller.requests(), (Lines{"40:"}));
    }
    char text[16] = "before";
    controller.answer({"", Spoil::Read});
    EXPECT_EQ(answerOf([&] { return bspPoeRtl8239AppVersionGet(text); }).status, BSP_E_POE_READ);
    EXPECT_STREQ(text, "before");
    controller.exchanges();
    EXPECT_EQ(bspPoeRtl8239AppVersionGet(nullptr), BSP_E_POE_NULL);
    EXPECT_TRUE(controller.exchanges().empty());
}

} // namespace
