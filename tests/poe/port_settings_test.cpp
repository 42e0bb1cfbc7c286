// Settings of ranges of ports: what is sent for which value, and what becomes of a refusal.

#include "bsp.h"
#include "poe/rtl8239/commands.h"
#include "tests/support/answer.h"
#include "tests/support/scripted_controller.h"

namespace {

using Lines = std::vector<std::string>;

struct Accepted {
    int64_t value;
    const char *sent;
};

struct Setting {
    const char *function;
    int32_t (*set)(int32_t firstPort, int32_t lastPort, int32_t value);
    const char *command; // with its second byte where it owns that
    const char *text;
    std::vector<Accepted> accepted;
    std::vector<int64_t> refused;
};

int32_t setMaxPower(int32_t firstPort, int32_t lastPort, int32_t power) {
    return rtl8239CmdPortMaxPowerValueExtSet(firstPort, lastPort, static_cast<uint32_t>(power));
}

const Setting kSettings[] = {
    {"rtl8239CmdPortEnableSet",
     rtl8239CmdPortEnableSet,
     "01",
     "enable",
     {{0, "00"}, {1, "01"}, {2, "02"}},
     {-1, 3}},
    {"rtl8239CmdPortResetSet",
     rtl8239CmdPortResetSet,
     "03",
     "reset",
     {{0, "00"}, {1, "01"}, {2, "01"}, {-1, "01"}, {256, "01"}},
     {}},
    {"rtl8239CmdPortFuncModeSet",
     rtl8239CmdPortFuncModeSet,
     "08",
     "function mode",
     {{0, "00"}, {1, "01"}, {2, "02"}},
     {-1, 3}},
    {"rtl8239CmdPortDetTypeSet",
     rtl8239CmdPortDetTypeSet,
     "09",
     "det type",
     {{0, "00"}, {1, "01"}, {5, "05"}, {6, "06"}},
     {-1, 7, 256}},
    {"rtl8239CmdPortDetTriggerSet",
     rtl8239CmdPortDetTriggerSet,
     "0A/00",
     "det trigger",
     {{0, "00"}, {1, "01"}},
     {-1, 2}},
    {"rtl8239CmdPortClsTriggerSet",
     rtl8239CmdPortClsTriggerSet,
     "0B",
     "cls trigger",
     {{0, "00"}, {1, "01"}, {7, "01"}, {-1, "01"}, {256, "01"}},
     {}},
    {"rtl8239CmdPortInrushModeSet",
     rtl8239CmdPortInrushModeSet,
     "0C",
     "inrush mode",
     {{0, "00"}, {3, "03"}, {9, "09"}},
     {-1, 10}},
    {"rtl8239CmdPortForceInrushSet",
     rtl8239CmdPortForceInrushSet,
     "0D",
     "inrush enable",
     {{0, "00"}, {1, "01"}, {0x7E, "7E"}, {0x1FE, "FE"}},
     {}},
    {"rtl8239CmdPortDisconnectTypeSet",
     rtl8239CmdPortDisconnectTypeSet,
     "0F",
     "inrush mode",
     {{0, "00"}, {2, "02"}, {3, "03"}},
     {-1, 4}},
    {"rtl8239CmdPortMaxPowerTypeSet",
     rtl8239CmdPortMaxPowerTypeSet,
     "12",
     "max power type",
     {{1, "01"}, {2, "02"}},
     {0, 3}},
    {"rtl8239CmdPortMaxPowerValueExtSet",
     setMaxPower,
     "14",
     "max power value",
     {{0, "00"}, {1, "01"}, {400, "01"}, {401, "02"}, {90000, "E1"}, {102000, "FF"}},
     {102001, UINT32_MAX}},
    {"rtl8239CmdPortPrioritySet",
     rtl8239CmdPortPrioritySet,
     "15",
     "priority",
     {{0, "00"}, {1, "01"}, {3, "03"}},
     {-1, 4}},
    {"rtl8239CmdPortTriggerDetClsPwrSet",
     rtl8239CmdPortTriggerDetClsPwrSet,
     "18",
     "force power",
     {{0, "00"}, {3, "03"}},
     {-1, 1, 2, 4}},
};

/** A table of tests: each runs for every setting. */
class PortSettingsTest : public PoeTest {
  protected:
    static int32_t set(const Setting &setting, int32_t firstPort, int32_t lastPort) {
        return setting.set(firstPort, lastPort, static_cast<int32_t>(setting.accepted[0].value));
    }

    /** A line that a setting prints. */
    static std::string line(const Setting &setting, const std::string &text) {
        return std::string("ERROR: ") + setting.function + "(#): " + text + "\n";
    }

    /** The request for consecutive ports. */
    static std::string pairs(const Setting &setting, int32_t firstPort, int32_t count) {
        std::string text = std::string(setting.command) + ":";
        char pair[16];
        for (int32_t port = firstPort; port < firstPort + count; ++port) {
            std::snprintf(pair, sizeof(pair), " %02X %s", port, setting.accepted[0].sent);
            text += pair;
        }
        return text;
    }
};

TEST_F(PortSettingsTest, SendEachAcceptedValue) {
    for (const Setting &setting : kSettings) {
        for (const Accepted &row : setting.accepted) {
            SCOPED_TRACE(setting.function + std::string(" ") + std::to_string(row.value));
            EXPECT_EQ(
                answerOf([&] { return setting.set(45, 46, static_cast<int32_t>(row.value)); }),
                kSilentSuccess);
            EXPECT_EQ(controller.requests(),
                      (Lines{withoutUnused(std::string(setting.command) + ": 2D " + row.sent +
                                           " 2E " + row.sent)}));
        }
    }
}

TEST_F(PortSettingsTest, RefuseEveryOtherValueBeforeAnythingIsSent) {
    for (const Setting &setting : kSettings) {
        for (const int64_t value : setting.refused)
            EXPECT_EQ(answerOf([&] { return setting.set(0, 0, static_cast<int32_t>(value)); }),
                      (Answer{BSP_E_POE_INVALID, ""}))
                << setting.function << " " << value;
    }
    EXPECT_TRUE(controller.exchanges().empty());
    EXPECT_EQ(elapsed(), 0u);
}

TEST_F(PortSettingsTest, TakePortsFrom0To47InAscendingOrder) {
    struct Range {
        int32_t first, last, status;
    };
    constexpr Range kRanges[] = {
        {0, 0, BSP_OK},
        {47, 47, BSP_OK},
        {-1, 0, BSP_E_POE_INVALID},
        {1, 0, BSP_E_POE_INVALID},
        {0, 48, BSP_E_POE_INVALID},
        {48, 48, BSP_E_POE_INVALID},
        {-1, -1, BSP_E_POE_INVALID},
    };
    for (const Setting &setting : kSettings) {
        for (const Range &range : kRanges) {
            EXPECT_EQ(set(setting, range.first, range.last), range.status)
                << setting.function << " " << range.first << "-" << range.last;
            EXPECT_EQ(controller.exchanges().size(), range.status == BSP_OK ? 1u : 0u);
        }
    }
}

TEST_F(PortSettingsTest, SendFourPortsAFrame) {
    for (const Setting &setting : kSettings) {
        SCOPED_TRACE(setting.function);
        EXPECT_EQ(set(setting, 0, 47), BSP_OK);
        Lines expected;
        for (int32_t port = 0; port < 48; port += 4)
            expected.push_back(pairs(setting, port, 4));
        EXPECT_EQ(controller.requests(), expected);

        EXPECT_EQ(set(setting, 5, 10), BSP_OK);
        EXPECT_EQ(controller.requests(), (Lines{pairs(setting, 5, 4), pairs(setting, 9, 2)}));
    }
}

TEST_F(PortSettingsTest, StopAtTheFirstFrameThatIsNotAnswered) {
    for (const Setting &setting : kSettings) {
        SCOPED_TRACE(setting.function);
        char code[8];
        std::snprintf(code, sizeof(code), "%x", bytesOf(setting.command)[0]);
        controller.answer({"", Spoil::Read}, 1);
        EXPECT_EQ(answerOf([&] { return set(setting, 2, 11); }),
                  (Answer{BSP_E_POE_READ,
                          silenceText(code) + line(setting, std::string("set port 6-9 ") +
                                                                setting.text + " failed.")}));
        EXPECT_EQ(controller.exchanges().size(), 2u);

        controller.answer({"", Spoil::Read}, 2);
        EXPECT_EQ(answerOf([&] { return set(setting, 2, 11); }),
                  (Answer{BSP_E_POE_READ,
                          silenceText(code) + line(setting, std::string("set port 10-11 ") +
                                                                setting.text + " failed.")}));
        EXPECT_EQ(controller.exchanges().size(), 3u);
    }
}

TEST_F(PortSettingsTest, StopAtTheFirstPairThatIsNotAccepted) {
    struct Refusal {
        const char *reply; // to the frame of ports 4 to 7
        int port;
    };
    constexpr Refusal kRefusals[] = {
        {"04 01 05 00 06 00 07 00", 4}, {"04 00 05 FF 06 00 07 00", 5},
        {"04 00 05 00 06 01 07 01", 6}, {"04 00 05 00 06 00 07 01", 7},
        {"05 00 05 00 06 00 07 00", 4}, {"04 00 05 00 06 00 08 00", 7},
    };
    for (const Setting &setting : kSettings) {
        for (const Refusal &refusal : kRefusals) {
            SCOPED_TRACE(setting.function + std::string(" ") + refusal.reply);
            controller.answer({refusal.reply}, 1);
            EXPECT_EQ(
                answerOf([&] { return set(setting, 0, 11); }),
                (Answer{BSP_E_POE_STATUS, line(setting, "port " + std::to_string(refusal.port) +
                                                            " response status check failed.")}));
            EXPECT_EQ(controller.exchanges().size(), 2u);
        }
    }
}

TEST_F(PortSettingsTest, LookAtThePairsTheySentOnly) {
    for (const Setting &setting : kSettings) {
        controller.answer({"04 00 09 09 09 09 09 09 09"});
        EXPECT_EQ(answerOf([&] { return set(setting, 4, 4); }), kSilentSuccess) << setting.function;
    }
}

} // namespace
