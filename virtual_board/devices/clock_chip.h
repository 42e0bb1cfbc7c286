#pragma once
// The calendar clock: a chip of the PCF8563's registers with a battery of its own. Two fields count
// as this board's programs write them: the month from 0, and the years since 1900 in a register
// whose tens go on behind 9, up to 159.

#include <cstdint>

namespace vb {

constexpr uint32_t kClockChipRegisters = 16;
constexpr uint32_t kClockFirstYear = 1900;
constexpr uint32_t kClockLastYear = kClockFirstYear + 159;

struct ClockChip {
    alignas(8) uint64_t countedNs; // the board's time up to which the seconds are counted
    uint8_t reg[kClockChipRegisters];
    uint32_t isFitted;
    uint32_t isBatteryEmpty; // the world's face
};

/** What the registers tell, as numbers of people: month 1 to 12, year 1900 to 2059. */
struct ClockTime {
    uint32_t year, month, day, hour, minute, second;
};

/** A clock that the factory has set. */
void clockBuild(ClockChip &chip);

/** Counts the seconds up to now. */
void clockAdvance(ClockChip &chip, uint64_t nowNs);

/** When the next second has passed. */
uint64_t clockNextSecond(const ClockChip &chip);

/** The board's power fails and returns; the battery bridges it, or the time is lost. */
void clockPowerCycle(ClockChip &chip, uint64_t nowNs);

void clockRead(const ClockChip &chip, uint32_t first, uint8_t *data, uint32_t length);
void clockWrite(ClockChip &chip, uint32_t first, const uint8_t *data, uint32_t length);

ClockTime clockTime(const ClockChip &chip);

/** Whether there is such a time, and the chip can hold it. */
bool clockIsTime(const ClockTime &time);

/** Whether the state is one that a chip can have. */
bool clockIsConsistent(const ClockChip &chip);

/** Sets a time that there is. */
void clockSetTime(ClockChip &chip, const ClockTime &time, uint64_t nowNs);

} // namespace vb
