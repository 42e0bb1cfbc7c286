// The driver's second table: the controller answers several values of a port at once.

#include "poe/rtl8239/commands.h"
#include "poe/rtl8239/driver.h"
#include "poe/rtl8239/port_values.h"

namespace {

using namespace bsp::rtl8239;

int32_t readState(uint32_t port, BspPoePortState *state) {
    Rtl8239PortStatus answer{};
    if (const int32_t status = rtl8239CmdPortStatusGet(static_cast<int32_t>(port), &answer);
        status != BSP_OK)
        return status;
    state->detection = detectionOf(answer);
    state->classification = classOf(answer);
    state->fault = faultOf(answer);
    state->disconnect = disconnectOf(answer);
    return BSP_OK;
}

int32_t readMeasurement(uint32_t port, BspPoePortMeasurement *measurement) {
    Rtl8239PortMeasurement answer{};
    if (const int32_t status = rtl8239CmdPortMeasurementGet(static_cast<int32_t>(port), &answer);
        status != BSP_OK)
        return status;
    measurement->voltageMv = answer.voltage;
    measurement->currentMa = answer.current;
    measurement->powerMw = answer.power;
    measurement->temperature = answer.temperature;
    return BSP_OK;
}

int32_t readModeSetting(int32_t port, BspPoePortSettings &settings) {
    Rtl8239PortConfig answer{};
    if (const int32_t status = rtl8239CmdQuery48Get(port, &answer); status != BSP_OK)
        return status;
    return readMode(answer, settings.mode);
}

int32_t readPowerSettings(int32_t port, BspPoePortSettings &settings) {
    Rtl8239PortPowerConfig answer{};
    if (const int32_t status = rtl8239CmdQuery49Get(port, &answer); status != BSP_OK)
        return status;
    settings.powerLimitMw = answer.powerLimit;
    settings.inrushMode = inrushModeOf(answer);
    return BSP_OK;
}

int32_t readSettings(uint32_t port, BspPoePortSettings *settings) {
    settings->modeStatus = readModeSetting(static_cast<int32_t>(port), *settings);
    settings->powerStatus = readPowerSettings(static_cast<int32_t>(port), *settings);
    return BSP_OK;
}

} // namespace

const BspPoeDriverExtension bspPoeRtl8239DriverExtension = {
    .size = sizeof(BspPoeDriverExtension),
    .portStateGet = readState,
    .portMeasurementGet = readMeasurement,
    .portSettingsGet = readSettings,
};
