#include "virtual_board/board/climate_lines.h"

#include "virtual_board/devices/poe_measurements.h"

namespace vb {

namespace {

constexpr uint32_t kMilli = 1000;

ClimateLoad loadOf(const Devices &devices) {
    uint32_t milliwatts = devices.poe.isFitted != 0 ? poeTotalDrawn(devices.poe) : 0;
    for (const Supply &supply : devices.supply) {
        const bool isOn = supply.isPresent != 0 && supply.pmbus.hasInputFailed == 0 &&
                          supply.pmbus.hasOutputFailed == 0;
        milliwatts += isOn ? pmbusAmount(supply.pmbus.outputMw) : 0;
    }
    return {fieldOf(devices.cpld.reg[kFanLevel.reg], kFanLevel), milliwatts / kMilli};
}

/** A pair of fans is told to be there while both are. */
uint16_t presenceOf(const Climate &climate) {
    uint32_t bits = 0;
    for (uint32_t first = 0; first < climate.fans; first += 2) {
        if (climate.fan[first].isPresent != 0 && climate.fan[first + 1].isPresent != 0)
            bits |= 1u << first / 2;
    }
    return static_cast<uint16_t>(bits);
}

/** The counts of a pair of fans: of both, or of the slower. */
uint16_t countsOf(const Climate &climate, uint32_t first, bool haveOwnTachometers) {
    const uint8_t low = fanCount(climate.fan[first]);
    const uint8_t high = fanCount(climate.fan[first + 1]);
    if (!haveOwnTachometers)
        return low < high ? low : high;
    return static_cast<uint16_t>(high << kFanSpeed.width | low);
}

/** Puts a changed value on its lines, which stay otherwise as the world has set them. */
void drivePresence(Board &board, const FanWiring &wiring) {
    Climate &climate = board.devices.climate;
    const uint16_t presence = presenceOf(climate);
    const uint32_t changed = presence ^ climate.presence;
    uint16_t &lines = board.devices.cpld.reg[wiring.presence.reg];
    lines = static_cast<uint16_t>((lines & ~(changed << wiring.presence.bit)) |
                                  (changed & presence) << wiring.presence.bit);
    climate.presence = presence;
}

void driveCounts(Board &board, const FanWiring &wiring) {
    Climate &climate = board.devices.climate;
    for (uint32_t index = 0; index < 2; ++index) {
        const uint16_t counts = countsOf(climate, 2 * index, wiring.haveOwnTachometers);
        if (counts != climate.counts[index])
            board.devices.cpld.reg[kCpldFanSpeeds + index] = counts;
        climate.counts[index] = counts;
    }
}

void driveLines(Board &board) {
    const Model *model = findModel(board.header.devId);
    if (model == nullptr || model->fans.count == 0)
        return;
    drivePresence(board, model->fans);
    driveCounts(board, model->fans);
}

} // namespace

void buildClimate(Board &board, const Model &model) {
    climateBuild(board.devices.climate, model.fans.count, loadOf(board.devices));
}

void settleClimateAt(Board &board, int32_t degrees) {
    climateSettleAt(board.devices.climate, loadOf(board.devices), degrees);
}

void startClimateLines(Board &board) {
    Climate &climate = board.devices.climate;
    climate.counts[0] = climate.counts[1] = climate.presence = 0;
    const Model *model = findModel(board.header.devId);
    if (model != nullptr && model->haveSharedPresenceLines())
        climate.presence = presenceOf(climate);
    driveLines(board);
}

void advanceClimate(Board &board, uint64_t nowNs) {
    Devices &devices = board.devices;
    climateAdvance(devices.climate, loadOf(devices), nowNs);
    driveLines(board);
}

} // namespace vb
