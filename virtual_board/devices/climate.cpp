#include "virtual_board/devices/climate.h"

#include <algorithm>

namespace vb {

namespace {

constexpr int64_t kMicro = 1000000;
constexpr int64_t kIdleRise = 10;         // degrees above ambient, without load
constexpr int64_t kWattsPerDegree = 40;   // both at the lowest speed of all fans
constexpr int64_t kStepsToFollow = 1200;  // two minutes: the time constant of the board's mass
constexpr uint64_t kSettledSteps = 18000; // half an hour, when nothing moves any more

/** How much air moves, in thousandths of what good fans move at their lowest speed. */
int64_t airflow(const Climate &climate) {
    constexpr int64_t kLowest = 1000;
    if (climate.fans == 0)
        return kLowest; // made for it
    int64_t rpm = 0;
    for (uint32_t index = 0; index < climate.fans; ++index)
        rpm += climate.fan[index].rpm;
    return kLowest * rpm / (int64_t{kFanLowestRpm} * climate.fans);
}

/** Where the board's temperature leads to: four times the usual rise without any air. */
int64_t targetMicrodegrees(const Climate &climate, const ClimateLoad &load) {
    const int64_t rise = (kIdleRise * kMicro) + load.watts * kMicro / kWattsPerDegree;
    return climate.ambient * kMicro + rise * 4000 / (1000 + 3 * airflow(climate));
}

void settle(Climate &climate, const ClimateLoad &load) {
    for (Fan &fan : climate.fan)
        fan.rpm = fanTarget(fan, load.fanLevel);
    climate.microdegrees = static_cast<int32_t>(targetMicrodegrees(climate, load));
}

void step(Climate &climate, const ClimateLoad &load) {
    for (Fan &fan : climate.fan)
        fanStep(fan, load.fanLevel);
    const int64_t distance = targetMicrodegrees(climate, load) - climate.microdegrees;
    climate.microdegrees += static_cast<int32_t>(distance / kStepsToFollow);
}

int32_t wholeDegrees(int32_t microdegrees) {
    const int32_t degrees = microdegrees / static_cast<int32_t>(kMicro);
    return microdegrees < 0 && microdegrees % static_cast<int32_t>(kMicro) != 0 ? degrees - 1
                                                                                : degrees;
}

void sense(Climate &climate) {
    if (climate.sensor != SensorState::Stuck)
        climate.sensed = wholeDegrees(climate.microdegrees);
}

} // namespace

void climateBuild(Climate &climate, uint32_t fans, const ClimateLoad &load) {
    climate = Climate{};
    climate.ambient = kUsualAmbient;
    climate.fans = fans;
    for (uint32_t index = 0; index < fans; ++index)
        climate.fan[index].isPresent = 1;
    settle(climate, load);
    sense(climate);
}

void climateSettleAt(Climate &climate, const ClimateLoad &load, int32_t degrees) {
    climate.ambient = 0;
    settle(climate, load);
    const int32_t ambient = degrees - wholeDegrees(climate.microdegrees);
    climate.ambient = std::clamp(ambient, kColdest, kHottest);
    climate.sensor = climate.ambient == ambient ? SensorState::Good : SensorState::Stuck;
    settle(climate, load);
    climate.sensed = degrees;
}

void climateAdvance(Climate &climate, const ClimateLoad &load, uint64_t nowNs) {
    const uint64_t steps = nowNs / kClimateStepNs;
    if (steps > climate.steps && steps - climate.steps > kSettledSteps) {
        settle(climate, load);
        climate.steps = steps;
    }
    for (; climate.steps < steps; ++climate.steps)
        step(climate, load);
    sense(climate);
}

bool climateSense(const Climate &climate, uint8_t *byte) {
    constexpr int32_t kHighest = 127;
    constexpr int32_t kLowest = -128;
    if (climate.sensor == SensorState::Missing)
        return false;
    const int32_t told = climate.sensed < kLowest    ? kLowest
                         : climate.sensed > kHighest ? kHighest
                                                     : climate.sensed;
    *byte = static_cast<uint8_t>(told);
    return true;
}

bool climateIsConsistent(const Climate &climate) {
    for (const Fan &fan : climate.fan) {
        if (fan.isPresent > 1 || fan.state > FanState::Held || fan.rpm > kFanHighestRpm)
            return false;
    }
    return climate.fans <= kMaxFans && climate.sensor <= SensorState::Missing &&
           climate.ambient >= kColdest && climate.ambient <= kHottest;
}

} // namespace vb
