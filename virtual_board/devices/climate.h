#pragma once
// Fans and warmth of the chassis, which depend on each other, in steps of the board's clock: what
// comes out is the same however often somebody asks.

#include "virtual_board/devices/fan.h"

#include <cstdint>

namespace vb {

constexpr uint64_t kClimateStepNs = 100000000;

// What `ambient` of a sensor and a world can be, in degrees Celsius.
constexpr int32_t kColdest = -40;
constexpr int32_t kHottest = 85;
constexpr int32_t kUsualAmbient = 25;

enum class SensorState : uint32_t {
    Good,
    Stuck,   // goes on telling the same temperature
    Missing, // does not answer
};

struct Climate {
    alignas(8) uint64_t steps; // of the board's clock that have been taken
    int32_t ambient;           // degrees; the world's face, like the fans and the sensor's state
    int32_t microdegrees;      // of the board at its sensor
    SensorState sensor;
    int32_t sensed; // degrees: what the sensor told last
    uint32_t fans;
    Fan fan[kMaxFans];
    // What was put on the lines to the CPLD.
    uint16_t counts[2];
    uint16_t presence;
    uint16_t padding;
};

/** What the climate depends on. */
struct ClimateLoad {
    uint32_t fanLevel; // counted from 0
    uint32_t watts;    // that become warmth near the sensor
};

/** A chassis that has been running for long. */
void climateBuild(Climate &climate, uint32_t fans, const ClimateLoad &load);

/** A chassis that has been running for long where its sensor comes to tell so many degrees. */
void climateSettleAt(Climate &climate, const ClimateLoad &load, int32_t degrees);

/** Takes all steps up to now. */
void climateAdvance(Climate &climate, const ClimateLoad &load, uint64_t nowNs);

/** The byte of the sensor; false when it does not answer. */
bool climateSense(const Climate &climate, uint8_t *byte);

/** Whether the state is one that a chassis can have. */
bool climateIsConsistent(const Climate &climate);

} // namespace vb
