// The driver: it serves the state, the mode, the limit and the measurements of ports and the
// budget. Priorities, detection and classification on command, inrush modes and firmware the quill
// has not.

#include "tests/second_controller/library/driver.h"

#include "bsp.h"
#include "language/formats/byte_order.h"
#include "poe/app_status.h"
#include "poe/bus.h"
#include "poe/port_map.h"
#include "tests/second_controller/library/exchange.h"

#include <cstdio>
#include <unistd.h>

namespace quill {

namespace {

int32_t hold(bool isHeld) {
    const int32_t status = bsp::poeHoldInReset(isHeld);
    if (status == BSP_OK)
        sleep(kResetSeconds);
    return status;
}

int32_t writeByte(Register number, uint32_t port, uint8_t value) {
    return writeRegister(number, port, {&value, 1});
}

int32_t initialise() {
    const BspPoePortMap *map = bsp::poePortMap();
    if (map == nullptr)
        return BSP_E_POE_UNAVAILABLE;
    for (const bool isHeld : {true, false}) {
        if (const int32_t status = hold(isHeld); status != BSP_OK)
            return status;
    }
    if (const int32_t status = writeLong(kBudget, 0, map->totalPower); status != BSP_OK)
        return status;
    for (uint32_t port = 0; port < map->portCount; ++port) {
        if (const int32_t status = writeByte(kMode, port, kAutomatic); status != BSP_OK)
            return status;
        if (const int32_t status = writeLong(kLimit, port, map->port[port].maxPower);
            status != BSP_OK)
            return status;
    }
    return writeByte(kRun, 0, 1);
}

int32_t initStatusGet(uint32_t *out) {
    if (out == nullptr)
        return BSP_E_POE_NULL;
    uint8_t isRunning = 0;
    if (readRegister(kRun, 0, {&isRunning, 1}) == BSP_OK) // else callers keep their own
        *out = isRunning != 0 ? BSP_POE_INITIALISED : BSP_POE_NOT_INITIALISED;
    return BSP_OK;
}

int32_t appStatusGet(uint32_t *out) {
    return bsp::poeAppStatusGet(out);
}

int32_t appVersionGet(char *text) {
    if (text == nullptr)
        return BSP_E_POE_NULL;
    uint8_t version[2] = {};
    if (const int32_t status = readRegister(kVersion, 0, version); status != BSP_OK)
        return status;
    std::sprintf(text, "Q%u.%u", version[0], version[1]);
    return BSP_OK;
}

int32_t budgetSet(uint32_t milliwatts) {
    return milliwatts <= BSP_POE_BUDGET_MAX_MW ? writeLong(kBudget, 0, milliwatts)
                                               : int32_t{BSP_E_POE_INVALID};
}
template <Register number>
int32_t powerGet(uint32_t *milliwatts) {
    return milliwatts != nullptr ? readLong(number, 0, milliwatts) : int32_t{BSP_E_POE_NULL};
}

int32_t modeSet(uint32_t port, uint32_t mode) {
    switch (mode) {
    case BSP_POE_MODE_0:
        return writeByte(kMode, port, kAutomatic);
    case BSP_POE_MODE_1:
        return writeByte(kMode, port, kOnCommand);
    case BSP_POE_MODE_DISABLED:
        return writeByte(kMode, port, kOff);
    default:
        return BSP_E_POE_INVALID;
    }
}

int32_t modeGet(uint32_t port, uint32_t *out) {
    if (out == nullptr)
        return BSP_E_POE_NULL;
    uint8_t mode = 0;
    if (const int32_t status = readRegister(kMode, port, {&mode, 1}); status != BSP_OK)
        return status;
    if (mode > kOnCommand)
        return BSP_E_POE_CONTENT;
    constexpr uint32_t kModes[] = {BSP_POE_MODE_DISABLED, BSP_POE_MODE_0, BSP_POE_MODE_1};
    *out = kModes[mode];
    return BSP_OK;
}

int32_t powerOnSet(uint32_t port, uint32_t on) {
    if (on != BSP_POE_ON && on != BSP_POE_OFF)
        return BSP_E_POE_INVALID;
    return writeByte(kSwitch, port, on == BSP_POE_ON ? 1 : 0);
}

int32_t limitSet(uint32_t port, uint32_t milliwatts) {
    return milliwatts <= BSP_POE_PORT_LIMIT_MAX_MW ? writeLong(kLimit, port, milliwatts)
                                                   : int32_t{BSP_E_POE_INVALID};
}

int32_t limitGet(uint32_t port, uint32_t *milliwatts) {
    return milliwatts != nullptr ? readLong(kLimit, port, milliwatts) : int32_t{BSP_E_POE_NULL};
}

int32_t stateGet(uint32_t port, BspPoePortState *state) {
    uint8_t bytes[3] = {};
    if (const int32_t status = readRegister(kState, port, bytes); status != BSP_OK)
        return status;
    const uint8_t deviceClass = bytes[2];
    state->fault = bytes[0] == kFaulty ? BSP_POE_FAULT : BSP_POE_FAULT_NONE;
    state->disconnect = bytes[0] == kDelivering ? BSP_POE_DELIVERING : BSP_POE_DISCONNECTED;
    state->detection = bytes[1];
    state->classification = deviceClass == kNoClass ? uint32_t{BSP_POE_CLASS_NONE}
                            : deviceClass == 0      ? uint32_t{BSP_POE_CLASS_0_OR_12}
                                                    : deviceClass;
    return BSP_OK;
}

int32_t measurementGet(uint32_t port, BspPoePortMeasurement *measurement) {
    uint8_t bytes[8] = {};
    if (const int32_t status = readRegister(kMeasured, port, bytes); status != BSP_OK)
        return status;
    measurement->voltageMv = formats::loadBe16(bytes);
    measurement->currentMa = formats::loadBe16(bytes + 2);
    measurement->powerMw = formats::loadBe32(bytes + 4);
    return BSP_OK;
}

int32_t settingsGet(uint32_t port, BspPoePortSettings *settings) {
    settings->modeStatus = modeGet(port, &settings->mode);
    settings->powerStatus = limitGet(port, &settings->powerLimitMw);
    return BSP_OK; // the inrush mode stays what says that there is none
}

/** One value of a record. */
template <typename Record, int32_t (*get)(uint32_t, Record *), uint32_t Record::*member>
int32_t valueGet(uint32_t port, uint32_t *out) {
    if (out == nullptr)
        return BSP_E_POE_NULL;
    Record record{};
    const int32_t status = get(port, &record);
    if (status == BSP_OK)
        *out = record.*member;
    return status;
}

template <uint32_t BspPoePortState::*member>
constexpr auto kStateGet = valueGet<BspPoePortState, stateGet, member>;
template <uint32_t BspPoePortMeasurement::*member>
constexpr auto kMeasurementGet = valueGet<BspPoePortMeasurement, measurementGet, member>;

constexpr BspPoeDriver makeDriver() {
    BspPoeDriver driver{};
    driver.deviceInit = initialise;
    driver.initStatusGet = initStatusGet;
    driver.appStatusGet = appStatusGet;
    driver.appVersionGet = appVersionGet;
    driver.globalMaxPowerSet = budgetSet;
    driver.globalMaxPowerGet = powerGet<kBudget>;
    driver.globalPowerGet = powerGet<kDrawn>;
    driver.portModeSet = modeSet;
    driver.portModeGet = modeGet;
    driver.portPowerOnSet = powerOnSet;
    driver.portMaxPowerSet = limitSet;
    driver.portMaxPowerGet = limitGet;
    driver.portVoltageGet = kMeasurementGet<&BspPoePortMeasurement::voltageMv>;
    driver.portCurrentGet = kMeasurementGet<&BspPoePortMeasurement::currentMa>;
    driver.portPowerGet = kMeasurementGet<&BspPoePortMeasurement::powerMw>;
    driver.portFaultGet = kStateGet<&BspPoePortState::fault>;
    driver.portDetectionGet = kStateGet<&BspPoePortState::detection>;
    driver.portClassificationGet = kStateGet<&BspPoePortState::classification>;
    driver.portDisconnectGet = kStateGet<&BspPoePortState::disconnect>;
    return driver;
}

} // namespace

constexpr BspPoeDriver kDriver = makeDriver();

constexpr BspPoeDriverExtension kExtension = {.size = sizeof(BspPoeDriverExtension),
                                              .portStateGet = stateGet,
                                              .portMeasurementGet = measurementGet,
                                              .portSettingsGet = settingsGet};

} // namespace quill
