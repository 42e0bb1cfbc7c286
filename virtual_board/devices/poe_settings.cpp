#include "virtual_board/devices/poe_settings.h"

namespace vb {

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

} // namespace vb
