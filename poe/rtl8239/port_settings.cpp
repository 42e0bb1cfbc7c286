// Settings of ranges of ports: (port, value) pairs, up to four in a frame.

#include "poe/rtl8239/commands.h"
#include "poe/rtl8239/port_pairs.h"

namespace {

using namespace bsp::rtl8239;

/** What a setting is called in its failure message, and how it is sent. */
struct PortSetting {
    Command command;
    const char *name;
    uint8_t secondByte = kUnused;
};

int32_t setPorts(int32_t firstPort, int32_t lastPort, const PortSetting &setting, uint32_t value,
                 bsp::CallSite site = bsp::CallSite::here()) {
    return forEachFrame(firstPort, lastPort, [&](int32_t port, int count) {
        Frame request = requestFrame(setting.command, setting.secondByte);
        for (int i = 0; i < count; ++i)
            storePair(request, i, port + i, static_cast<uint8_t>(value));
        Frame reply = blankFrame();
        if (const int32_t status = exchange(request, reply); status != BSP_OK) {
            reportPortsFailed("set", setting.name, port, count, site);
            return status;
        }
        for (int i = 0; i < count; ++i) {
            if (!echoesPort(reply, i, port + i) || pairValue(reply, i) != 0)
                return reportPortCheckFailed(port + i, BSP_E_POE_STATUS, site);
        }
        return int32_t{BSP_OK};
    });
}

/** A setting whose value must lie within limits. */
int32_t setPortsWithin(int32_t firstPort, int32_t lastPort, const PortSetting &setting,
                       int32_t value, int32_t lowest, int32_t highest,
                       bsp::CallSite site = bsp::CallSite::here()) {
    if (!isPortRange(firstPort, lastPort) || !isWithin(value, lowest, highest))
        return BSP_E_POE_INVALID;
    return setPorts(firstPort, lastPort, setting, static_cast<uint32_t>(value), site);
}

/** A setting that takes every value. */
int32_t setPortsToAny(int32_t firstPort, int32_t lastPort, const PortSetting &setting,
                      uint32_t value, bsp::CallSite site = bsp::CallSite::here()) {
    if (!isPortRange(firstPort, lastPort))
        return BSP_E_POE_INVALID;
    return setPorts(firstPort, lastPort, setting, value, site);
}

} // namespace

int32_t rtl8239CmdPortEnableSet(int32_t firstPort, int32_t lastPort, int32_t enable) {
    return setPortsWithin(firstPort, lastPort, {kPortEnable, "enable"}, enable, 0, 2);
}

int32_t rtl8239CmdPortResetSet(int32_t firstPort, int32_t lastPort, int32_t reset) {
    return setPortsToAny(firstPort, lastPort, {kPortReset, "reset"}, reset != 0 ? 1 : 0);
}

int32_t rtl8239CmdPortFuncModeSet(int32_t firstPort, int32_t lastPort, int32_t mode) {
    return setPortsWithin(firstPort, lastPort, {kPortFuncMode, "function mode"}, mode, 0, 2);
}

int32_t rtl8239CmdPortDetTypeSet(int32_t firstPort, int32_t lastPort, int32_t type) {
    return setPortsWithin(firstPort, lastPort, {kPortDetType, "det type"}, type, 0, 6);
}

int32_t rtl8239CmdPortDetTriggerSet(int32_t firstPort, int32_t lastPort, int32_t trigger) {
    constexpr PortSetting kSetting = {kPortDetTrigger, "det trigger", kTriggerSet};
    return setPortsWithin(firstPort, lastPort, kSetting, trigger, 0, 1);
}

int32_t rtl8239CmdPortClsTriggerSet(int32_t firstPort, int32_t lastPort, int32_t trigger) {
    return setPortsToAny(firstPort, lastPort, {kPortClsTrigger, "cls trigger"},
                         trigger != 0 ? 1 : 0);
}

int32_t rtl8239CmdPortInrushModeSet(int32_t firstPort, int32_t lastPort, int32_t mode) {
    return setPortsWithin(firstPort, lastPort, {kPortInrushMode, "inrush mode"}, mode, 0, 9);
}

int32_t rtl8239CmdPortForceInrushSet(int32_t firstPort, int32_t lastPort, int32_t force) {
    return setPortsToAny(firstPort, lastPort, {kPortForceInrush, "inrush enable"},
                         static_cast<uint32_t>(force));
}

// Log filters know this failure under the inrush text.
int32_t rtl8239CmdPortDisconnectTypeSet(int32_t firstPort, int32_t lastPort, int32_t type) {
    return setPortsWithin(firstPort, lastPort, {kPortDisconnectType, "inrush mode"}, type, 0, 3);
}

int32_t rtl8239CmdPortMaxPowerTypeSet(int32_t firstPort, int32_t lastPort, int32_t type) {
    return setPortsWithin(firstPort, lastPort, {kPortMaxPowerType, "max power type"}, type, 1, 2);
}

int32_t rtl8239CmdPortMaxPowerValueExtSet(int32_t firstPort, int32_t lastPort, uint32_t power) {
    if (power > BSP_POE_PORT_LIMIT_MAX_MW)
        return BSP_E_POE_INVALID;
    return setPortsToAny(firstPort, lastPort, {kPortMaxPowerValueExt, "max power value"},
                         static_cast<uint32_t>(ceilDivide(power, kPowerLimitUnit)));
}

int32_t rtl8239CmdPortPrioritySet(int32_t firstPort, int32_t lastPort, int32_t priority) {
    return setPortsWithin(firstPort, lastPort, {kPortPriority, "priority"}, priority, 0, 3);
}

int32_t rtl8239CmdPortTriggerDetClsPwrSet(int32_t firstPort, int32_t lastPort, int32_t action) {
    if (action != 0 && action != 3)
        return BSP_E_POE_INVALID;
    return setPortsToAny(firstPort, lastPort, {kPortTriggerDetClsPwr, "force power"},
                         static_cast<uint32_t>(action));
}
