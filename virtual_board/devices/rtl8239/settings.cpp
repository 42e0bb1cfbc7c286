#include "virtual_board/devices/rtl8239/settings.h"

#include <algorithm>
#include <iterator>

namespace vb {

namespace {

bool isPortConsistent(const PoePortSettings &port) {
    return port.enable <= kPoeEnablePower && port.funcMode <= kPoeManual &&
           port.limitType <= kPoeLimitFixed && port.priority <= kPoeHighestPriority &&
           port.isMapped <= 1 && port.isFourPair <= 1;
}

} // namespace

void poeSetPortDefaults(PoePortSettings &port) {
    constexpr uint8_t kInrushTwoPair = 3;
    constexpr uint8_t kDisconnectByCurrent = 2;
    constexpr uint8_t kLimitByClass = 1;
    constexpr uint8_t kLimit30Watt = 75;
    port.enable = 1;
    port.funcMode = kPoeAutomatic;
    port.detType = 0;
    port.inrushMode = kInrushTwoPair;
    port.forceInrush = 0;
    port.disconnectType = kDisconnectByCurrent;
    port.limitType = kLimitByClass;
    port.limit = kLimit30Watt;
    port.priority = 0;
}

void poeSetDefaults(PoeSettings &settings) {
    constexpr uint8_t kDynamicByPriority = 2;
    settings = PoeSettings{};
    settings.pmMode = kDynamicByPriority;
    for (PoePortSettings &port : settings.port) {
        poeSetPortDefaults(port);
        port.secondaryChannel = kPoeNone;
        port.chipAddress = kPoeNone;
    }
}

PoeGoal poeGoalOf(const PoePortSettings &port) {
    if (port.funcMode == kPoeManual)
        return PoeGoal::Nothing;
    const bool stopsAtClass = port.funcMode == kPoeSemiAutomatic && port.enable != kPoeEnablePower;
    return stopsAtClass ? PoeGoal::Classify : PoeGoal::Power;
}

bool poeIsConsistent(const PoeSettings &settings) {
    return settings.isEnabled <= 1 && settings.isMappingEnabled <= 1 &&
           settings.portCount <= kPoePorts && settings.pmMode <= kPoeHighestPm &&
           std::all_of(std::begin(settings.port), std::end(settings.port), isPortConsistent);
}

} // namespace vb
