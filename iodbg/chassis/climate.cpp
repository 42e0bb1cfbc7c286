#include "iodbg/chassis/climate.h"

#include "bsp.h"
#include "iodbg/chassis/fans.h"

namespace iodbg {

namespace {

int32_t readBoardTemperature(Cell &celsius) {
    int32_t value = 0;
    const int32_t status = ioTemperGet(0, &value);
    celsius = {std::to_string(value) + " C", int64_t{value}};
    return status;
}

constexpr Temperature kSensors[] = {
    {{"temperature_c", "Temperature", readBoardTemperature}, "read the temperature sensor"},
};

constexpr Item kItems[] = {
    kSensors[0].item,
    {"fan_level", "Fan level (1-10)", readFanLevel},
};

} // namespace

const std::span<const Temperature> kTemperatures = kSensors;
const std::span<const Item> kClimateItems = kItems;

} // namespace iodbg
