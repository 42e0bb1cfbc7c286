// Properties of the chassis: fans, temperature and calendar clock.

#include "virtual_board/words/bindings.h"
#include "virtual_board/words/clock_text.h"
#include "virtual_board/words/fault_text.h"
#include "virtual_board/words/line_notes.h"
#include "virtual_board/words/values.h"

#include <cstdio>

namespace vb {

namespace {

using language::Value;
using Target = PropertyTarget;

// Fans

Fan &fanOf(const Target &target) {
    return target.devices().climate.fan[target.number() - 1];
}

Value getFanPresent(const Target &target) {
    return fanOf(target).isPresent;
}

void setFanPresent(const Target &target, const Value &value) {
    Fan &fan = fanOf(target);
    fan.isPresent = value.as<uint32_t>();
    if (fan.isPresent == 0)
        fan.rpm = 0;
}

Value getFanState(const Target &target) {
    return static_cast<uint32_t>(fanOf(target).state);
}

void setFanState(const Target &target, const Value &value) {
    fanOf(target).state = value.as<FanState>();
}

Value getFanSpeed(const Target &target) {
    return fanOf(target).rpm;
}

// Temperature

Value getAmbient(const Target &target) {
    return target.devices().climate.ambient;
}

void setAmbient(const Target &target, const Value &value) {
    target.devices().climate.ambient = value.as<int32_t>();
}

/** Degrees with one decimal. */
Value getBoardTemperature(const Target &target) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.1f", target.devices().climate.microdegrees / 1e6);
    return text;
}

Value getSensor(const Target &target) {
    uint8_t byte = 0;
    if (!climateSense(target.devices().climate, &byte))
        return "none";
    return static_cast<int8_t>(byte);
}

Value getSensorState(const Target &target) {
    return static_cast<uint32_t>(target.devices().climate.sensor);
}

void setSensorState(const Target &target, const Value &value) {
    target.devices().climate.sensor = value.as<SensorState>();
}

Value getSensorBus(const Target &) {
    return busText(kTemperatureSensor);
}

// Clock

Value getClockTime(const Target &target) {
    return clockTimeText(clockTime(target.devices().clockChip));
}

void setClockTime(const Target &target, const Value &value) {
    clockSetTime(target.devices().clockChip, parseClockTime(value.text()), target.now());
}

Value getClockBus(const Target &) {
    return busText(kClockChip);
}

Value getBattery(const Target &target) {
    return target.devices().clockChip.isBatteryEmpty;
}

void setBattery(const Target &target, const Value &value) {
    target.devices().clockChip.isBatteryEmpty = value.as<uint32_t>();
}

constexpr Binding kChassisBindings[] = {
    bind("fan.#.present", getFanPresent, setFanPresent, noteOfFanPresence),
    bind("fan.#.state", getFanState, setFanState),
    bind("fan.#.speed", getFanSpeed),
    bind("temperature.ambient", getAmbient, setAmbient),
    bind("temperature.board", getBoardTemperature),
    bind("temperature.sensor", getSensor),
    bind("temperature.state", getSensorState, setSensorState),
    bind("temperature.bus", getSensorBus),
    bind("rtc.bus", getClockBus),
    bind("rtc.time", getClockTime, setClockTime),
    bind("rtc.battery", getBattery, setBattery),
};
static_assert(hasWordsUpTo("fan.#.state", FanState::Held));
static_assert(hasWordsUpTo("temperature.state", SensorState::Missing));
static_assert(language::propertyOf("temperature.ambient").lowest == kColdest);
static_assert(language::propertyOf("temperature.ambient").highest == kHottest);
static_assert(language::kFirstYear == kClockFirstYear && language::kLastYear == kClockLastYear);

} // namespace

std::span<const Binding> chassisBindings() {
    return kChassisBindings;
}

} // namespace vb
