// What the driver's table offers: each operation is a command or two of the controller.

#include "bsp.h"
#include "poe/app_status.h"
#include "poe/rtl8239/bus.h"
#include "poe/rtl8239/commands.h"
#include "poe/rtl8239/port_values.h"

#include <cstdio>

namespace {

using namespace bsp::rtl8239;

constexpr int32_t asPort(uint32_t port) {
    return static_cast<int32_t>(port);
}

/** Queries a port and stores what a function makes of the answer. */
template <typename Record, typename Select>
int32_t readPort(int32_t (*query)(int32_t, Record *), uint32_t port, uint32_t *out, Select select) {
    if (out == nullptr)
        return BSP_E_POE_NULL;
    Record record{};
    if (const int32_t status = query(asPort(port), &record); status != BSP_OK)
        return status;
    *out = select(record);
    return BSP_OK;
}

/** Sends a setting to one port. */
int32_t setPort(int32_t (*set)(int32_t, int32_t, int32_t), uint32_t port, int32_t value) {
    return set(asPort(port), asPort(port), value);
}

/** Sends a setting that callers switch on and off. */
int32_t switchPort(int32_t (*set)(int32_t, int32_t, int32_t), uint32_t port, uint32_t value) {
    if (value != BSP_POE_ON && value != BSP_POE_OFF)
        return BSP_E_POE_INVALID;
    return setPort(set, port, value == BSP_POE_ON ? 1 : 0);
}

/** Two settings of one port, the second only when the first succeeded. */
int32_t setPortTwice(int32_t (*firstSet)(int32_t, int32_t, int32_t), int32_t firstValue,
                     int32_t (*secondSet)(int32_t, int32_t, int32_t), int32_t secondValue,
                     uint32_t port) {
    if (const int32_t status = setPort(firstSet, port, firstValue); status != BSP_OK)
        return status;
    return setPort(secondSet, port, secondValue);
}

int32_t forcePower(uint32_t port, bool isOn) {
    return setPort(rtl8239CmdPortTriggerDetClsPwrSet, port, isOn ? 3 : 0);
}

int32_t enablePower(uint32_t port, bool isOn) {
    if (isOn)
        return setPort(rtl8239CmdPortEnableSet, port, 2);
    return setPortTwice(rtl8239CmdPortEnableSet, 0, rtl8239CmdPortEnableSet, 1, port);
}

} // namespace

int32_t bspPoeRtl8239InitStatusSet(uint32_t) {
    return BSP_OK;
}

int32_t bspPoeRtl8239InitStatusGet(uint32_t *out) {
    if (out == nullptr)
        return BSP_E_POE_NULL;
    Rtl8239PowerTotals totals{};
    // A controller that does not answer says nothing about its initialisation; callers rely on the
    // value that they put in.
    if (rtl8239CmdQuery41Get(&totals) == BSP_OK)
        *out = totals.power4 != 0 ? BSP_POE_INITIALISED : BSP_POE_NOT_INITIALISED;
    return BSP_OK;
}

int32_t bspPoeRtl8239AppStatusGet(uint32_t *out) {
    return bsp::poeAppStatusGet(out);
}

int32_t bspPoeRtl8239AppStatusSet(uint32_t value) {
    return bsp::poeAppStatusSet(value);
}

int32_t bspPoeRtl8239AppVersionGet(char *text) {
    if (text == nullptr)
        return BSP_E_POE_NULL;
    Rtl8239SystemInfo info{};
    if (const int32_t status = rtl8239CmdSystemInfoGet(&info); status != BSP_OK)
        return status;
    const unsigned version = info.appVersion;
    std::sprintf(text, "V%u.%u.%u.%u", version >> 12, version >> 8 & 0xF, version >> 4 & 0xF,
                 version & 0xF);
    return BSP_OK;
}

int32_t bspPoeRtl8239GlobalMaxPowerSet(uint32_t milliwatts) {
    const BspPoePortMap *map = bspPoeRtl8239PortMapGet();
    if (map == nullptr)
        return BSP_E_POE_UNAVAILABLE;
    return rtl8239CmdGlobalPowerSourceSet(static_cast<int32_t>(map->powerBank), milliwatts, 0);
}

int32_t bspPoeRtl8239GlobalMaxPowerGet(uint32_t *milliwatts) {
    if (milliwatts == nullptr)
        return BSP_E_POE_NULL;
    const BspPoePortMap *map = bspPoeRtl8239PortMapGet();
    if (map == nullptr)
        return BSP_E_POE_UNAVAILABLE;
    Rtl8239PowerSource source{};
    if (const int32_t status =
            rtl8239CmdGlobalPowerSourceGet(static_cast<int32_t>(map->powerBank), &source);
        status != BSP_OK)
        return status;
    *milliwatts = source.power;
    return BSP_OK;
}

int32_t bspPoeRtl8239GlobalPowerGet(uint32_t *milliwatts) {
    if (milliwatts == nullptr)
        return BSP_E_POE_NULL;
    Rtl8239PowerTotals totals{};
    if (const int32_t status = rtl8239CmdQuery41Get(&totals); status != BSP_OK)
        return status;
    *milliwatts = totals.power7;
    return BSP_OK;
}

int32_t bspPoeRtl8239PortModeSet(uint32_t port, uint32_t mode) {
    if (mode <= BSP_POE_MODE_2)
        return setPortTwice(rtl8239CmdPortFuncModeSet, static_cast<int32_t>(mode),
                            rtl8239CmdPortEnableSet, 1, port);
    if (mode == BSP_POE_MODE_DISABLED)
        return setPortTwice(rtl8239CmdPortEnableSet, 0, rtl8239CmdPortFuncModeSet, 0, port);
    return BSP_E_POE_INVALID;
}

int32_t bspPoeRtl8239PortModeGet(uint32_t port, uint32_t *out) {
    if (out == nullptr)
        return BSP_E_POE_NULL;
    Rtl8239PortConfig config{};
    if (const int32_t status = rtl8239CmdQuery48Get(asPort(port), &config); status != BSP_OK)
        return status;
    return readMode(config, *out);
}

int32_t bspPoeRtl8239PortPowerOnSet(uint32_t port, uint32_t on) {
    Rtl8239PortConfig config{};
    if (const int32_t status = rtl8239CmdQuery48Get(asPort(port), &config); status != BSP_OK)
        return status;
    // How a port is switched depends on its function mode.
    if (config.funcMode != BSP_POE_MODE_1 && config.funcMode != BSP_POE_MODE_2)
        return BSP_E_POE_UNAVAILABLE;
    if (on != BSP_POE_ON && on != BSP_POE_OFF)
        return BSP_E_POE_INVALID;
    const bool isOn = on == BSP_POE_ON;
    return config.funcMode == BSP_POE_MODE_2 ? forcePower(port, isOn) : enablePower(port, isOn);
}

int32_t bspPoeRtl8239PortDetectionSet(uint32_t port) {
    return setPort(rtl8239CmdPortDetTriggerSet, port, 1);
}

int32_t bspPoeRtl8239PortClassificationSet(uint32_t port) {
    return setPort(rtl8239CmdPortClsTriggerSet, port, 1);
}

int32_t bspPoeRtl8239PortPrioritySet(uint32_t port, uint32_t priority) {
    if (priority < BSP_POE_PRIORITY_MIN || priority > BSP_POE_PRIORITY_MAX)
        return BSP_E_POE_INVALID;
    return setPort(rtl8239CmdPortPrioritySet, port, static_cast<int32_t>(turnedPriority(priority)));
}

int32_t bspPoeRtl8239PortMaxPowerSet(uint32_t port, uint32_t milliwatts) {
    return rtl8239CmdPortMaxPowerValueExtSet(asPort(port), asPort(port), milliwatts);
}

int32_t bspPoeRtl8239PortLegacyEnableSet(uint32_t port, uint32_t enable) {
    return switchPort(rtl8239CmdPortDetTypeSet, port, enable);
}

int32_t bspPoeRtl8239PortInrushModeSet(uint32_t port, uint32_t mode) {
    if (mode > BSP_POE_INRUSH_MODE_MAX)
        return BSP_E_POE_INVALID;
    return setPort(rtl8239CmdPortInrushModeSet, port,
                   mode == BSP_POE_INRUSH_MODE_MAX ? int32_t{kInrushLast}
                                                   : static_cast<int32_t>(mode));
}

int32_t bspPoeRtl8239PortForceInrushSet(uint32_t port, uint32_t force) {
    return switchPort(rtl8239CmdPortForceInrushSet, port, force);
}

int32_t bspPoeRtl8239PortMaxPowerTypeSet(uint32_t port, uint32_t type) {
    if (type < BSP_POE_LIMIT_TYPE_MIN || type > BSP_POE_LIMIT_TYPE_MAX)
        return BSP_E_POE_INVALID;
    return setPort(rtl8239CmdPortMaxPowerTypeSet, port, static_cast<int32_t>(type));
}

int32_t bspPoeRtl8239PortVoltageGet(uint32_t port, uint32_t *millivolts) {
    return readPort(rtl8239CmdPortMeasurementGet, port, millivolts,
                    [](const Rtl8239PortMeasurement &record) { return record.voltage; });
}

int32_t bspPoeRtl8239PortCurrentGet(uint32_t port, uint32_t *milliamperes) {
    return readPort(rtl8239CmdPortMeasurementGet, port, milliamperes,
                    [](const Rtl8239PortMeasurement &record) { return record.current; });
}

int32_t bspPoeRtl8239PortPowerGet(uint32_t port, uint32_t *milliwatts) {
    return readPort(rtl8239CmdPortMeasurementGet, port, milliwatts,
                    [](const Rtl8239PortMeasurement &record) { return record.power; });
}

int32_t bspPoeRtl8239PortMaxPowerGet(uint32_t port, uint32_t *milliwatts) {
    return readPort(rtl8239CmdQuery49Get, port, milliwatts,
                    [](const Rtl8239PortPowerConfig &record) { return record.powerLimit; });
}

int32_t bspPoeRtl8239PortInrushModeGet(uint32_t port, uint32_t *out) {
    return readPort(rtl8239CmdQuery49Get, port, out, inrushModeOf);
}

int32_t bspPoeRtl8239PortFaultGet(uint32_t port, uint32_t *out) {
    return readPort(rtl8239CmdPortStatusGet, port, out, faultOf);
}

int32_t bspPoeRtl8239PortDisconnectGet(uint32_t port, uint32_t *out) {
    return readPort(rtl8239CmdPortStatusGet, port, out, disconnectOf);
}

int32_t bspPoeRtl8239PortDetectionGet(uint32_t port, uint32_t *out) {
    return readPort(rtl8239CmdPortStatusGet, port, out, detectionOf);
}

int32_t bspPoeRtl8239PortClassificationGet(uint32_t port, uint32_t *out) {
    return readPort(rtl8239CmdPortStatusGet, port, out, classOf);
}
