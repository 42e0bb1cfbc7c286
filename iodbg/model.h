#pragma once
// What the board's model has.

#include <cstdint>

namespace iodbg {

struct Model {
    bool hasSupplyLines = false;    // its supplies' lines are in CPLD register 30
    bool hasSupplyReadings = false; // its supplies measure, and tell over PMBus
    uint32_t poePorts = 0;
};

int32_t readModel(Model &model);

} // namespace iodbg
