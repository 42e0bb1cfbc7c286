#pragma once
// What a driver can have beyond the slots of BspPoeDriver, which are fixed: operations that tell
// several values of a port at once.

#include "bsp.h"

#include <cstdint>

/**
 * The second table of a driver. New operations are added at its end, and size says where the table
 * of this driver ends. An operation behind that, or a null one, is one that the driver does not
 * have: its values are read through the slots of BspPoeDriver.
 *
 * Ports count from 0, and the record is not null. An operation stores what its controller tells and
 * leaves the other members as they are.
 */
struct BspPoeDriverExtension {
    uint32_t size; // in bytes
    int32_t (*portStateGet)(uint32_t port, BspPoePortState *state);
    /** Leaves voltageV to the service layer. */
    int32_t (*portMeasurementGet)(uint32_t port, BspPoePortMeasurement *measurement);
    /** BSP_OK once the statuses of both exchanges are stored. */
    int32_t (*portSettingsGet)(uint32_t port, BspPoePortSettings *settings);
};

namespace bsp {

/** A driver with both tables; the second one may be missing. */
struct PoeDriver {
    const BspPoeDriver &slots;
    const BspPoeDriverExtension *extension;
};

// The service operations with a driver that is chosen already. Ports count from 0.

int32_t poePortStateGet(const PoeDriver &driver, uint32_t port, BspPoePortState *state);
int32_t poePortMeasurementGet(const PoeDriver &driver, uint32_t port,
                              BspPoePortMeasurement *measurement);
int32_t poePortSettingsGet(const PoeDriver &driver, uint32_t port, BspPoePortSettings *settings);

} // namespace bsp
