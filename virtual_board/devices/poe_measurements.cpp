#include "virtual_board/devices/poe_measurements.h"

#include "virtual_board/devices/poe_ports.h"

namespace vb {

namespace {

constexpr uint16_t kNominalVoltage = 838; // 54.009 V
constexpr uint32_t kVoltageUnit = 64450;  // microvolts
constexpr uint32_t kAmbient = 35;         // degrees Celsius

/** A number from -2 to 2. */
int ripple(uint32_t port, uint64_t nowNs) {
    constexpr uint64_t kSlotNs = 100 * kPoeMs;
    return static_cast<int>((uint64_t{port} * 7 + nowNs / kSlotNs * 3) % 5) - 2;
}

/** A device that delivers much is warm. */
uint32_t degrees(const PoeController &poe, uint32_t port) {
    constexpr uint32_t kMilliwattsPerDegree = 4000;
    return kAmbient + poeDrawn(poe, port) / kMilliwattsPerDegree;
}

} // namespace

PoeMeasurement poeMeasure(const PoeController &poe, uint32_t port, uint64_t nowNs) {
    PoeMeasurement measured = {};
    measured.temperature = static_cast<uint16_t>(220 - degrees(poe, port) * 4 / 5);
    if (poe.port[port].phase != PoePhase::Delivering)
        return measured;
    const uint32_t drawn = poeDrawn(poe, port);
    measured.voltage = static_cast<uint16_t>(kNominalVoltage + ripple(port, nowNs));
    measured.current = static_cast<uint16_t>(uint64_t{drawn} * 1000000 /
                                             (uint64_t{measured.voltage} * kVoltageUnit));
    measured.power = static_cast<uint16_t>(drawn / kPoePowerUnit);
    return measured;
}

uint32_t poeTotalDrawn(const PoeController &poe) {
    uint32_t sum = 0;
    for (uint32_t port = 0; port < kPoePorts; ++port)
        sum += poeDrawn(poe, port);
    return sum;
}

} // namespace vb
