#include "virtual_board/devices/poe_measurements.h"

#include "virtual_board/devices/poe_ports.h"

namespace vb {

namespace {

constexpr uint32_t kNominalVoltage = 54009100; // microvolts
constexpr int32_t kVoltageStep = 64450;        // microvolts
constexpr uint32_t kMicrovoltsPerCentivolt = 10000;
constexpr uint32_t kAmbient = 35; // degrees Celsius

/** A number from -2 to 2. */
int32_t ripple(uint32_t port, uint64_t nowNs) {
    constexpr uint64_t kSlotNs = 100 * kPoeMs;
    return static_cast<int32_t>((uint64_t{port} * 7 + nowNs / kSlotNs * 3) % 5) - 2;
}

/** A device that delivers much is warm. */
uint32_t degrees(const PoeController &poe, uint32_t port) {
    constexpr uint32_t kMilliwattsPerDegree = 4000;
    return kAmbient + poeDrawn(poe, port) / kMilliwattsPerDegree;
}

} // namespace

PoeMeasurement poeMeasure(const PoeController &poe, uint32_t port, uint64_t nowNs) {
    PoeMeasurement measured = {};
    measured.degrees = degrees(poe, port);
    if (poe.port[port].phase != PoePhase::Delivering)
        return measured;
    measured.milliwatts = poeDrawn(poe, port);
    const PoePort &state = poe.port[port];
    if (state.heldCentivolts != 0) {
        measured.microvolts = state.heldCentivolts * kMicrovoltsPerCentivolt;
        measured.milliamperes = state.heldMilliamperes;
        measured.degrees = state.heldDegrees;
        return measured;
    }
    measured.microvolts =
        kNominalVoltage + static_cast<uint32_t>(ripple(port, nowNs) * kVoltageStep);
    measured.milliamperes =
        static_cast<uint32_t>(uint64_t{measured.milliwatts} * 1000000 / measured.microvolts);
    return measured;
}

uint32_t poeTotalDrawn(const PoeController &poe) {
    uint32_t sum = 0;
    for (uint32_t port = 0; port < kPoePorts; ++port)
        sum += poeDrawn(poe, port);
    return sum;
}

} // namespace vb
