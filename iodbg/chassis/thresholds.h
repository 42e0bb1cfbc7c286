#pragma once
// The limits by which the unit is judged.

#include "iodbg/core/finding_codes.h"

#include <cstdint>

namespace iodbg {

constexpr int64_t kColdest = 0;         // degrees Celsius of the board's sensor
constexpr int64_t kWarm = 60;           // the same
constexpr int64_t kHot = 75;            // the same
constexpr int64_t kSlowFanPercent = 75; // of the fastest fan's speed; a fan below it is failing
constexpr int64_t kTolerableDrift = 60; // seconds between clock chip and system clock

/** What is found beyond a limit. */
struct Threshold {
    Code code;
    const char *beyond;
    int64_t value;
    const char *unit;
};

constexpr Threshold kThresholds[] = {
    {Code::TemperatureHot, "above", kHot, "C"},
    {Code::TemperatureWarm, "above", kWarm, "C"},
    {Code::TemperatureCold, "below", kColdest, "C"},
    {Code::FanSlow, "below", kSlowFanPercent, "% of the fastest fan"},
    {Code::ClockDiffers, "more than", kTolerableDrift, "s from the system clock"},
};

} // namespace iodbg
