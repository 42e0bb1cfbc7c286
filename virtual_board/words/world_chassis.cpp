// Properties of the chassis: fans, temperature and calendar clock.

#include "virtual_board/words/clock_text.h"
#include "virtual_board/words/line_notes.h"
#include "virtual_board/words/property_types.h"
#include "virtual_board/words/values.h"

#include <cstdio>

namespace vb {

namespace {

using Target = PropertyTarget;

constexpr const char *kYesNo[] = {"no", "yes"};
constexpr const char *kFanStates[] = {"good", "failing", "stuck"};
constexpr const char *kSensorStates[] = {"good", "stuck", "missing"};
constexpr const char *kBatteries[] = {"good", "empty"};

// Fans

Fan &fanOf(const Target &target) {
    return target.devices().climate.fan[target.number - 1];
}

std::string getFanPresent(const Target &target) {
    return kYesNo[fanOf(target).isPresent];
}

void setFanPresent(const Target &target, const std::string &value) {
    Fan &fan = fanOf(target);
    fan.isPresent = language::parseChoice(value, kYesNo);
    if (fan.isPresent == 0)
        fan.rpm = 0;
}

std::string getFanState(const Target &target) {
    return kFanStates[static_cast<size_t>(fanOf(target).state)];
}

void setFanState(const Target &target, const std::string &value) {
    fanOf(target).state = static_cast<FanState>(language::parseChoice(value, kFanStates));
}

std::string getFanSpeed(const Target &target) {
    return std::to_string(fanOf(target).rpm);
}

// Temperature

std::string getAmbient(const Target &target) {
    return std::to_string(target.devices().climate.ambient);
}

void setAmbient(const Target &target, const std::string &value) {
    target.devices().climate.ambient = language::parseNumber(value, kColdest, kHottest);
}

/** Degrees with one decimal. */
std::string getBoardTemperature(const Target &target) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.1f", target.devices().climate.microdegrees / 1e6);
    return text;
}

std::string getSensor(const Target &target) {
    uint8_t byte = 0;
    return climateSense(target.devices().climate, &byte) ? std::to_string(static_cast<int8_t>(byte))
                                                         : "none";
}

std::string getSensorState(const Target &target) {
    return kSensorStates[static_cast<size_t>(target.devices().climate.sensor)];
}

void setSensorState(const Target &target, const std::string &value) {
    target.devices().climate.sensor =
        static_cast<SensorState>(language::parseChoice(value, kSensorStates));
}

// Clock

std::string getClockTime(const Target &target) {
    return clockTimeText(clockTime(target.devices().clockChip));
}

void setClockTime(const Target &target, const std::string &value) {
    clockSetTime(target.devices().clockChip, parseClockTime(value), target.now());
}

std::string getBattery(const Target &target) {
    return kBatteries[target.devices().clockChip.isBatteryEmpty];
}

void setBattery(const Target &target, const std::string &value) {
    target.devices().clockChip.isBatteryEmpty = language::parseChoice(value, kBatteries);
}

constexpr PropertyType kChassisProperties[] = {
    {"fan.#.present", 1, kMaxFans, getFanPresent, setFanPresent, nullptr, false, Fitted::Fans,
     false, noteOfFanPresence},
    {"fan.#.state", 1, kMaxFans, getFanState, setFanState, "good", false, Fitted::Fans},
    {"fan.#.speed", 1, kMaxFans, getFanSpeed, nullptr, nullptr, false, Fitted::Fans},
    {"temperature.ambient", 0, 0, getAmbient, setAmbient, nullptr, false, Fitted::Always},
    {"temperature.board", 0, 0, getBoardTemperature, nullptr, nullptr, false, Fitted::Always},
    {"temperature.sensor", 0, 0, getSensor, nullptr, nullptr, false, Fitted::Always},
    {"temperature.state", 0, 0, getSensorState, setSensorState, "good", false, Fitted::Always},
    {"rtc.time", 0, 0, getClockTime, setClockTime, nullptr, false, Fitted::ClockChip},
    {"rtc.battery", 0, 0, getBattery, setBattery, "good", false, Fitted::ClockChip},
};

} // namespace

std::span<const PropertyType> chassisProperties() {
    return kChassisProperties;
}

} // namespace vb
