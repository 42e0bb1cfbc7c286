#pragma once
// What the board's model has.

#include <cstdint>
#include <vector>

namespace iodbg {

struct Model {
    bool hasSupplyLines = false;    // its supplies' lines are in CPLD register 30
    bool hasSupplyReadings = false; // its supplies measure, and tell over PMBus
    uint32_t poePorts = 0;
    uint32_t fans = 0;
    bool hasFanPresence = false; // a line tells whether a fan is there
    bool hasClock = false;
    std::vector<uint32_t> cages; // ports with an SFP cage, in rising order
};

int32_t readModel(Model &model);

} // namespace iodbg
