#include "poe/rtl8239/port_map.h"

#include "bsp.h"
#include "identity/board_catalogue.h"

namespace {

constexpr uint32_t kPortsPerDevice = 4;
constexpr uint8_t kFirstChipAddress = 0x20;
constexpr uint8_t kNotFitted = 0xFF;
constexpr uint32_t kPortPower = 90000;
constexpr uint32_t kTotalPower = 3000000;

/** Every port has four pairs, on two neighbouring channels of its device. */
constexpr BspPoePort wirePort(uint32_t port, bool isFitted) {
    const uint32_t device = port / kPortsPerDevice;
    const uint32_t channel = 2 * (port % kPortsPerDevice);
    return {static_cast<uint8_t>(device),
            isFitted ? static_cast<uint8_t>(kFirstChipAddress + 2 * device) : kNotFitted,
            static_cast<uint8_t>(channel),
            static_cast<uint8_t>(channel + 1),
            kFourPair,
            kPortPower};
}

constexpr BspPoePortMap wireBoard(uint8_t portCount) {
    BspPoePortMap map{};
    for (uint32_t port = 0; port < BSP_POE_PORTS_MAX; ++port)
        map.port[port] = wirePort(port, port < portCount);
    map.recordCount = BSP_POE_PORTS_MAX;
    map.portCount = portCount;
    map.powerBank = 0;
    map.totalPower = kTotalPower;
    return map;
}

constexpr BspPoePortMap kMap48 = wireBoard(48);
constexpr BspPoePortMap kMap24 = wireBoard(24);

} // namespace

const BspPoePortMap *bspPoeRtl8239PortMapGet(void) {
    uint32_t devId = 0;
    if (bspDevIdGet(&devId) != BSP_OK)
        return nullptr;
    const uint8_t ports = bsp::boardModel(devId).poePorts;
    uint32_t presence = BSP_POE_CONTROLLER_MISSING;
    if (ports == 0 || bspPoeOnlineGet(&presence) != BSP_OK ||
        presence != BSP_POE_CONTROLLER_PRESENT)
        return nullptr;
    return ports == kMap48.portCount ? &kMap48 : &kMap24;
}
