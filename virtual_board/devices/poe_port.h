#pragma once
// One PoE port: what is plugged into it and how far its power-up has come.

#include <cstdint>

namespace vb {

/** How a device looks to the port's detection. */
enum class PoeSignature : uint8_t { Good, Bad, Legacy, Short, Open };

constexpr uint32_t kPoePorts = 48;
constexpr uint32_t kPoeHighestPriority = 3;
constexpr uint32_t kPoeHighestClass = 8;
constexpr uint32_t kPoeMostMilliwatts = 200000; // of a device

/** The world's face of a port. */
struct PoweredDevice {
    uint8_t isPlugged;
    PoeSignature signature;
    uint8_t powerClass;
    uint8_t isOverCurrent; // draws more than any port gives
    uint32_t requestedMw;
    uint32_t drawnMw;
};

enum class PoePhase : uint8_t {
    Disabled,
    Idle, // nothing that could be powered was found, or nobody has asked
    Detecting,
    Classifying,
    Held, // found; waits for a command to go on
    PoweringUp,
    Delivering,
    Denied, // wants power that the budget does not have
    Fault,
};

/** How far a port goes by itself. */
enum class PoeGoal : uint8_t { Nothing, Detect, Classify, Power };

// Results of detection, as the port's status tells them.
constexpr uint8_t kPoeDetectedNothing = 0; // not looked yet
constexpr uint8_t kPoeDetectedShort = 1;
constexpr uint8_t kPoeDetectedLegacy = 2; // a large capacitor instead of a signature
constexpr uint8_t kPoeDetectedBad = 3;
constexpr uint8_t kPoeDetectedGood = 4;
constexpr uint8_t kPoeDetectedOpen = 6;

constexpr uint8_t kPoeNotClassified = 0xF;

// Fault codes.
constexpr uint8_t kPoeFaultOverCurrent = 1;
constexpr uint8_t kPoeFaultShort = 2;

/** What a port has counted since somebody asked; each stops at 255. */
struct PoeCounts {
    uint8_t overCurrent, shorts, denials, disconnects, badSignatures;
};

struct PoePort {
    alignas(8) uint64_t dueNs; // when the phase ends by itself; kPoeNever
    PoePhase phase;
    PoeGoal goal;
    uint8_t detection;
    uint8_t powerClass;
    uint8_t fault;
    uint8_t hasEvent;
    PoeCounts counts;
    // What it tells as long as it delivers to the same device; without a voltage it measures.
    uint8_t heldDegrees;
    uint16_t heldCentivolts;
    uint16_t heldMilliamperes;
};

constexpr uint64_t kPoeNever = UINT64_MAX;

/** Whether the state is one that a device can have. */
constexpr bool poeIsConsistent(const PoweredDevice &device) {
    return device.isPlugged <= 1 && device.signature <= PoeSignature::Open &&
           device.powerClass <= kPoeHighestClass && device.isOverCurrent <= 1 &&
           device.requestedMw <= kPoeMostMilliwatts && device.drawnMw <= kPoeMostMilliwatts;
}

/** Whether the state is one that a port can have. */
constexpr bool poeIsConsistent(const PoePort &port) {
    const bool hasClass =
        port.powerClass <= kPoeHighestClass || port.powerClass == kPoeNotClassified;
    return port.phase <= PoePhase::Fault && port.goal <= PoeGoal::Power &&
           port.detection <= kPoeDetectedOpen && hasClass && port.hasEvent <= 1;
}

constexpr bool poeIsPowered(const PoePort &port) {
    return port.phase == PoePhase::PoweringUp || port.phase == PoePhase::Delivering;
}

} // namespace vb
