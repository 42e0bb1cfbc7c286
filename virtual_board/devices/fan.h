#pragma once
// A fan of the chassis: it follows the level that is set with inertia, and tells its speed.

#include <cstdint>

namespace vb {

constexpr uint32_t kMaxFans = 4;
constexpr uint32_t kFanTopLevel = 9; // counted from 0
constexpr uint32_t kFanLowestRpm = 2400;
constexpr uint32_t kFanRpmPerLevel = 1200;
constexpr uint32_t kFanHighestRpm = kFanLowestRpm + kFanTopLevel * kFanRpmPerLevel;
constexpr uint32_t kFanRpmPerCount = 120; // of the tachometer
constexpr uint32_t kFanRpmPerStep = 60;   // how much it gains or loses in a step of the climate

enum class FanState : uint32_t {
    Good,
    Failing, // worn: reaches half of its speed
    Stuck,
    Held, // keeps its speed whatever the level is
};

/** The world's face of a fan. */
struct Fan {
    uint32_t isPresent;
    FanState state;
    uint32_t rpm;
};

/** The speed that a fan will reach at a level. */
uint32_t fanTarget(const Fan &fan, uint32_t level);

/** One step of the climate passes. */
void fanStep(Fan &fan, uint32_t level);

/** What the fan's tachometer tells. */
uint8_t fanCount(const Fan &fan);

} // namespace vb
