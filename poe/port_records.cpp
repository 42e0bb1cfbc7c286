// State, measurement and settings of a port as records: by the driver's own operations where it has
// them, else value after value through its slots.

#include "bsp.h"
#include "poe/controllers.h"
#include "poe/driver_extension.h"
#include "poe/units.h"

#include <cstddef>
#include <cstdint>

namespace {

using bsp::PoeDriver;

constexpr uint32_t kNotRead = UINT32_MAX;

using Slot = int32_t (*)(uint32_t port, uint32_t *out);

/** An empty slot is a value that the driver cannot tell. */
int32_t readSlot(Slot slot, uint32_t port, uint32_t *out) {
    return slot != nullptr ? slot(port, out) : int32_t{BSP_E_POE_UNAVAILABLE};
}

/** A slot and where its value goes. */
struct SlotReading {
    Slot slot;
    uint32_t *out;
};

template <size_t count>
int32_t readSlots(uint32_t port, const SlotReading (&readings)[count]) {
    for (const SlotReading &reading : readings) {
        if (const int32_t status = readSlot(reading.slot, port, reading.out); status != BSP_OK)
            return status;
    }
    return BSP_OK;
}

int32_t readBySlots(const BspPoeDriver &driver, uint32_t port, BspPoePortState &state) {
    return readSlots(port, {{driver.portDetectionGet, &state.detection},
                            {driver.portClassificationGet, &state.classification},
                            {driver.portFaultGet, &state.fault},
                            {driver.portDisconnectGet, &state.disconnect}});
}

int32_t readBySlots(const BspPoeDriver &driver, uint32_t port, BspPoePortMeasurement &measurement) {
    return readSlots(port, {{driver.portVoltageGet, &measurement.voltageMv},
                            {driver.portCurrentGet, &measurement.currentMa},
                            {driver.portPowerGet, &measurement.powerMw}});
}

int32_t readBySlots(const BspPoeDriver &driver, uint32_t port, BspPoePortSettings &settings) {
    settings.modeStatus = readSlots(port, {{driver.portModeGet, &settings.mode}});
    settings.powerStatus = readSlots(port, {{driver.portMaxPowerGet, &settings.powerLimitMw},
                                            {driver.portInrushModeGet, &settings.inrushMode}});
    return BSP_OK;
}

/** An operation of the second table; null where the table ends before it. */
template <typename Operation>
Operation operationOf(const BspPoeDriverExtension *extension,
                      Operation BspPoeDriverExtension::*member) {
    if (extension == nullptr)
        return nullptr;
    const auto *table = reinterpret_cast<const std::byte *>(extension);
    const auto *operation = reinterpret_cast<const std::byte *>(&(extension->*member));
    const auto end = static_cast<size_t>(operation - table) + sizeof(Operation);
    return end <= extension->size ? extension->*member : nullptr;
}

/** Fills a record of the service layer's own. */
template <typename Record>
int32_t readRecord(const PoeDriver &driver, uint32_t port, Record &record,
                   int32_t (*BspPoeDriverExtension::*member)(uint32_t, Record *)) {
    const auto operation = operationOf(driver.extension, member);
    return operation != nullptr ? operation(port, &record)
                                : readBySlots(driver.slots, port, record);
}

/** Chooses the driver, as bspPoeOptDriver() does, and has it read a port, counted from 1. */
template <typename Record>
int32_t readPort(int32_t (*read)(const PoeDriver &driver, uint32_t port, Record *out),
                 uint32_t port, Record *out) {
    const PoeDriver *driver = bsp::poeDriver();
    return driver != nullptr ? read(*driver, port - 1, out) : int32_t{BSP_E_POE_UNAVAILABLE};
}

} // namespace

int32_t bsp::poePortStateGet(const PoeDriver &driver, uint32_t port, BspPoePortState *state) {
    if (state == nullptr)
        return BSP_E_POE_NULL;
    BspPoePortState record{};
    if (const int32_t status =
            readRecord(driver, port, record, &BspPoeDriverExtension::portStateGet);
        status != BSP_OK)
        return status;
    *state = record;
    return BSP_OK;
}

int32_t bsp::poePortMeasurementGet(const PoeDriver &driver, uint32_t port,
                                   BspPoePortMeasurement *measurement) {
    if (measurement == nullptr)
        return BSP_E_POE_NULL;
    BspPoePortMeasurement record{};
    record.temperature = BSP_POE_TEMPERATURE_UNKNOWN;
    if (const int32_t status =
            readRecord(driver, port, record, &BspPoeDriverExtension::portMeasurementGet);
        status != BSP_OK)
        return status;
    record.voltageV = wholeVolts(record.voltageMv);
    *measurement = record;
    return BSP_OK;
}

int32_t bsp::poePortSettingsGet(const PoeDriver &driver, uint32_t port,
                                BspPoePortSettings *settings) {
    if (settings == nullptr)
        return BSP_E_POE_NULL;
    BspPoePortSettings record = {.modeStatus = BSP_E_POE_UNAVAILABLE,
                                 .mode = kNotRead,
                                 .powerStatus = BSP_E_POE_UNAVAILABLE,
                                 .powerLimitMw = kNotRead,
                                 .inrushMode = kNotRead};
    if (const int32_t status =
            readRecord(driver, port, record, &BspPoeDriverExtension::portSettingsGet);
        status != BSP_OK)
        return status;
    if (record.modeStatus != BSP_OK && record.powerStatus != BSP_OK)
        return record.modeStatus;
    if (record.powerStatus != BSP_OK) // one of the two values may have been read
        record.powerLimitMw = record.inrushMode = kNotRead;
    *settings = record;
    return BSP_OK;
}

int32_t bspPoePortStateGet(uint32_t port, BspPoePortState *state) {
    return readPort(bsp::poePortStateGet, port, state);
}

int32_t bspPoePortMeasurementGet(uint32_t port, BspPoePortMeasurement *measurement) {
    return readPort(bsp::poePortMeasurementGet, port, measurement);
}

int32_t bspPoePortSettingsGet(uint32_t port, BspPoePortSettings *settings) {
    return readPort(bsp::poePortSettingsGet, port, settings);
}
