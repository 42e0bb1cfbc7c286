#pragma once
// The board's CPLD: 16-bit registers behind the kernel module.

#include "virtual_board/devices/board_map.h"

#include <cstdint>

namespace vb {

constexpr uint32_t kCpldRegisters = 64;

/** The logic that was programmed last. What it does is not modelled: the registers stay. */
struct CpldLogic {
    uint32_t programmings; // since the board was made
    uint32_t size, crc;    // of the image; 0 before the first programming
};

/** The world's face: what each register holds. */
struct Cpld {
    uint16_t reg[kCpldRegisters];
    CpldLogic logic;
};

/** The bus reads a register; false where there is none. */
bool cpldRead(const Cpld &cpld, uint32_t reg, uint16_t *value);

/** The bus writes a register; false where there is none. Bits that are inputs keep their level. */
bool cpldWrite(Cpld &cpld, uint32_t reg, uint16_t value);

/** The line of the n-th thing, counted from 1, where the map has that of the first. */
constexpr CpldLine nthLine(const CpldLine &first, uint32_t n) {
    return {first.reg, first.bit + n - 1};
}

/** What a field holds in a content of its register. */
constexpr uint32_t fieldOf(uint16_t content, const CpldField &field) {
    return uint32_t{content} >> field.lowestBit & ((1u << field.width) - 1);
}

/** The level of a line. */
bool cpldLevel(const Cpld &cpld, const CpldLine &line);

/** Whether the LED of a PoE port is lit, which is wired active low. */
bool isPoeLampLit(const Cpld &cpld, uint32_t port);

/** The board drives a line. */
void cpldDrive(Cpld &cpld, const CpldLine &line, bool level);

/**
 * Bits of a register that are inputs: what the board drives, and no write changes. All models carry
 * the same logic, so that a pin that a model leaves open is an input, too; it reads 0.
 */
uint16_t cpldInputs(uint32_t reg);

/**
 * Switching on: outputs are 0, but for the LEDs of PoE ports, which are active low and dark; inputs
 * are 0 until the board drives them. Identity is wired.
 */
void cpldReset(Cpld &cpld, uint32_t poePorts);

} // namespace vb
