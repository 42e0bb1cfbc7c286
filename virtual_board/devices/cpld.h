#pragma once
// The board's CPLD: 16-bit registers behind the kernel module.

#include <cstdint>

namespace vb {

constexpr uint32_t kCpldRegisters = 64;

constexpr uint32_t kCpldDeviceId = 1;
constexpr uint32_t kCpldVersion = 2;
constexpr uint32_t kCpldWatchdog = 4;
constexpr uint32_t kCpldReset = 5;
constexpr uint32_t kCpldControl = 6;
constexpr uint32_t kCpldLamps = 7;
constexpr uint32_t kCpldPoeLamps = 13; // and the two registers behind it, a bit for each port
// SFP cages: of the uplinks, and registers of three for those of front ports.
constexpr uint32_t kCpldUplinkInputs = 8;    // receive loss from bit 0 on, presence from bit 6 on
constexpr uint32_t kCpldUplinkTransmit = 12; // fault from bit 0 on, disable from bit 6 on
constexpr uint32_t kCpldSfpLoss = 16;
constexpr uint32_t kCpldSfpPresent = 19;
constexpr uint32_t kCpldSfpFault = 22;
constexpr uint32_t kCpldSfpDisable = 25;
constexpr uint32_t kCpldFanCounts = 28; // and the register behind it, two fans in each
constexpr uint32_t kCpldSupplies = 30;
constexpr uint32_t kCpldFanPresence = 31;

/** A line of the CPLD: a bit of a register. */
struct CpldLine {
    uint32_t reg;
    uint32_t bit;
};

constexpr CpldLine kCpldPoeAbsent = {kCpldControl, 14}; // active-low presence

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

/** The level of a line. */
bool cpldLevel(const Cpld &cpld, const CpldLine &line);

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
