// Queries: request, decoded reply, refusals, and outputs that a failure leaves alone.

#include "bsp.h"
#include "poe/rtl8239/commands.h"
#include "tests/support/answer.h"
#include "tests/support/scripted_controller.h"

#include <algorithm>
#include <cstring>

namespace {

using Lines = std::vector<std::string>;

/** What came of a query. */
struct Asked {
    int32_t status;
    bool isUntouched; // no byte of the output has changed
    std::string fields;
};

template <typename Record>
Asked ask(int32_t (*query)(Record *), std::string (*show)(const Record &)) {
    constexpr uint8_t kMark = 0xA5;
    Record record;
    std::memset(static_cast<void *>(&record), kMark, sizeof(record));
    Asked asked{};
    asked.status = query(&record);
    const auto *bytes = reinterpret_cast<const unsigned char *>(&record);
    asked.isUntouched = std::all_of(bytes, bytes + sizeof(record),
                                    [](unsigned char byte) { return byte == kMark; });
    if (asked.status == BSP_OK)
        asked.fields = show(record);
    return asked;
}

template <size_t count>
std::string listedBytes(const uint8_t (&bytes)[count]) {
    std::string text;
    for (const uint8_t byte : bytes)
        text += (text.empty() ? "" : " ") + std::to_string(byte);
    return text;
}

Asked systemInfo() {
    return ask<Rtl8239SystemInfo>(rtl8239CmdSystemInfoGet, [](const Rtl8239SystemInfo &info) {
        return listed({info.byte3, info.byte4, info.word5, info.appVersion, info.byte8, info.flag0,
                       info.flag1, info.flag2});
    });
}
Asked powerTotals() {
    return ask<Rtl8239PowerTotals>(rtl8239CmdQuery41Get, [](const Rtl8239PowerTotals &totals) {
        return listed({totals.power2, totals.power7, totals.power4, totals.byte6});
    });
}
Asked portStatus() {
    return ask<Rtl8239PortStatus>(
        [](Rtl8239PortStatus *out) { return rtl8239CmdPortStatusGet(5, out); },
        [](const Rtl8239PortStatus &port) {
            return listed({port.status, port.fault, port.classification, port.detection, port.low5,
                           port.high5, port.mode});
        });
}
Asked measurement() {
    return ask<Rtl8239PortMeasurement>(
        [](Rtl8239PortMeasurement *out) { return rtl8239CmdPortMeasurementGet(5, out); },
        [](const Rtl8239PortMeasurement &port) {
            return listed({port.voltage, port.current, port.temperature, port.power});
        });
}
std::string show45(const Rtl8239Query45 &record) {
    return listedBytes(record.byte);
}
Asked query45() {
    return ask<Rtl8239Query45>([](Rtl8239Query45 *out) { return rtl8239CmdQuery45Get(5, 1, out); },
                               show45);
}
Asked query45WithoutFlag() {
    return ask<Rtl8239Query45>([](Rtl8239Query45 *out) { return rtl8239CmdQuery45Get(5, 0, out); },
                               show45);
}
std::string show46(const Rtl8239Query46 &record) {
    std::string text = listed({record.flag2[0], record.flag2[1], record.flag3[0], record.flag3[1]});
    for (int port = 0; port < 48; ++port)
        text += record.port[port] ? " " + std::to_string(port) : "";
    return text;
}
Asked query46() {
    return ask<Rtl8239Query46>([](Rtl8239Query46 *out) { return rtl8239CmdQuery46Get(1, out); },
                               show46);
}
Asked query46WithoutFlag() {
    return ask<Rtl8239Query46>([](Rtl8239Query46 *out) { return rtl8239CmdQuery46Get(0, out); },
                               show46);
}
Asked portConfig() {
    return ask<Rtl8239PortConfig>(
        [](Rtl8239PortConfig *out) { return rtl8239CmdQuery48Get(5, out); },
        [](const Rtl8239PortConfig &port) {
            return listed({port.enable, port.funcMode, port.byte5, port.byte7, port.byte8});
        });
}
Asked portPowerConfig() {
    return ask<Rtl8239PortPowerConfig>(
        [](Rtl8239PortPowerConfig *out) { return rtl8239CmdQuery49Get(5, out); },
        [](const Rtl8239PortPowerConfig &port) {
            return listed({port.inrushMode, port.byte4, port.priority, port.byte7, port.byte8,
                           port.byte9, port.powerLimit});
        });
}
Asked globalParam() {
    return ask<Rtl8239GlobalParam>(rtl8239CmdGlobalParamGet, [](const Rtl8239GlobalParam &param) {
        return listed({param.lowThreshold, param.highThreshold, param.byte3, param.byte8});
    });
}
Asked powerSource() {
    return ask<Rtl8239PowerSource>(
        [](Rtl8239PowerSource *out) { return rtl8239CmdGlobalPowerSourceGet(7, out); },
        [](const Rtl8239PowerSource &source) {
            return listed({source.byte2, source.power, source.reservePower});
        });
}
Asked query4E() {
    return ask<Rtl8239Query4E>(
        [](Rtl8239Query4E *out) { return rtl8239CmdQuery4EGet(5, out); },
        [](const Rtl8239Query4E &record) { return listedBytes(record.byte); });
}
Asked query4F() {
    return ask<Rtl8239Query4F>(
        [](Rtl8239Query4F *out) { return rtl8239CmdQuery4FGet(5, out); },
        [](const Rtl8239Query4F &record) {
            const auto &[first, second] = record.pair;
            return listed({first.voltage, first.word, second.voltage, second.word});
        });
}
Asked query50() {
    return ask<Rtl8239Query50>(rtl8239CmdQuery50Get, [](const Rtl8239Query50 &record) {
        return listedBytes(record.value);
    });
}
Asked chipRegister() {
    return ask<uint32_t>(
        [](uint32_t *out) {
            Rtl8239ChipRegister chip = {0x05, 0x12345678, *out};
            const int32_t status = rtl8239CmdDebugChipRegGet(&chip);
            EXPECT_EQ(chip.selector, 0x05);
            EXPECT_EQ(chip.address, 0x12345678u);
            *out = chip.value;
            return status;
        },
        [](const uint32_t &value) { return listed({value}); });
}

struct Query {
    Asked (*ask)();
    const char *request;
    const char *reply;
    const char *fields;
    const char *code = nullptr; // as messages show it; set in one row of each query
};

constexpr Query kQueries[] = {
    {systemInfo, "40:", "FF 03 04 05 06 12 08 07 34", "3 4 1286 4660 8 1 1 1", "40"},
    {systemInfo, "40:", "FF 03 04 FF FE 12 08 02 34", "3 4 65534 4660 8 0 1 0"},
    {systemInfo, "40:", "00 00 00 00 00 00 00 05 FF", "0 0 0 255 0 1 0 1"},
    {powerTotals, "41:", "00 01 00 02 05 FF FF", "100 6553500 200 5", "41"},
    {powerTotals, "41:", "01 02 03 04 05 06 07 08 09", "25800 154300 77200 5"},
    {portStatus, "42: 05", "05 02 87 21 00 01", "2 255 8 7 33 255 1", "42"},
    {portStatus, "42: 05", "05 04 87 21 00 01", "4 135 255 255 33 255 1"},
    {portStatus, "42: 05", "05 02 87 21 00 02", "2 255 8 7 1 2 2"},
    {portStatus, "42: 05", "05 04 12 34 00 02", "4 18 255 255 4 3 2"},
    {measurement, "44: 05", "05 03 46 01 02 00 C8 03 04", "54009 258 25 77200", "44"},
    {measurement, "44: 05", "05 FF FF FF FF 00 00 FF FF", "4223730 65535 275 6553500"},
    {measurement, "44: 05", "05 00 01 00 00 01 00 00 01", "64 0 -45 100"},
    {measurement, "44: 05", "05 00 00 00 00 00 DF 00 00", "0 0 -3 0"},
    {query45, "45: 05 01", "05 01 02 03 04 05 06", "1 2 3 4 5", "45"},
    {query45WithoutFlag, "45: 05 00", "05 FF 02 03 04 FE", "255 2 3 4 254"},
    {query46, "46: 01", "02 04 01 00 80 00 00 40", "1 0 0 1 0 23 46", "46"},
    {query46WithoutFlag, "46: 00", "04 02 00 00 00 00 00 80", "0 1 1 0 47"},
    {query46, "46: 01", "F9 F9 FE 02 00 00 00 00", "0 0 0 0 1 2 3 4 5 6 7 9"},
    {portConfig, "48: 05", "05 01 02 03 04 05 06", "1 2 3 5 6", "48"},
    {portPowerConfig, "49: 05", "05 01 02 03 04 05 06 07", "1 2 4 5 6 7 1200", "49"},
    {portPowerConfig, "49: 05", "05 01 02 FF 04 05 06 07", "1 2 4 5 6 7 102000"},
    {globalParam, "4A:", "00 03 00 00 00 00 08", "33000 57000 3 8", "4a"},
    {globalParam, "4A:", "F9 03 09 09 09 10 08", "49048 58031 3 8"},
    {powerSource, "4B/07:", "02 75 30 00 01", "2 3000000 100", "4b"},
    {powerSource, "4B/07:", "FF 00 00 FF FF", "255 0 6553500"},
    {query4E, "4E: 05", "05 01 02 03 04 05 06 07 08", "1 2 3 4 5 6 7 8", "4e"},
    {query4F, "4F: 05", "05 03 46 01 02 FF FF 03 04", "54009 258 4223730 772", "4f"},
    {query50, "50:", "12 34 56 78 9A BC FF FF FF", "1 2 3 4 5 6 7 8 9 10 11 12", "50"},
    {chipRegister, "F1: 05 12 34 56 78", "09 09 09 09 09 9A BC DE F0", "2596069104", "f1"},
};

using QueriesTest = PoeTest;

TEST_F(QueriesTest, AskOnceAndDecodeTheReply) {
    for (const Query &row : kQueries) {
        SCOPED_TRACE(row.request + std::string(" -> ") + row.reply);
        controller.answer({row.reply});
        const Asked asked = row.ask();
        EXPECT_EQ(asked.status, BSP_OK);
        EXPECT_EQ(asked.fields, row.fields);
        EXPECT_EQ(controller.requests(), (Lines{row.request}));
    }
}

TEST_F(QueriesTest, LeaveTheOutputAloneWhenTheExchangeFails) {
    for (const Query &row : kQueries) {
        if (row.code == nullptr)
            continue;
        SCOPED_TRACE(row.request);
        controller.answer({row.reply, Spoil::Read});
        Asked asked{};
        EXPECT_EQ(answerOf([&] {
                      asked = row.ask();
                      return asked.status;
                  }),
                  (Answer{BSP_E_POE_READ, silenceText(row.code)}));
        EXPECT_TRUE(asked.isUntouched);
    }
}

TEST_F(QueriesTest, AboutAPortRefuseTheAnswerOfAnother) {
    for (const Query &row : kQueries) {
        if (row.code == nullptr || std::string(row.request).find(": 05") == std::string::npos ||
            row.ask == chipRegister)
            continue;
        SCOPED_TRACE(row.request);
        controller.answer({"04"});
        Asked asked{};
        EXPECT_EQ(answerOf([&] {
                      asked = row.ask();
                      return asked.status;
                  }),
                  (Answer{BSP_E_POE_CONTENT, ""}));
        EXPECT_TRUE(asked.isUntouched);
    }
}

template <typename Record>
void expectPortsChecked(int32_t (*query)(int32_t port, Record *out)) {
    Record record{};
    EXPECT_EQ(query(0, &record), BSP_OK);
    EXPECT_EQ(query(47, &record), BSP_OK);
    EXPECT_EQ(query(-1, &record), BSP_E_POE_INVALID);
    EXPECT_EQ(query(48, &record), BSP_E_POE_INVALID);
    EXPECT_EQ(query(256, &record), BSP_E_POE_INVALID);
    EXPECT_EQ(query(0, nullptr), BSP_E_POE_INVALID);
}

TEST_F(QueriesTest, AboutAPortTakePorts0To47AndNeedAnOutput) {
    expectPortsChecked(rtl8239CmdPortStatusGet);
    expectPortsChecked(rtl8239CmdPortMeasurementGet);
    expectPortsChecked<Rtl8239Query45>(
        [](int32_t port, Rtl8239Query45 *out) { return rtl8239CmdQuery45Get(port, 0, out); });
    expectPortsChecked(rtl8239CmdQuery48Get);
    expectPortsChecked(rtl8239CmdQuery49Get);
    expectPortsChecked(rtl8239CmdQuery4EGet);
    expectPortsChecked(rtl8239CmdQuery4FGet);
    EXPECT_EQ(controller.exchanges().size(), 7u * 2) << "what is refused is not sent";
}

TEST_F(QueriesTest, OfTheControllerNeedAnOutput) {
    EXPECT_EQ(rtl8239CmdSystemInfoGet(nullptr), BSP_E_POE_NULL);
    EXPECT_EQ(rtl8239CmdQuery41Get(nullptr), BSP_E_POE_NULL);
    EXPECT_EQ(rtl8239CmdQuery46Get(1, nullptr), BSP_E_POE_NULL);
    EXPECT_EQ(rtl8239CmdGlobalParamGet(nullptr), BSP_E_POE_NULL);
    EXPECT_EQ(rtl8239CmdGlobalPowerSourceGet(0, nullptr), BSP_E_POE_NULL);
    EXPECT_EQ(rtl8239CmdQuery4CGet(nullptr), BSP_E_POE_NULL);
    EXPECT_EQ(rtl8239CmdQuery50Get(nullptr), BSP_E_POE_NULL);
    EXPECT_EQ(rtl8239CmdDebugChipRegGet(nullptr), BSP_E_POE_NULL);
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(QueriesTest, PowerBanksAre0To7) {
    Rtl8239PowerSource source{};
    EXPECT_EQ(rtl8239CmdGlobalPowerSourceGet(0, &source), BSP_OK);
    EXPECT_EQ(rtl8239CmdGlobalPowerSourceGet(-1, &source), BSP_E_POE_INVALID);
    EXPECT_EQ(rtl8239CmdGlobalPowerSourceGet(8, &source), BSP_E_POE_INVALID);
    EXPECT_EQ(controller.requests(), (Lines{"4B/00:"}));
}

Asked query4C() {
    return ask<Rtl8239Query4C>(rtl8239CmdQuery4CGet, [](const Rtl8239Query4C &record) {
        return listedBytes(record.byte);
    });
}

TEST_F(QueriesTest, TwelveBytesComeInTwoExchanges) {
    controller.answer({"00 01 02 03 04 05 06 07 08"});
    controller.answer({"08 09 0A 0B 0C FF FF FF FF"}, 1);
    EXPECT_EQ(query4C().fields, "1 2 3 4 5 6 7 8 9 10 11 12");
    EXPECT_EQ(controller.requests(), (Lines{"4C: 00", "4C: 08"}));
    EXPECT_EQ(elapsed(), 400000u);
}

TEST_F(QueriesTest, TwelveBytesComeWholeOrNotAtAll) {
    struct Case {
        ScriptedReply answer;
        size_t later;
        int32_t status;
    };
    const Case cases[] = {
        {{"08"}, 0, BSP_E_POE_CONTENT},
        {{"00"}, 1, BSP_E_POE_CONTENT},
        {{"", Spoil::Read}, 0, BSP_E_POE_READ},
        {{"", Spoil::Read}, 1, BSP_E_POE_READ},
    };
    for (const Case &row : cases) {
        controller.answer(row.answer, row.later);
        const Asked asked = query4C();
        EXPECT_EQ(asked.status, row.status);
        EXPECT_TRUE(asked.isUntouched);
        EXPECT_EQ(controller.exchanges().size(), row.later + 1);
    }
}

struct PortsQuery {
    const char *function;
    int32_t (*get)(int32_t firstPort, int32_t lastPort, uint8_t *values);
    const char *command;
    const char *code;
    const char *text;
    int highest; // answer of a port
};

constexpr PortsQuery kPortsQueries[] = {
    {"rtl8239CmdPortDetTriggerGet", rtl8239CmdPortDetTriggerGet, "0A/01", "a", "det trigger", 0xFE},
    {"rtl8239CmdPortFuncModeGet", rtl8239CmdPortFuncModeGet, "4D", "4d", "function mode", 0xFF},
};

class PortsQueriesTest : public PoeTest {
  protected:
    Answer get(const PortsQuery &query, int32_t firstPort, int32_t lastPort) {
        values.assign(50, 0xA5);
        return answerOf([&] { return query.get(firstPort, lastPort, values.data()); });
    }
    bool isUntouched() const { return values == std::vector<uint8_t>(50, 0xA5); }

    std::vector<uint8_t> values;
};

TEST_F(PortsQueriesTest, StoreTheValueOfEachPort) {
    for (const PortsQuery &query : kPortsQueries) {
        SCOPED_TRACE(query.function);
        controller.answer({"05 01 06 02 07 03 08 04"});
        controller.answer({"09 05 0A FE FF FF FF FF"}, 1);
        EXPECT_EQ(get(query, 5, 10), kSilentSuccess);
        EXPECT_EQ(std::vector<uint8_t>(values.begin(), values.begin() + 7),
                  bytesOf("01 02 03 04 05 FE A5"));
        EXPECT_EQ(controller.requests(),
                  (Lines{query.command + std::string(": 05 FF 06 FF 07 FF 08"),
                         query.command + std::string(": 09 FF 0A")}));
    }
}

TEST_F(PortsQueriesTest, OfAllPortsTakeTwelveFrames) {
    for (const PortsQuery &query : kPortsQueries) {
        EXPECT_EQ(get(query, 0, 47), kSilentSuccess);
        EXPECT_EQ(controller.exchanges().size(), 12u);
        EXPECT_EQ(values[47], 0);
        EXPECT_EQ(values[48], 0xA5);
    }
}

TEST_F(PortsQueriesTest, CheckPortsAndOutput) {
    for (const PortsQuery &query : kPortsQueries) {
        const Answer invalid = {BSP_E_POE_INVALID, ""};
        EXPECT_EQ(get(query, -1, 0), invalid);
        EXPECT_EQ(get(query, 1, 0), invalid);
        EXPECT_EQ(get(query, 0, 48), invalid);
        EXPECT_EQ(query.get(0, 0, nullptr), BSP_E_POE_INVALID);
    }
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(PortsQueriesTest, StopAtTheFirstFrameThatIsNotAnswered) {
    for (const PortsQuery &query : kPortsQueries) {
        controller.answer({"", Spoil::Read}, 1);
        EXPECT_EQ(get(query, 0, 11),
                  (Answer{BSP_E_POE_READ, silenceText(query.code) + "ERROR: " + query.function +
                                              "(#): get port 4-7 " + query.text + " failed.\n"}));
        EXPECT_TRUE(isUntouched());
        EXPECT_EQ(controller.exchanges().size(), 2u);
    }
}

TEST_F(PortsQueriesTest, StopAtTheFirstPortThatIsNotAnswered) {
    for (const PortsQuery &query : kPortsQueries) {
        controller.answer({"04 00 05 00 05 00 07 00"}, 1);
        EXPECT_EQ(get(query, 0, 11),
                  (Answer{BSP_E_POE_CONTENT, std::string("ERROR: ") + query.function +
                                                 "(#): port 6 response status check failed.\n"}));
        EXPECT_TRUE(isUntouched());
        EXPECT_EQ(controller.exchanges().size(), 2u);

        controller.answer({"00 FF"});
        EXPECT_EQ(get(query, 0, 0).status, query.highest == 0xFF ? BSP_OK : BSP_E_POE_CONTENT);
        controller.exchanges();
    }
}

} // namespace
