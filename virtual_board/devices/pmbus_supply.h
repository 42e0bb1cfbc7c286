#pragma once
// The PMBus side of a plug-in power supply.

#include <cstdint>

namespace vb {

constexpr uint32_t kPmbusTemperatures = 3;

// The largest amounts of a world's supply.
constexpr uint32_t kPmbusMostOutputMv = 127000; // what the format of the output's voltage holds
constexpr uint32_t kPmbusMost = 4000000;        // of all others
constexpr int32_t kPmbusMostDegrees = 1000;     // above and below zero

/**
 * A reading that is the word of a real supply, which need not be how this one writes its amount.
 * Larger than every amount, and than every temperature.
 */
constexpr uint32_t kPmbusToldWord = 0x40000000;

/** The world's face: what the supply does. Each reading is an amount, or a word that is told. */
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

/** What is in thousandths what a word says, as far as 32 bits hold it. */
int32_t fromLinear11(uint16_t word);
uint32_t fromLinear16(uint16_t word);

// A reading's amount, whether it is told as a word or not.
uint32_t pmbusAmount(uint32_t reading);
uint32_t pmbusOutputMv(const PmbusSupply &supply);
int32_t pmbusDegrees(int32_t reading);

/** The reading of a command, or null. Those of temperatures have a sign. */
uint32_t *pmbusReading(PmbusSupply &supply, uint8_t command);

/** Makes a supply answer a reading with a word. */
void pmbusTell(PmbusSupply &supply, uint8_t command, uint16_t word);

} // namespace vb
