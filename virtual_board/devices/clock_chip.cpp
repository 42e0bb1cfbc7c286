#include "virtual_board/devices/clock_chip.h"

#include <cstring>

namespace vb {

namespace {

constexpr uint64_t kNsPerSecond = 1000000000;

constexpr uint32_t kControl = 0;
constexpr uint8_t kStop = 0x20;
constexpr uint32_t kSecond = 2;
constexpr uint8_t kTimeIsLost = 0x80; // in the register of the seconds
constexpr uint32_t kMinute = 3;
constexpr uint32_t kHour = 4;
constexpr uint32_t kDay = 5;
constexpr uint32_t kWeekday = 6;
constexpr uint32_t kMonth = 7;
constexpr uint32_t kYear = 8;

/** The bits that a register has. */
constexpr uint8_t kBits[kClockChipRegisters] = {0xFF, 0x1F, 0xFF, 0x7F, 0x3F, 0x3F, 0x07, 0x9F,
                                                0xFF, 0xFF, 0xBF, 0xBF, 0x87, 0x83, 0x83, 0xFF};
/** Those of them that are digits. */
constexpr uint8_t kDigits[kClockChipRegisters] = {0,    0, 0x7F, 0x7F, 0x3F, 0x3F, 0x07, 0x1F,
                                                  0xFF, 0, 0,    0,    0,    0,    0,    0};

uint32_t field(const ClockChip &chip, uint32_t reg) {
    const uint32_t digits = chip.reg[reg] & kDigits[reg];
    return (digits & 0x0F) + 10 * (digits >> 4);
}

/** Replaces the digits of a register; its other bits stay. */
void setField(ClockChip &chip, uint32_t reg, uint32_t value) {
    const uint32_t digits = value % 10 + 16 * (value / 10);
    chip.reg[reg] = static_cast<uint8_t>((chip.reg[reg] & ~kDigits[reg]) | (digits & kDigits[reg]));
}

/** Adds to a field that starts over at a limit; what is carried to the next one. */
uint64_t count(ClockChip &chip, uint32_t reg, uint64_t amount, uint32_t limit) {
    if (amount == 0)
        return 0;
    const uint64_t sum = field(chip, reg) + amount;
    setField(chip, reg, static_cast<uint32_t>(sum % limit));
    return sum / limit;
}

/** Days of a month, counted from 0. The chip knows no years of 100 without a leap day. */
uint32_t daysOf(uint32_t month, uint32_t year) {
    constexpr uint8_t kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month >= sizeof(kDays))
        return 31;
    return month == 1 && year % 4 == 0 ? 29 : kDays[month];
}

void nextDay(ClockChip &chip) {
    setField(chip, kWeekday, (field(chip, kWeekday) + 1) % 7);
    const uint32_t day = field(chip, kDay) + 1;
    const bool isNextMonth = day > daysOf(field(chip, kMonth), field(chip, kYear));
    setField(chip, kDay, isNextMonth ? 1 : day);
    if (!isNextMonth)
        return;
    const bool isNextYear = field(chip, kMonth) >= 11;
    setField(chip, kMonth, isNextYear ? 0 : field(chip, kMonth) + 1);
    if (isNextYear)
        setField(chip, kYear, (field(chip, kYear) + 1) % 160);
}

/** Sunday is 0. */
uint32_t weekdayOf(const ClockTime &time) {
    uint32_t days = 1; // 1 January 1900 was a Monday
    for (uint32_t year = kClockFirstYear; year < time.year; ++year)
        days += year % 4 == 0 && year != kClockFirstYear ? 366u : 365u;
    for (uint32_t month = 1; month < time.month; ++month)
        days += daysOf(month - 1, time.year);
    return (days + time.day - 1) % 7;
}

} // namespace

void clockBuild(ClockChip &chip) {
    chip = ClockChip{};
    chip.isFitted = 1;
    clockSetTime(chip, {2024, 1, 1, 0, 0, 0}, 0);
}

void clockAdvance(ClockChip &chip, uint64_t nowNs) {
    if (nowNs < clockNextSecond(chip))
        return;
    const uint64_t seconds = (nowNs - chip.countedNs) / kNsPerSecond;
    chip.countedNs += seconds * kNsPerSecond;
    if ((chip.reg[kControl] & kStop) != 0)
        return;
    const uint64_t minutes = count(chip, kSecond, seconds, 60);
    const uint64_t hours = count(chip, kMinute, minutes, 60);
    for (uint64_t days = count(chip, kHour, hours, 24); days > 0; --days)
        nextDay(chip);
}

uint64_t clockNextSecond(const ClockChip &chip) {
    return chip.countedNs + kNsPerSecond;
}

void clockPowerCycle(ClockChip &chip, uint64_t nowNs) {
    if (chip.isBatteryEmpty == 0)
        return;
    std::memset(chip.reg, 0, sizeof(chip.reg));
    clockSetTime(chip, {kClockFirstYear, 1, 1, 0, 0, 0}, nowNs);
    chip.reg[kSecond] |= kTimeIsLost;
}

void clockRead(const ClockChip &chip, uint32_t first, uint8_t *data, uint32_t length) {
    for (uint32_t i = 0; i < length; ++i)
        data[i] = chip.reg[(first + i) % kClockChipRegisters];
}

void clockWrite(ClockChip &chip, uint32_t first, const uint8_t *data, uint32_t length) {
    for (uint32_t i = 0; i < length; ++i) {
        const uint32_t reg = (first + i) % kClockChipRegisters;
        chip.reg[reg] = data[i] & kBits[reg];
    }
}

ClockTime clockTime(const ClockChip &chip) {
    return {kClockFirstYear + field(chip, kYear),
            field(chip, kMonth) + 1,
            field(chip, kDay),
            field(chip, kHour),
            field(chip, kMinute),
            field(chip, kSecond)};
}

bool clockIsTime(const ClockTime &time) {
    return time.year >= kClockFirstYear && time.year <= kClockLastYear && time.month >= 1 &&
           time.month <= 12 && time.day >= 1 && time.day <= daysOf(time.month - 1, time.year) &&
           time.hour < 24 && time.minute < 60 && time.second < 60;
}

bool clockIsConsistent(const ClockChip &chip) {
    return chip.isFitted <= 1 && chip.isBatteryEmpty <= 1;
}

void clockSetTime(ClockChip &chip, const ClockTime &time, uint64_t nowNs) {
    chip.reg[kSecond] = 0; // the time is not lost any more
    chip.reg[kMonth] = 0;
    setField(chip, kSecond, time.second);
    setField(chip, kMinute, time.minute);
    setField(chip, kHour, time.hour);
    setField(chip, kDay, time.day);
    setField(chip, kWeekday, weekdayOf(time));
    setField(chip, kMonth, time.month - 1);
    setField(chip, kYear, time.year - kClockFirstYear);
    chip.countedNs = nowNs;
}

} // namespace vb
