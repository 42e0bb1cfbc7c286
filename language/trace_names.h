#pragma once
// What requests mean to the devices that they are for: names of registers, and of commands on the
// I2C buses.

#include "language/trace_record.h"

#include <optional>
#include <string>

namespace language {

// Where the devices are that have commands of their own, or belong to parts that are seen.
constexpr uint32_t kSystemBus = 0;
constexpr uint32_t kFirstSupplyChannel = 2; // one for each supply
constexpr uint32_t kPmbusDevAddr = 0x58;
constexpr uint32_t kPoeBus = 16;
constexpr uint32_t kPoeDevAddr = 0x20;
constexpr uint32_t kTemperatureDevAddr = 0x4F; // and the clock chip beside it
constexpr uint32_t kClockChipDevAddr = 0x51;
constexpr uint32_t kClimateChannel = 1;
constexpr uint32_t kModuleBus = 1;
constexpr uint32_t kFirstFrontModuleChannel = 8; // of cages in the front; before them the uplinks'
constexpr uint32_t kDiagnosticsDevAddr = 0x51;   // of a module

/** What JSON calls a kind of request: "i2c-read". */
const char *kindName(TraceKind kind);
std::optional<TraceKind> kindNamed(const std::string &name);

/** What a register of the CPLD is for, in a word or two; null when nothing is known of it. */
const char *registerName(uint32_t reg);

/** What a thread has waited for besides the time: "descriptors". */
const char *waitName(const TraceRecord &step);

/** Whether a transfer is one of the PoE controller's. */
bool isPoeFrame(const TraceRecord &record);
/** The port that such a frame, or the answer to it, is about, counted from 0; nothing when it is
 * about several, or about none. */
std::optional<uint32_t> poePortOf(const TraceRecord &record);

/** "PoE port status", "supply 1 READ_VIN"; empty for devices that hold nothing but bytes. */
std::string transferName(const TraceRecord &record);

} // namespace language
