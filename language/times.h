#pragma once
// Durations and dates as people write them. Parsers throw Refused for other words.

#include <cstdint>
#include <optional>
#include <string>

namespace language {

/** Seconds, as milliseconds: "2", "0.5", with up to three decimals. */
uint32_t parseSeconds(const std::string &word, uint32_t lowestMs, uint32_t highestMs);

/** A time on a board's clock, in seconds with all nine decimals. */
std::string secondsText(uint64_t ns);

/** A length of time, in seconds with as many decimals as it takes: "1.5". */
std::string durationText(uint64_t ns);

/** How fast a clock runs, in thousandths: "x60", "x0.1", from x0.001 to x1000; nothing for others.
 */
std::optional<uint32_t> readRate(const std::string &word);
std::string rateText(uint32_t rate);

/** A date and a time of a calendar; months and days count from 1. */
struct CalendarTime {
    uint32_t year, month, day, hour, minute, second;
};

/**
 * "2026-11-21T12:34:56", or with a blank in the middle, of years from first to last. What a word
 * can be otherwise is said in a refusal: "'now', or ".
 */
CalendarTime parseCalendarTime(const std::string &word, uint32_t firstYear, uint32_t lastYear,
                               const std::string &otherwise = "");

/** "2026-11-21 12:34:56" */
std::string calendarText(const CalendarTime &time);

} // namespace language
