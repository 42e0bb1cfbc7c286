// What traces call the controller's commands, against the codes that the driver sends.

#include "language/trace_names.h"
#include "poe/rtl8239/frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <span>
#include <string>

namespace {

using namespace bsp::rtl8239;

struct Named {
    uint8_t code;
    const char *name;
};

constexpr char kUnknown[] = "unknown command";
constexpr uint8_t kBanks = 4;

constexpr Named kCommands[] = {
    {kGlobalEnable, "enable all ports"},
    {kPortEnable, "set port enable"},
    {kGlobalReset, "reset"},
    {kPortReset, "reset ports"},
    {kGlobalPowerSource, "set power source"},
    {kPortMappingEnable, "enable port mapping"},
    {kPortPairMapping, "map port"},
    {kPortFuncMode, "set port function mode"},
    {kPortDetType, "set port detection type"},
    {kPortDetTrigger, "port detection trigger"},
    {kPortClsTrigger, "trigger port classification"},
    {kPortInrushMode, "set port inrush mode"},
    {kPortForceInrush, "set port forced inrush"},
    {kGlobalParam, "set voltage thresholds"},
    {kPortDisconnectType, "set port disconnect type"},
    {kGlobalPmMode, "set power management mode"},
    {kGlobalPmModeExt, "set extended power management mode"},
    {kPortMaxPowerType, "set port power limit type"},
    {kPortMaxPowerValueExt, "set port power limit"},
    {kPortPriority, "set port priority"},
    {kGlobalPortEventMask, "set port event mask"},
    {kPortTriggerDetClsPwr, "force port power"},
    {kSystemInfo, "system information"},
    {kQuery41, "power totals"},
    {kPortStatus, "port status"},
    {kPortMeasurement, "port measurements"},
    {kQuery45, "port counters"},
    {kQuery46, "port events"},
    {kQuery48, "port configuration"},
    {kQuery49, "port power configuration"},
    {kGlobalParamQuery, "voltage thresholds"},
    {kGlobalPowerSourceQuery, "power source"},
    {kQuery4C, "chip addresses"},
    {kPortFuncModeQuery, "port function mode"},
    {kQuery4E, "port mapping"},
    {kQuery4F, "port pair measurements"},
    {kQuery50, "chip loads"},
    {kMisc, kUnknown},     // without a sub-command
    {kReserved, kUnknown}, // nothing sends it
    {kDebugChipRegWrite, "write chip register"},
    {kDebugChipRegRead, "read chip register"},
};

constexpr Named kMiscCommands[] = {
    {kJumpToLoader, "jump to loader"},       {kConfigSave, "save settings"},
    {kConfigClear, "clear saved settings"},  {kConfigReset, "reset settings"},
    {kConfigInit, "initialise settings"},    {kJumpToApp, "jump to application"},
    {kDownloadBank0, "block of bank 0"},     {kDownloadBank0 + 1, "block of bank 1"},
    {kDownloadBank0 + 2, "block of bank 2"}, {kDownloadBank3, "block of bank 3"},
};
static_assert(kDownloadBank3 == kDownloadBank0 + kBanks - 1);

/** The name of a code; null for one without a row. */
const char *nameIn(std::span<const Named> names, int code) {
    const auto row = std::find_if(names.begin(), names.end(),
                                  [code](const Named &named) { return named.code == code; });
    return row != names.end() ? row->name : nullptr;
}

/** What a trace calls a frame that begins like this. */
std::string traced(std::array<uint8_t, 2> start) {
    language::TraceRecord record = {};
    record.kind = language::TraceKind::I2cWrite;
    record.bus = language::kPoeBus;
    record.devAddr = language::kPoeDevAddr;
    record.stored = start.size();
    std::copy(start.begin(), start.end(), record.data);
    return language::transferName(record);
}

/** Expects each code to have the name of its row, and all others none. */
template <typename Traced>
void expectNames(std::span<const Named> names, Traced tracedCode) {
    for (int code = 0; code <= UINT8_MAX; ++code) {
        const char *name = nameIn(names, code);
        EXPECT_EQ(tracedCode(static_cast<uint8_t>(code)),
                  std::string("PoE ") + (name != nullptr ? name : kUnknown))
            << code;
    }
}

TEST(CommandNamesTest, TracesNameWhatTheDriverSends) {
    expectNames(kCommands, [](uint8_t code) { return traced({code, kUnused}); });
    expectNames(kMiscCommands, [](uint8_t code) { return traced({kMisc, code}); });
}

TEST(CommandNamesTest, NoCodeIsForgotten) {
    int codes = 0;
#define COMMAND(code)                                                                              \
    EXPECT_NE(nameIn(kCommands, code), nullptr) << #code;                                          \
    ++codes;
#define MISC(code)                                                                                 \
    EXPECT_NE(nameIn(kMiscCommands, code), nullptr) << #code;                                      \
    ++codes;
#include BSP_TEST_POE_COMMAND_CODES
    EXPECT_GT(codes, 40); // that the header was understood
}

} // namespace
