#include "poe/port_map.h"

#include "poe/presence.h"

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

constexpr BspPoePortMap kMaps[] = {wireBoard(48), wireBoard(24)};

} // namespace

const BspPoePortMap *bsp::poePortMap() {
    const BoardModel *model = poeModel();
    if (model == nullptr)
        return nullptr;
    for (const BspPoePortMap &map : kMaps) {
        if (map.portCount == model->poePorts)
            return &map;
    }
    return nullptr;
}
