#include "virtual_board/board/climate_lines.h"

#include "virtual_board/devices/poe_measurements.h"

namespace vb {

namespace {

constexpr uint32_t kLevelShift = 5; // in the control register
constexpr uint32_t kLevelMask = 0xF;
constexpr uint32_t kTwoFans = 2;
constexpr uint32_t kMilli = 1000;

/** Where the presence of the fans is told; one bit for each pair. */
struct PresencePlace {
    uint32_t reg;
    uint32_t firstBit;
};

PresencePlace presencePlace(uint32_t fans) {
    return fans == kTwoFans ? PresencePlace{kCpldFanPresence, 8} : PresencePlace{kCpldSupplies, 0};
}

ClimateLoad loadOf(const Devices &devices) {
    uint32_t milliwatts = devices.poe.isFitted != 0 ? poeTotalDrawn(devices.poe) : 0;
    for (const Supply &supply : devices.supply) {
        const bool isOn = supply.isPresent != 0 && supply.pmbus.hasInputFailed == 0 &&
                          supply.pmbus.hasOutputFailed == 0;
        milliwatts += isOn ? supply.pmbus.outputMw : 0;
    }
    return {devices.cpld.reg[kCpldControl] >> kLevelShift & kLevelMask, milliwatts / kMilli};
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

/** The counts of fans 1 and 2, or 3 and 4. Models with two fans have one count, of the slower. */
uint16_t countsOf(const Climate &climate, uint32_t first) {
    const uint8_t low = fanCount(climate.fan[first]);
    const uint8_t high = fanCount(climate.fan[first + 1]);
    if (climate.fans == kTwoFans && first == 0)
        return low < high ? low : high;
    return static_cast<uint16_t>(high << 8 | low);
}

/** Puts a changed value on its lines, which stay otherwise as the world has set them. */
void drivePresence(Board &board, uint16_t presence) {
    const PresencePlace place = presencePlace(board.devices.climate.fans);
    uint16_t &lines = board.devices.cpld.reg[place.reg];
    const uint32_t changed = presence ^ board.devices.climate.presence;
    lines = static_cast<uint16_t>((lines & ~(changed << place.firstBit)) | (changed & presence)
                                                                               << place.firstBit);
    board.devices.climate.presence = presence;
}

void driveCounts(Board &board) {
    Climate &climate = board.devices.climate;
    for (uint32_t index = 0; index < 2; ++index) {
        const uint16_t counts = countsOf(climate, 2 * index);
        if (counts != climate.counts[index])
            board.devices.cpld.reg[kCpldFanCounts + index] = counts;
        climate.counts[index] = counts;
    }
}

} // namespace

bool sharesPresenceLines(const Model &model) {
    return model.fans > kTwoFans;
}

void buildClimate(Board &board, const Model &model) {
    climateBuild(board.devices.climate, model.fans, loadOf(board.devices));
}

void startClimateLines(Board &board) {
    Climate &climate = board.devices.climate;
    climate.counts[0] = climate.counts[1] = climate.presence = 0;
    const Model *model = findModel(board.header.devId);
    if (model != nullptr && sharesPresenceLines(*model))
        climate.presence = presenceOf(climate);
    drivePresence(board, presenceOf(climate));
    driveCounts(board);
}

void advanceClimate(Board &board, uint64_t nowNs) {
    Devices &devices = board.devices;
    climateAdvance(devices.climate, loadOf(devices), nowNs);
    drivePresence(board, presenceOf(devices.climate));
    driveCounts(board);
}

} // namespace vb
