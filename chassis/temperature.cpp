// The board's temperature sensor.

#include "bsp.h"
#include "support/board_map.h"

using bsp::kTemperatureSensor;

// The sensor is sent no register number: it answers the one that is selected when it starts, whose
// first byte is the temperature in whole degrees.
int32_t bspTemperGet(uint32_t, int32_t *celsius) {
    if (celsius == nullptr)
        return BSP_E_NULL;
    uint8_t degrees = 0;
    if (const int32_t status =
            bspI2cRead(kTemperatureSensor.bus, kTemperatureSensor.channel,
                       kTemperatureSensor.device, 0, 0, &degrees, sizeof(degrees));
        status != BSP_OK)
        return status;
    *celsius = degrees <= INT8_MAX ? degrees : degrees - (UINT8_MAX + 1);
    return BSP_OK;
}
