#pragma once
// How ports come up and go down: detection, classification, power, faults.

#include "virtual_board/devices/poe_controller.h"

namespace vb {

// How long the steps of a port take.
constexpr uint64_t kPoeMs = 1000000;
constexpr uint64_t kPoeDetectionNs = 500 * kPoeMs;
constexpr uint64_t kPoeClassificationNs = 100 * kPoeMs;
constexpr uint64_t kPoePowerUpNs = 100 * kPoeMs;
constexpr uint64_t kPoeDisconnectNs = 400 * kPoeMs; // until a missing load is noticed
constexpr uint64_t kPoeOverloadNs = 60 * kPoeMs;    // until an overload is cut off

/** Somebody plugs, unplugs or changes a device. */
void poeSetDevice(PoeController &poe, uint32_t port, const PoweredDevice &device, uint64_t nowNs);

/** A setting that decides whether and how a port works has changed. */
void poeRefreshPort(PoeController &poe, uint32_t port, uint64_t nowNs);
void poeRefreshPorts(PoeController &poe, uint64_t nowNs);

/** Takes a port down and begins anew. */
void poeRestartPort(PoeController &poe, uint32_t port, uint64_t nowNs);

/** Sends a port that is not powered up to a goal; false when the port is out of service. */
bool poeTrigger(PoeController &poe, uint32_t port, PoeGoal goal, uint64_t nowNs);

/** Takes power from a port until it is triggered again. */
void poeRelease(PoeController &poe, uint32_t port, uint64_t nowNs);

/** All ports as after a start of the application, without power. */
void poeResetPorts(PoeController &poe);

/** Power that a port may draw, in milliwatts. */
uint32_t poePortLimit(const PoeController &poe, uint32_t port);

/** Power that a port draws, in milliwatts. */
uint32_t poeDrawn(const PoeController &poe, uint32_t port);

// For the budget

/** Power that the port's device wants, in milliwatts, as far as its limit lets it. */
uint32_t poeWanted(const PoeController &poe, uint32_t port);

void poePowerUp(PoeController &poe, uint32_t port, uint64_t nowNs);
void poeDeny(PoeController &poe, uint32_t port);

} // namespace vb
