// The sequence that makes the controller ready: reset, mapping, defaults, budget.

#include "bsp.h"
#include "poe/rtl8239/bus.h"
#include "poe/rtl8239/commands.h"
#include "poe/rtl8239/timing.h"

#include <unistd.h>

namespace {

using namespace bsp::rtl8239;

constexpr uint32_t kLowestVoltage = 33000;  // millivolts
constexpr uint32_t kHighestVoltage = 73000; // millivolts
constexpr int32_t kPowerManagement = 2;
constexpr int32_t kDisconnectType = 2;
constexpr int32_t kInrushFourPair = 6;
constexpr int32_t kInrushTwoPair = 3;

/** A controller whose upgrade failed holds nothing to initialise; an interrupted one gets a try. */
int32_t checkApplication() {
    uint32_t appStatus = BSP_POE_APP_USABLE;
    if (const int32_t status = bspPoeRtl8239AppStatusGet(&appStatus); status != BSP_OK)
        return status;
    if (appStatus == BSP_POE_APP_UPGRADE_FAILED)
        return BSP_E_POE_UNAVAILABLE;
    if (appStatus == BSP_POE_APP_UPGRADE_STARTED)
        return bspPoeRtl8239AppStatusSet(BSP_POE_APP_USABLE);
    return BSP_OK;
}

int32_t resetController() {
    if (const int32_t status = bspPoeRtl8239ResetSet(1); status != BSP_OK)
        return status;
    sleep(kResetSeconds);
    if (const int32_t status = bspPoeRtl8239ResetSet(0); status != BSP_OK)
        return status;
    sleep(kResetSeconds);
    return BSP_OK;
}

int32_t mapPorts(const BspPoePortMap &map) {
    if (const int32_t status = rtl8239CmdPortMappingEnableSet(0, BSP_POE_PORTS_MAX);
        status != BSP_OK)
        return status;
    for (int32_t index = 0; index < map.recordCount; ++index) {
        const BspPoePort &port = map.port[index];
        const int32_t status = rtl8239CmdPortPairMappingSet(
            index, port.pairType == kFourPair ? 1 : 0, port.deviceIndex, port.primaryChannel,
            port.secondaryChannel, port.chipAddress);
        if (status != BSP_OK)
            return status;
    }
    return BSP_OK;
}

/** A setting that every port starts with. */
struct PortDefault {
    int32_t (*set)(int32_t firstPort, int32_t lastPort, int32_t value);
    int32_t value;
};

constexpr PortDefault kPortDefaults[] = {
    {rtl8239CmdPortPrioritySet, 0},     {rtl8239CmdPortFuncModeSet, 0},
    {rtl8239CmdPortMaxPowerTypeSet, 1}, {rtl8239CmdPortDetTypeSet, 0},
    {rtl8239CmdPortForceInrushSet, 0},  {rtl8239CmdPortDisconnectTypeSet, kDisconnectType},
};

int32_t setPortDefaults(const BspPoePortMap &map) {
    for (const PortDefault &portDefault : kPortDefaults) {
        const int32_t status = portDefault.set(0, map.portCount - 1, portDefault.value);
        if (status != BSP_OK)
            return status;
    }
    return BSP_OK;
}

int32_t setBudget(const BspPoePortMap &map) {
    if (const int32_t status = rtl8239CmdGlobalParamSet(kLowestVoltage, kHighestVoltage);
        status != BSP_OK)
        return status;
    if (const int32_t status =
            rtl8239CmdGlobalPowerSourceSet(static_cast<int32_t>(map.powerBank), map.totalPower, 0);
        status != BSP_OK)
        return status;
    return rtl8239CmdGlobalPmModeSet(kPowerManagement);
}

int32_t setPortLimits(const BspPoePortMap &map) {
    for (int32_t index = 0; index < map.portCount; ++index) {
        const BspPoePort &port = map.port[index];
        const int32_t inrush = port.pairType == kFourPair ? kInrushFourPair : kInrushTwoPair;
        if (const int32_t status = rtl8239CmdPortInrushModeSet(index, index, inrush);
            status != BSP_OK)
            return status;
        if (const int32_t status = rtl8239CmdPortMaxPowerValueExtSet(index, index, port.maxPower);
            status != BSP_OK)
            return status;
    }
    return BSP_OK;
}

} // namespace

int32_t bspPoeRtl8239DeviceInit(void) {
    const BspPoePortMap *map = bspPoeRtl8239PortMapGet();
    if (map == nullptr)
        return BSP_E_POE_UNAVAILABLE;
    if (const int32_t status = checkApplication(); status != BSP_OK)
        return status;
    if (const int32_t status = resetController(); status != BSP_OK)
        return status;
    if (const int32_t status = rtl8239CmdGlobalEnableSet(0); status != BSP_OK)
        return status;
    if (const int32_t status = mapPorts(*map); status != BSP_OK)
        return status;
    if (const int32_t status = setPortDefaults(*map); status != BSP_OK)
        return status;
    if (const int32_t status = setBudget(*map); status != BSP_OK)
        return status;
    if (const int32_t status = rtl8239CmdPortMappingEnableSet(1, map->portCount); status != BSP_OK)
        return status;
    if (const int32_t status = setPortLimits(*map); status != BSP_OK)
        return status;
    return rtl8239CmdGlobalEnableSet(1);
}
