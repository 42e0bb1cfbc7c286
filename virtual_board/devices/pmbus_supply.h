#pragma once
// The PMBus side of a plug-in power supply.

#include <cstdint>

namespace vb {

constexpr uint32_t kPmbusTemperatures = 3;

// The largest amounts of a world's supply.
constexpr uint32_t kPmbusMostOutputMv = 127000; // what the format of the output's voltage holds
constexpr uint32_t kPmbusMost = 4000000;        // of all others
constexpr int32_t kPmbusMostDegrees = 1000;     // above and below zero

/** The world's face: what the supply does. */
struct PmbusSupply {
    uint32_t inputMv, inputMa, inputMw;
    uint32_t outputMv, outputMa, outputMw;
    int32_t degrees[kPmbusTemperatures];
    uint32_t hasInputFailed;  // no mains: input and output are dead, the bus is not
    uint32_t hasOutputFailed; // output is dead
    uint32_t busyEvery;       // each n-th reading answers 0xFF; 0: none
    uint32_t reads;
};

/** A supply that feeds a lightly loaded switch. */
void pmbusBuild(PmbusSupply &supply);

/** Reads a command's bytes; 0xFF for what the supply does not know. */
void pmbusRead(PmbusSupply &supply, uint8_t command, uint8_t *data, uint32_t length);

/** Whether the state is one that a supply can have. */
bool pmbusIsConsistent(const PmbusSupply &supply);

/** Thousandths of a unit as LINEAR11: a signed 11-bit mantissa and a signed 5-bit exponent. */
uint16_t toLinear11(int64_t thousandths);

/** Thousandths of a unit in 512ths, the LINEAR16 format of this supply's output voltage. */
uint16_t toLinear16(uint32_t thousandths);

} // namespace vb
