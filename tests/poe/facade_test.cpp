// The names that management software calls: each does what the function of its stem does.

#include "bsp.h"
#include "tests/support/answer.h"
#include "tests/support/scripted_controller.h"

#include <cstring>

namespace {

/** Everything that a call can show: its status, what it prints, sends and stores. */
struct Effect {
    Answer outcome;
    std::vector<std::string> requests;
    std::vector<std::string> trace;
    std::vector<uint8_t> output;

    bool operator==(const Effect &) const = default;
};

std::ostream &operator<<(std::ostream &stream, const Effect &effect) {
    stream << effect.outcome << "; " << effect.requests.size() << " frames:";
    for (const std::string &request : effect.requests)
        stream << "\n  " << request;
    for (const std::string &line : effect.trace)
        stream << "\n  " << line;
    return stream;
}

union Output {
    uint8_t bytes[64];
    uint32_t number;
    int32_t integer;
    char text[64];
    BspPowerInfo power;
    BspPoePortState state;
    BspPoePortMeasurement measurement;
    BspPoePortSettings settings;
};

using Call = int32_t (*)(Output &out);

struct Forwarded {
    const char *name;
    Call io;
    Call bsp;
};

// A pair of calls with the same arguments.
#define FORWARDED(name, ...)                                                                       \
    Forwarded {                                                                                    \
#name, []([[maybe_unused]] Output &                                                        \
                  out) { return io##name(__VA_ARGS__); },                                          \
                                                       []([[maybe_unused]] Output &                \
                                                          out) { return bsp##name(__VA_ARGS__); }  \
    }

const Forwarded kForwarded[] = {
    FORWARDED(PowerNumGet, &out.integer),
    FORWARDED(PowerPresentGet, 2, &out.integer),
    FORWARDED(PowerStatusGet, 2, &out.integer),
    FORWARDED(PowerInfoGet, 2, &out.power),
    FORWARDED(LedStateSet, 1, 18, 9, 2, 1),
    FORWARDED(WatchdogFeed),
    FORWARDED(WatchdogStart),
    FORWARDED(WatchdogStop),
    FORWARDED(WatchdogPeriodGet, &out.number),
    FORWARDED(WatchdogPeriodSet, 40),
    FORWARDED(PtpTriggerSet, 1),
    FORWARDED(SlotPresentGet, 1, &out.number),
    FORWARDED(SlotPowerStateSet, 1, 1),
    FORWARDED(PoeDeviceInit),
    FORWARDED(PoeInitStatusSet, 1),
    FORWARDED(PoeInitStatusGet, &out.number),
    FORWARDED(PoeGlobalMaxPowerSet, 1440000),
    FORWARDED(PoePortModeSet, 1, 2),
    FORWARDED(PoePortPowerOnSet, 1, 2),
    FORWARDED(PoePortDetectionSet, 2),
    FORWARDED(PoePortClassificationSet, 2),
    FORWARDED(PoePortPrioritySet, 2, 3),
    FORWARDED(PoePortMaxPowerSet, 2, 30000),
    FORWARDED(PoePortLegacyEnableSet, 2, 1),
    FORWARDED(PoePortInrushModeSet, 2, 8),
    FORWARDED(PoePortForceInrushSet, 2, 1),
    FORWARDED(PoePortMaxPowerTypeSet, 1, 2),
    FORWARDED(PoePortLedStateSet, 2, 1),
    FORWARDED(PoeGlobalMaxPowerGet, &out.number),
    FORWARDED(PoeGlobalRatedPowerGet, 2, &out.number),
    FORWARDED(PoeGlobalPowerGet, &out.number),
    FORWARDED(PoePortModeGet, 6, &out.number),
    FORWARDED(PoePortCurrentGet, 6, &out.number),
    FORWARDED(PoePortVoltageGet, 6, &out.number),
    FORWARDED(PoePortPowerGet, 6, &out.number),
    FORWARDED(PoePortMaxPowerGet, 6, &out.number),
    FORWARDED(PoePortFaultGet, 6, &out.number),
    FORWARDED(PoePortDetectionGet, 6, &out.number),
    FORWARDED(PoePortClassificationGet, 6, &out.number),
    FORWARDED(PoePortDisconnectGet, 6, &out.number),
    FORWARDED(PoePortInrushModeGet, 6, &out.number),
    FORWARDED(PoeAppStatusGet, &out.number),
    FORWARDED(PoeAppUpgradeSet, "/tmp/bsp/devId"),
    FORWARDED(PoeAppVersionGet, out.text),
    FORWARDED(PoePortStateGet, 6, &out.state),
    FORWARDED(PoePortMeasurementGet, 6, &out.measurement),
    FORWARDED(PoePortSettingsGet, 6, &out.settings),
};

class FacadeTest : public PoeTest {
  protected:
    /** The effect of a call on a fresh board whose answers are all different. */
    Effect effectOf(Call call) {
        usePoeModel(0x0709);
        writeBoardFile("/tmp/bsp/poeApp", "\x03");
        devices().cpld.reg[4] = 0x50;
        controller.answerAlways({"05 06 34 05 07 08 09 0A 0B"});
        Output out;
        std::memset(&out, 0xA5, sizeof(out));
        Effect effect;
        effect.outcome = answerOf([&] { return call(out); });
        effect.requests = controller.requests();
        effect.trace = trace();
        effect.output.assign(out.bytes, out.bytes + sizeof(out));
        return effect;
    }
};

TEST_F(FacadeTest, EveryFunctionDoesWhatTheOneOfItsStemDoes) {
    for (const Forwarded &row : kForwarded)
        EXPECT_EQ(effectOf(row.io), effectOf(row.bsp)) << row.name;
}

TEST_F(FacadeTest, TheEffectsCannotBeConfused) {
    // The calls without a visible effect of their own: nothing to tell them apart by.
    const auto isQuiet = [](const std::string &name) {
        return name == "WatchdogStart" || name.starts_with("Slot");
    };
    std::vector<std::pair<std::string, Effect>> effects;
    for (const Forwarded &row : kForwarded) {
        if (!isQuiet(row.name))
            effects.emplace_back(row.name, effectOf(row.bsp));
    }
    for (size_t one = 0; one < effects.size(); ++one) {
        for (size_t other = 0; other < one; ++other)
            EXPECT_FALSE(effects[one].second == effects[other].second)
                << effects[one].first << ", " << effects[other].first;
    }
}

} // namespace
