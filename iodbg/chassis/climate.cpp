#include "iodbg/chassis/climate.h"

#include "bsp.h"
#include "iodbg/chassis/fans.h"

namespace iodbg {

namespace {

constexpr Item kItems[] = {
    {"temperature_c", "Temperature", readTemperature},
    {"fan_level", "Fan level (1-10)", readFanLevel},
};

} // namespace

const std::span<const Item> kClimateItems = kItems;

int32_t readTemperature(Cell &celsius) {
    int32_t value = 0;
    const int32_t status = ioTemperGet(0, &value);
    celsius = {std::to_string(value) + " C", int64_t{value}};
    return status;
}

} // namespace iodbg
