// LEDs, watchdog, reset, PTP trigger, slots.

#include "bsp.h"
#include "tests/support/answer.h"
#include "tests/support/virtual_board_test.h"

namespace {

/** What reaches the CPLD and the GPIO lines, in short: "read 7", "write 7 = 0003", "pause 100". */
class ControlTest : public VirtualBoardTest {
  protected:
    void SetUp() override {
        VirtualBoardTest::SetUp();
        cacheDeviceId();
    }

    void cacheDeviceId() {
        uint32_t devId = 0;
        ASSERT_EQ(bspDevIdGet(&devId), BSP_OK);
        traffic();
    }

    std::vector<std::string> traffic() {
        std::vector<std::string> lines;
        for (; seen_ < board().trace.total; ++seen_) {
            const std::string line = lineOf(vb::traceAt(board().trace, seen_));
            if (!line.empty())
                lines.push_back(line);
        }
        return lines;
    }

    uint16_t &reg(uint32_t number) const { return devices().cpld.reg[number]; }

    void useOther(uint32_t devId) {
        useModel(devId);
        seen_ = 0;
        cacheDeviceId();
    }

  private:
    static std::string lineOf(const vb::TraceRecord &record) {
        char line[64] = "";
        switch (record.kind) {
        case vb::TraceKind::CpldRead:
            std::snprintf(line, sizeof(line), "read %u", record.offset);
            break;
        case vb::TraceKind::CpldWrite:
            std::snprintf(line, sizeof(line), "write %u = %04X", record.offset, record.value);
            break;
        case vb::TraceKind::GpioRead:
            std::snprintf(line, sizeof(line), "line %u?", record.offset);
            break;
        case vb::TraceKind::GpioOutput:
            std::snprintf(line, sizeof(line), "line %u = %u", record.offset, record.value);
            break;
        case vb::TraceKind::Sleep:
            std::snprintf(line, sizeof(line), "pause %llu",
                          static_cast<unsigned long long>(record.sleepNs / 1000));
            break;
        default:
            break;
        }
        return line;
    }

    uint64_t seen_ = 0;
};

using Lines = std::vector<std::string>;

struct Led {
    uint32_t kind, index, state;
    uint16_t before;
    int32_t status;
    const char *written; // "" when nothing is touched
};

constexpr Led kLeds[] = {
    {1, 0, 0, 0xFFFF, BSP_OK, "7 = FFFC"},
    {1, 0, 1, 0x0000, BSP_OK, "7 = 0003"},
    {1, 9, 2, 0xFFFF, BSP_OK, "7 = FFFE"},
    {1, 0, 3, 0xA5A4, BSP_OK, "7 = A5A5"},
    {1, 0, 4, 0, BSP_E_INVALID, ""},
    {1, 0, UINT32_MAX, 0, BSP_E_INVALID, ""},
    {4, 0, 0, 0xFFFF, BSP_OK, "7 = FFEF"},
    {4, 7, 1, 0x0000, BSP_OK, "7 = 0010"},
    {4, 0, 2, 0, BSP_E_NOT_SUPPORTED, ""},
    {4, 0, 3, 0, BSP_E_NOT_SUPPORTED, ""},
    {4, 0, 4, 0, BSP_E_INVALID, ""},
    {5, 0, 0, 0xFFFF, BSP_OK, "7 = FFDF"},
    {5, 7, 1, 0x0000, BSP_OK, "7 = 0020"},
    {5, 0, 2, 0, BSP_E_NOT_SUPPORTED, ""},
    {5, 0, 4, 0, BSP_E_INVALID, ""},
    {7, 0, 1, 0x0000, BSP_OK, "7 = 0020"},
    {7, 1, 1, 0x0000, BSP_OK, "7 = 0040"},
    {7, 10, 0, 0xFFFF, BSP_OK, "7 = 7FFF"},
    {7, 11, 1, 0x1234, BSP_OK, "7 = 1234"}, // no such bit
    {7, 27, 1, 0x1234, BSP_OK, "7 = 1234"},
    {7, UINT32_MAX, 1, 0x1234, BSP_OK, "7 = 1234"},
    {7, 1, 2, 0, BSP_E_NOT_SUPPORTED, ""},
    {7, 1, 4, 0, BSP_E_INVALID, ""},
    {9, 1, 1, 0x0000, BSP_OK, "13 = 0001"},
    {9, 16, 0, 0xFFFF, BSP_OK, "13 = 7FFF"},
    {9, 17, 0, 0xFFFF, BSP_OK, "14 = FFFE"},
    {9, 33, 1, 0x0000, BSP_OK, "15 = 0001"},
    {9, 48, 1, 0x0000, BSP_OK, "15 = 8000"},
    {9, 0, 1, 0, BSP_E_INVALID, ""},
    {9, 49, 1, 0, BSP_E_INVALID, ""},
    {9, 1, 2, 0, BSP_E_NOT_SUPPORTED, ""},
    {9, 1, 4, 0, BSP_E_INVALID, ""},
    {9, 0, 2, 0, BSP_E_INVALID, ""}, // the port comes first
    {0, 1, 1, 0, BSP_E_NOT_SUPPORTED, ""},
    {2, 1, 1, 0, BSP_E_NOT_SUPPORTED, ""},
    {3, 1, 4, 0, BSP_E_NOT_SUPPORTED, ""}, // the kind comes first
    {6, 1, 1, 0, BSP_E_NOT_SUPPORTED, ""},
    {8, 1, 1, 0, BSP_E_NOT_SUPPORTED, ""},
    {10, 1, 1, 0, BSP_E_NOT_SUPPORTED, ""},
};

TEST_F(ControlTest, LedsAreFieldsOfTheirRegisters) {
    for (const Led &led : kLeds) {
        SCOPED_TRACE(listed({led.kind, led.index, led.state}));
        for (const uint32_t number : {7u, 13u, 14u, 15u})
            reg(number) = led.before;
        EXPECT_EQ(bspLedStateSet(3, led.index, led.kind, 5, led.state), led.status);
        const std::string written = led.written;
        EXPECT_EQ(traffic(), written.empty()
                                 ? Lines{}
                                 : (Lines{"read " + written.substr(0, written.find(' ')),
                                          "write " + written}));
    }
}

TEST_F(ControlTest, PortLedsAreThoseOfTheModelsPorts) {
    for (const vb::Model &model : vb::kModels) {
        SCOPED_TRACE(model.devId);
        useOther(model.devId);
        const bool hasPoe = model.poePorts != 0;
        EXPECT_EQ(bspLedStateSet(1, model.poePorts, 9, 2, 1), hasPoe ? BSP_OK : 1000);
        EXPECT_EQ(bspLedStateSet(1, model.poePorts + 1u, 9, 2, 1), hasPoe ? 1002 : 1000);
        EXPECT_EQ(bspLedStateSet(1, 1, 4, 2, 1), BSP_OK);
    }
    addFault(openFails("/tmp/bsp/devId", EACCES));
    EXPECT_EQ(bspLedStateSet(1, 1, 9, 2, 1), BSP_E_OPEN);
    EXPECT_EQ(bspLedStateSet(1, 1, 4, 2, 1), BSP_OK) << "only port LEDs depend on the model";
}

TEST_F(ControlTest, LedFailuresAreThoseOfTheRegister) {
    addFault(refuse(vb::FaultDevice::Cpld, vb::FaultOp::Write, 6));
    EXPECT_EQ(bspLedStateSet(1, 1, 4, 2, 1), 6);
    addFault(refuse(vb::FaultDevice::Cpld, vb::FaultOp::Read, 5));
    traffic();
    EXPECT_EQ(bspLedStateSet(1, 1, 4, 2, 1), 5);
    EXPECT_EQ(traffic(), (Lines{"read 7"}));
}

TEST_F(ControlTest, FeedingTheWatchdogInvertsItsLine) {
    devices().gpio.isOutput[0] = 1;
    devices().gpio.driven[0] = 0;
    EXPECT_EQ(bspWatchdogFeed(), BSP_OK);
    EXPECT_EQ(traffic(), (Lines{"line 0?", "line 0 = 1"}));
    EXPECT_EQ(bspWatchdogFeed(), BSP_OK);
    EXPECT_EQ(traffic(), (Lines{"line 0?", "line 0 = 0"}));
}

TEST_F(ControlTest, FeedingTheWatchdogNeverFails) {
    devices().gpio.isOutput[0] = 1;
    devices().gpio.driven[0] = 1;
    addFault(refuse(vb::FaultDevice::Gpio, vb::FaultOp::Read, 5));
    EXPECT_EQ(bspWatchdogFeed(), BSP_OK);
    EXPECT_EQ(traffic(), (Lines{"line 0?", "line 0 = 1"})) << "an unreadable line counts as low";
    addFault(refuse(vb::FaultDevice::Gpio, vb::FaultOp::Write, 5));
    EXPECT_EQ(bspWatchdogFeed(), BSP_OK);
}

TEST_F(ControlTest, WatchdogPeriodIsBits2To7OfRegister4) {
    struct Case {
        uint32_t period;
        int32_t status;
        const char *written;
    };
    constexpr Case kCases[] = {
        {0, BSP_OK, "write 4 = 0000"},   {1, BSP_OK, "write 4 = 0004"},
        {63, BSP_OK, "write 4 = 00FC"},  {64, BSP_E_INVALID, ""},
        {0x40000000, BSP_E_INVALID, ""}, {UINT32_MAX, BSP_E_INVALID, ""},
    };
    for (const Case &row : kCases) {
        EXPECT_EQ(bspWatchdogPeriodSet(row.period), row.status) << row.period;
        EXPECT_EQ(traffic(), row.status == BSP_OK ? Lines{row.written} : Lines{});
    }
    for (const auto &[content, expected] :
         {std::pair{0x00FC, 63u}, {0xFF03, 0u}, {0xABA7, 41u}, {0x0004, 1u}}) {
        reg(4) = static_cast<uint16_t>(content);
        uint32_t period = 77;
        EXPECT_EQ(bspWatchdogPeriodGet(&period), BSP_OK);
        EXPECT_EQ(period, expected);
    }
    EXPECT_EQ(bspWatchdogPeriodGet(nullptr), BSP_E_NULL);
}

TEST_F(ControlTest, WatchdogPeriodFailuresAreThoseOfTheRegister) {
    addFault(refuse(vb::FaultDevice::Cpld, vb::FaultOp::Any, 5));
    uint32_t period = 77;
    EXPECT_EQ(bspWatchdogPeriodGet(&period), 5);
    EXPECT_EQ(period, 77u);
    EXPECT_EQ(bspWatchdogPeriodSet(1), 5);
    EXPECT_EQ(bspWatchdogStop(), 5);
    EXPECT_EQ(bspHwReboot(), 5);
}

TEST_F(ControlTest, WatchdogStartsByItsPeriodAndStopsByZero) {
    EXPECT_EQ(bspWatchdogStart(), BSP_OK);
    EXPECT_EQ(traffic(), (Lines{}));
    EXPECT_EQ(bspWatchdogStop(), BSP_OK);
    EXPECT_EQ(traffic(), (Lines{"write 4 = 0000"}));
}

TEST_F(ControlTest, RebootWritesZeroToRegister5) {
    EXPECT_EQ(bspHwReboot(), BSP_OK);
    EXPECT_EQ(traffic(), (Lines{"write 5 = 0000"}));
}

TEST_F(ControlTest, PtpTriggerIsALowPulse) {
    for (const auto &[before, low, high] : {std::tuple{0xFFFF, "write 6 = 7FFF", "write 6 = FFFF"},
                                            {0x1234, "write 6 = 1234", "write 6 = 9234"}}) {
        reg(6) = static_cast<uint16_t>(before);
        EXPECT_EQ(bspPtpTriggerSet(7), BSP_OK);
        EXPECT_EQ(traffic(), (Lines{"read 6", low, "pause 100", "read 6", high}));
    }
}

TEST_F(ControlTest, PtpTriggerStopsAtTheFirstFailure) {
    const auto text = [](const char *function) {
        return "bspPtpTriggerSet-#: " + std::string(function) + " error. ret=5 \n";
    };
    struct Case {
        vb::FaultOp op;
        uint32_t nth;
        std::string text;
        size_t steps;
    };
    const Case cases[] = {
        {vb::FaultOp::Read, 1, text("bspCpldGet"), 1},
        {vb::FaultOp::Write, 1, text("bspCpldSet"), 2},
        {vb::FaultOp::Read, 2, text("bspCpldGet"), 4},
        {vb::FaultOp::Write, 2, text("bspCpldSet"), 5},
    };
    for (const Case &row : cases) {
        clearFaults();
        addFault(refuse(vb::FaultDevice::Cpld, row.op, 5, row.nth));
        EXPECT_EQ(answerOf([] { return bspPtpTriggerSet(1); }), (Answer{5, row.text}));
        EXPECT_EQ(traffic().size(), row.steps);
    }
}

TEST_F(ControlTest, ThereAreNoSlots) {
    uint32_t isPresent = 7;
    EXPECT_EQ(bspSlotPresentGet(1, &isPresent), BSP_E_NOT_SUPPORTED);
    EXPECT_EQ(bspSlotPresentGet(1, nullptr), BSP_E_NOT_SUPPORTED);
    EXPECT_EQ(bspSlotPowerStateSet(1, 1), BSP_E_NOT_SUPPORTED);
    EXPECT_EQ(isPresent, 7u);
    EXPECT_EQ(traffic(), (Lines{}));
}

} // namespace
