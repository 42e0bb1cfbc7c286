// The chip-independent face of PoE: what users call, by its name. Ports count from 1.

#include "bsp.h"
#include "identity/board_catalogue.h"
#include "poe/units.h"

#include <cstdint>

namespace {

int32_t setAll(BspPoeOperation operation, uint32_t value) {
    return bspPoeOptDriver(nullptr, operation, &value);
}
int32_t readAll(BspPoeOperation operation, void *out) {
    return bspPoeOptDriver(nullptr, operation, out);
}
int32_t setPort(BspPoeOperation operation, uint32_t port, uint32_t value) {
    return bspPoeOptDriver(&port, operation, &value);
}
int32_t actOnPort(BspPoeOperation operation, uint32_t port) {
    return bspPoeOptDriver(&port, operation, nullptr);
}
int32_t readPort(BspPoeOperation operation, uint32_t port, uint32_t *out) {
    return bspPoeOptDriver(&port, operation, out);
}

} // namespace

int32_t bspPoeDeviceInit(void) {
    return readAll(BSP_POE_DEVICE_INIT, nullptr);
}
int32_t bspPoeGlobalMaxPowerSet(uint32_t milliwatts) {
    return setAll(BSP_POE_GLOBAL_MAX_POWER_SET, milliwatts);
}
int32_t bspPoeInitStatusSet(uint32_t status) {
    return setAll(BSP_POE_INIT_STATUS_SET, status);
}
int32_t bspPoeInitStatusGet(uint32_t *out) {
    return readAll(BSP_POE_INIT_STATUS_GET, out);
}
int32_t bspPoePortModeSet(uint32_t port, uint32_t mode) {
    return setPort(BSP_POE_PORT_MODE_SET, port, mode);
}
int32_t bspPoePortPowerOnSet(uint32_t port, uint32_t on) {
    return setPort(BSP_POE_PORT_POWER_ON_SET, port, on);
}
int32_t bspPoePortDetectionSet(uint32_t port) {
    return actOnPort(BSP_POE_PORT_DETECTION_SET, port);
}
int32_t bspPoePortClassificationSet(uint32_t port) {
    return actOnPort(BSP_POE_PORT_CLASSIFICATION_SET, port);
}
int32_t bspPoePortPrioritySet(uint32_t port, uint32_t priority) {
    return setPort(BSP_POE_PORT_PRIORITY_SET, port, priority);
}
int32_t bspPoePortMaxPowerSet(uint32_t port, uint32_t milliwatts) {
    return setPort(BSP_POE_PORT_MAX_POWER_SET, port, milliwatts);
}
int32_t bspPoePortLegacyEnableSet(uint32_t port, uint32_t enable) {
    return setPort(BSP_POE_PORT_LEGACY_ENABLE_SET, port, enable);
}
int32_t bspPoePortInrushModeSet(uint32_t port, uint32_t mode) {
    return setPort(BSP_POE_PORT_INRUSH_MODE_SET, port, mode);
}
int32_t bspPoePortForceInrushSet(uint32_t port, uint32_t force) {
    return setPort(BSP_POE_PORT_FORCE_INRUSH_SET, port, force);
}
int32_t bspPoePortMaxPowerTypeSet(uint32_t port, uint32_t type) {
    return setPort(BSP_POE_PORT_MAX_POWER_TYPE_SET, port, type);
}
int32_t bspPoeGlobalMaxPowerGet(uint32_t *milliwatts) {
    return readAll(BSP_POE_GLOBAL_MAX_POWER_GET, milliwatts);
}
int32_t bspPoeGlobalPowerGet(uint32_t *milliwatts) {
    return readAll(BSP_POE_GLOBAL_POWER_GET, milliwatts);
}
int32_t bspPoePortModeGet(uint32_t port, uint32_t *out) {
    return readPort(BSP_POE_PORT_MODE_GET, port, out);
}
int32_t bspPoePortCurrentGet(uint32_t port, uint32_t *milliamperes) {
    return readPort(BSP_POE_PORT_CURRENT_GET, port, milliamperes);
}
int32_t bspPoePortPowerGet(uint32_t port, uint32_t *milliwatts) {
    return readPort(BSP_POE_PORT_POWER_GET, port, milliwatts);
}
int32_t bspPoePortMaxPowerGet(uint32_t port, uint32_t *milliwatts) {
    return readPort(BSP_POE_PORT_MAX_POWER_GET, port, milliwatts);
}
int32_t bspPoePortFaultGet(uint32_t port, uint32_t *out) {
    return readPort(BSP_POE_PORT_FAULT_GET, port, out);
}
int32_t bspPoePortDetectionGet(uint32_t port, uint32_t *out) {
    return readPort(BSP_POE_PORT_DETECTION_GET, port, out);
}
int32_t bspPoePortClassificationGet(uint32_t port, uint32_t *out) {
    return readPort(BSP_POE_PORT_CLASSIFICATION_GET, port, out);
}
int32_t bspPoePortDisconnectGet(uint32_t port, uint32_t *out) {
    return readPort(BSP_POE_PORT_DISCONNECT_GET, port, out);
}
int32_t bspPoePortInrushModeGet(uint32_t port, uint32_t *out) {
    return readPort(BSP_POE_PORT_INRUSH_MODE_GET, port, out);
}
int32_t bspPoeAppStatusGet(uint32_t *out) {
    return readAll(BSP_POE_APP_STATUS_GET, out);
}
int32_t bspPoeAppUpgradeSet(const char *file) {
    return readAll(BSP_POE_APP_UPGRADE, const_cast<char *>(file));
}
int32_t bspPoeAppVersionGet(char *text) {
    return readAll(BSP_POE_APP_VERSION_GET, text);
}
int32_t bspPoeDebugAllInfoGet(void) {
    return readAll(BSP_POE_DEBUG_ALL_INFO, nullptr);
}
int32_t bspPoeDebugPortInfoGet(uint32_t port) {
    return actOnPort(BSP_POE_DEBUG_PORT_INFO, port);
}
int32_t bspPoeDebugSwVersionGet(void) {
    return readAll(BSP_POE_DEBUG_SW_VERSION, nullptr);
}
int32_t bspPoeDebugChipDispatch(uint32_t, int32_t argc, char **argv) {
    const auto words = static_cast<uint32_t>(argc);
    return bspPoeOptDriver(&words, BSP_POE_DEBUG_DISPATCH, argv);
}
int32_t bspPoeDebugChipDispatchHelp(int32_t index) {
    const auto row = static_cast<uint32_t>(index);
    return bspPoeOptDriver(&row, BSP_POE_DEBUG_DISPATCH_HELP, nullptr);
}

int32_t bspPoePortVoltageGet(uint32_t port, uint32_t *volts) {
    uint32_t millivolts = 0;
    uint32_t *reading = volts != nullptr ? &millivolts : nullptr; // which the driver refuses
    const int32_t status = readPort(BSP_POE_PORT_VOLTAGE_GET, port, reading);
    if (status != BSP_OK || volts == nullptr)
        return status;
    *volts = bsp::wholeVolts(millivolts);
    return BSP_OK;
}

int32_t bspPoeGlobalRatedPowerGet(int32_t supplyIndex, uint32_t *milliwatts) {
    if (milliwatts == nullptr)
        return BSP_E_NULL;
    uint32_t devId = 0;
    if (const int32_t status = bspDevIdGet(&devId); status != BSP_OK)
        return status;
    if (!bsp::boardModel(devId).hasPoe())
        return BSP_E_NOT_SUPPORTED;
    int32_t supplies = 0;
    if (const int32_t status = bspPowerNumGet(&supplies); status != BSP_OK)
        return status;
    if (supplyIndex < 1 || supplyIndex > supplies)
        return BSP_E_NOT_SUPPORTED;
    *milliwatts = BSP_POE_RATED_POWER_MW;
    return BSP_OK;
}

// The LED's line is active low.
int32_t bspPoePortLedStateSet(uint32_t port, uint32_t state) {
    return bspLedStateSet(1, port, BSP_LED_POE_PORT, 2,
                          state == BSP_POE_LED_ON ? BSP_LED_STATE_0 : BSP_LED_STATE_1);
}
