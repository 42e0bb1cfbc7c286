#include "language/times.h"

#include "language/digits.h"
#include "language/numbers.h"
#include "language/refused.h"

#include <algorithm>
#include <cstdio>

namespace language {

namespace {

/** "0.1" of 100 */
std::string shortThousandths(uint32_t value) {
    std::string text = thousandths(value);
    text.erase(text.find_last_not_of('0') + 1);
    return text.back() == '.' ? text.substr(0, text.size() - 1) : text;
}

/** 100 of "0.1"; nothing for what is no number with up to three decimals in a range. */
std::optional<uint32_t> readThousandths(const std::string &word, uint32_t lowest,
                                        uint32_t highest) {
    constexpr size_t kDecimals = 3;
    const size_t point = std::min(word.find('.'), word.size());
    std::string digits = word.substr(0, point);
    std::string decimals = point < word.size() ? word.substr(point + 1) : "0";
    const bool hasShape = !digits.empty() && !decimals.empty() && decimals.size() <= kDecimals;
    decimals.resize(kDecimals, '0');
    uint32_t value = 0;
    const bool isRead = hasShape && readDigits(digits += decimals, 10, value);
    return isRead && value >= lowest && value <= highest ? std::optional(value) : std::nullopt;
}

bool hasShapeOfTime(const std::string &word) {
    constexpr std::string_view kShape = "0000-00-00T00:00:00";
    return word.size() == kShape.size() &&
           std::equal(word.begin(), word.end(), kShape.begin(), [](char given, char shape) {
               if (shape == '0')
                   return given >= '0' && given <= '9';
               return given == shape || (shape == 'T' && given == ' ');
           });
}

uint32_t daysOf(uint32_t month, uint32_t year) {
    constexpr uint32_t kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool isLeap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return kDays[month - 1] + (month == 2 && isLeap ? 1 : 0);
}

/** A time of numbers that may be out of range. */
bool isCalendarTime(const CalendarTime &time) {
    return time.month >= 1 && time.month <= 12 && time.day >= 1 &&
           time.day <= daysOf(time.month, time.year) && time.hour < 24 && time.minute < 60 &&
           time.second < 60;
}

} // namespace

uint32_t parseSeconds(const std::string &word, uint32_t lowestMs, uint32_t highestMs) {
    const auto milliseconds = readThousandths(word, lowestMs, highestMs);
    if (!milliseconds.has_value())
        refuse(word, "is not a number of seconds from " + shortThousandths(lowestMs) + " to " +
                         shortThousandths(highestMs) + ", with up to three decimals");
    return *milliseconds;
}

std::optional<uint32_t> readRate(const std::string &word) {
    constexpr uint32_t kLeast = 1;
    constexpr uint32_t kMost = 1000000;
    return word.starts_with('x') ? readThousandths(word.substr(1), kLeast, kMost) : std::nullopt;
}

std::string rateText(uint32_t rate) {
    return "x" + shortThousandths(rate);
}

std::string secondsText(uint64_t ns) {
    constexpr uint64_t kNsPerSecond = 1000000000;
    char text[40];
    std::snprintf(text, sizeof(text), "%llu.%09llu",
                  static_cast<unsigned long long>(ns / kNsPerSecond),
                  static_cast<unsigned long long>(ns % kNsPerSecond));
    return text;
}

std::string durationText(uint64_t ns) {
    std::string text = secondsText(ns);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text;
}

CalendarTime parseCalendarTime(const std::string &word, uint32_t firstYear, uint32_t lastYear,
                               const std::string &otherwise) {
    CalendarTime time = {};
    bool isTime = hasShapeOfTime(word);
    if (isTime) {
        const auto number = [&](size_t offset, size_t digits) {
            uint32_t value = 0;
            readDigits(std::string_view(word).substr(offset, digits), 10, value);
            return value;
        };
        time = {number(0, 4),  number(5, 2),  number(8, 2),
                number(11, 2), number(14, 2), number(17, 2)};
        isTime = time.year >= firstYear && time.year <= lastYear && isCalendarTime(time);
    }
    if (!isTime)
        refuse(word, "is no time from " + std::to_string(firstYear) + " to " +
                         std::to_string(lastYear) + ": give " + otherwise +
                         "one like 2026-11-21T12:34:56");
    return time;
}

std::string calendarText(const CalendarTime &time) {
    char text[80];
    std::snprintf(text, sizeof(text), "%04u-%02u-%02u %02u:%02u:%02u", time.year, time.month,
                  time.day, time.hour, time.minute, time.second);
    return text;
}

} // namespace language
