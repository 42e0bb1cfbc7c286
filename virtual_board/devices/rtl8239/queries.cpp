// The application's answers to questions.

#include "virtual_board/devices/poe_budget.h"
#include "virtual_board/devices/poe_measurements.h"
#include "virtual_board/devices/poe_ports.h"
#include "virtual_board/devices/rtl8239/frame.h"

#include <algorithm>

namespace vb {

namespace {

constexpr uint32_t kControllerId = 0x8239;
constexpr uint32_t kFirstPair = 2, kBehindPairs = 10;

// Status of a port.
constexpr uint8_t kDisabled = 0;
constexpr uint8_t kSearching = 1;
constexpr uint8_t kDelivering = 2;
constexpr uint8_t kFaulty = 4;
constexpr uint8_t kDenied = 6;

constexpr uint8_t nibbles(uint32_t high, uint32_t low) {
    return static_cast<uint8_t>(high << 4 | low);
}

uint8_t statusOf(PoePhase phase) {
    switch (phase) {
    case PoePhase::Disabled:
        return kDisabled;
    case PoePhase::Delivering:
        return kDelivering;
    case PoePhase::Denied:
        return kDenied;
    case PoePhase::Fault:
        return kFaulty;
    default:
        return kSearching;
    }
}

uint8_t asByte(uint32_t value) {
    return static_cast<uint8_t>(std::min(value, uint32_t{UINT8_MAX}));
}

uint32_t inPowerUnits(uint32_t milliwatts) {
    return std::min(milliwatts / kPoePowerUnit, uint32_t{UINT16_MAX});
}

const PoePortSettings &settingsOf(const PoeController &poe, uint32_t port) {
    return poe.rtl8239.settings.port[port];
}

// Questions about one port, which byte 2 names

struct PortQuery {
    uint8_t code;
    void (*answer)(const PoeRequest &request, uint32_t port);
};

void answerStatus(const PoeRequest &request, uint32_t port) {
    const PoePort &state = request.poe.port[port];
    const bool isFourPair = settingsOf(request.poe, port).isFourPair != 0;
    const uint8_t found = nibbles(state.powerClass, state.detection);
    request.reply[3] = statusOf(state.phase);
    request.reply[4] = state.phase == PoePhase::Fault ? state.fault : found;
    // Both pair sets of a port lead to the same device.
    request.reply[5] = isFourPair ? nibbles(state.detection, state.detection) : state.detection;
    request.reply[7] = isFourPair ? 2 : 1;
}

uint32_t voltageCode(const PoeMeasurement &measured) {
    constexpr uint32_t kUnit = 64450; // microvolts
    return measured.microvolts / kUnit;
}

uint32_t temperatureCode(const PoeMeasurement &measured) {
    return 220 - measured.degrees * 4 / 5;
}

void answerMeasurement(const PoeRequest &request, uint32_t port) {
    const PoeMeasurement measured = poeMeasure(request.poe, port, request.nowNs);
    poeStoreWord(request.reply, 3, voltageCode(measured));
    poeStoreWord(request.reply, 5, measured.milliamperes);
    poeStoreWord(request.reply, 7, temperatureCode(measured));
    poeStoreWord(request.reply, 9, measured.milliwatts / kPoePowerUnit);
}

/** Counts of failures; a flag clears them. */
void answerCounts(const PoeRequest &request, uint32_t port) {
    PoeCounts &counts = request.poe.port[port].counts;
    request.reply[3] = counts.overCurrent;
    request.reply[4] = counts.shorts;
    request.reply[5] = counts.denials;
    request.reply[6] = counts.disconnects;
    request.reply[7] = counts.badSignatures;
    if (request.frame[3] == 1)
        counts = PoeCounts{};
}

void answerConfig(const PoeRequest &request, uint32_t port) {
    const PoePortSettings &settings = settingsOf(request.poe, port);
    request.reply[3] = settings.enable;
    request.reply[4] = settings.funcMode;
    request.reply[5] = settings.detType;
    request.reply[7] = settings.disconnectType;
    request.reply[8] = settings.isFourPair;
}

void answerPowerConfig(const PoeRequest &request, uint32_t port) {
    const PoePortSettings &settings = settingsOf(request.poe, port);
    request.reply[3] = settings.inrushMode;
    request.reply[4] = settings.limitType;
    request.reply[5] = settings.limit;
    request.reply[6] = settings.priority;
    request.reply[7] = settings.forceInrush;
    request.reply[8] = asByte(poePortLimit(request.poe, port) / kPoeLimitUnit);
}

void answerMapping(const PoeRequest &request, uint32_t port) {
    const PoePortSettings &settings = settingsOf(request.poe, port);
    request.reply[3] = settings.isMapped;
    request.reply[4] = settings.isFourPair;
    request.reply[5] = settings.chip;
    request.reply[6] = settings.primaryChannel;
    request.reply[7] = settings.secondaryChannel;
    request.reply[8] = settings.chipAddress;
}

/** Voltage and current of each pair set; the second one of a 2-pair port is dead. */
void answerPairSets(const PoeRequest &request, uint32_t port) {
    const PoeMeasurement measured = poeMeasure(request.poe, port, request.nowNs);
    const bool isFourPair = settingsOf(request.poe, port).isFourPair != 0;
    const uint32_t second = isFourPair ? measured.milliamperes / 2 : 0;
    poeStoreWord(request.reply, 3, voltageCode(measured));
    poeStoreWord(request.reply, 5, measured.milliamperes - second);
    poeStoreWord(request.reply, 7, isFourPair ? voltageCode(measured) : 0);
    poeStoreWord(request.reply, 9, second);
}

constexpr PortQuery kPortQueries[] = {{0x42, answerStatus},      {0x44, answerMeasurement},
                                      {0x45, answerCounts},      {0x48, answerConfig},
                                      {0x49, answerPowerConfig}, {0x4E, answerMapping},
                                      {0x4F, answerPairSets}};

bool servePortQuery(const PoeRequest &request) {
    for (const PortQuery &query : kPortQueries) {
        if (query.code != request.frame[0])
            continue;
        // A port that does not exist is not repeated, which tells the asker.
        if (request.frame[2] < kPoePorts && request.frame[2] != request.badPort) {
            request.reply[2] = request.frame[2];
            query.answer(request, request.frame[2]);
        }
        return true;
    }
    return false;
}

// Questions about up to four ports, which the pairs name

template <typename Value>
void answerPorts(const PoeRequest &request, Value value) {
    for (uint32_t at = kFirstPair; at < kBehindPairs; at += 2) {
        const uint8_t port = request.frame[at];
        if (port >= kPoePorts || port == request.badPort)
            continue;
        request.reply[at] = port;
        request.reply[at + 1] = value(port);
    }
}

void answerFuncModes(const PoeRequest &request) {
    answerPorts(request, [&](uint32_t port) { return settingsOf(request.poe, port).funcMode; });
}

/** Whether a detection is under way. */
void answerDetections(const PoeRequest &request) {
    answerPorts(request, [&](uint32_t port) {
        return static_cast<uint8_t>(request.poe.port[port].phase == PoePhase::Detecting ? 1 : 0);
    });
}

// Questions about the controller

void answerSystemInfo(const PoeRequest &request) {
    const PoeController &poe = request.poe;
    const uint16_t version = poeVersion(poe.image);
    request.reply[3] = kPoePorts;
    request.reply[4] = poe.rtl8239.settings.portCount;
    poeStoreWord(request.reply, 5, kControllerId);
    request.reply[7] = static_cast<uint8_t>(version >> 8);
    request.reply[8] = kPoeChips;
    request.reply[9] =
        static_cast<uint8_t>(poe.rtl8239.settings.isEnabled | poe.hasSavedSettings << 1 |
                             poe.rtl8239.settings.isMappingEnabled << 2);
    request.reply[10] = static_cast<uint8_t>(version);
}

void answerTotals(const PoeRequest &request) {
    poeStoreWord(request.reply, 2, inPowerUnits(poeAllocated(request.poe)));
    poeStoreWord(request.reply, 4, inPowerUnits(poeAvailable(request.poe)));
    request.reply[6] = request.poe.rtl8239.settings.pmMode;
    poeStoreWord(request.reply, 7, inPowerUnits(poeTotalDrawn(request.poe)));
}

/** Ports that something happened to; a flag clears them. */
void answerEvents(const PoeRequest &request) {
    PoeFrame &reply = request.reply;
    const uint8_t mask = request.poe.rtl8239.settings.eventMask;
    for (uint32_t at = 2; at < kBehindPairs; ++at)
        reply[at] = 0;
    reply[2] = mask;
    for (uint32_t port = 0; port < kPoePorts && mask != 0; ++port) {
        PoePort &state = request.poe.port[port];
        if (state.hasEvent == 0)
            continue;
        reply[3] = mask;
        uint8_t &bits = reply[4 + port / 8];
        bits = static_cast<uint8_t>(bits | 1u << port % 8);
        if (request.frame[2] == 1)
            state.hasEvent = 0;
    }
}

void answerGlobalParam(const PoeRequest &request) {
    const PoeSettings &settings = request.poe.rtl8239.settings;
    request.reply[2] = settings.lowThreshold;
    request.reply[3] = settings.pmMode;
    request.reply[7] = settings.highThreshold;
    request.reply[8] = settings.pmModeExt;
}

void answerPowerSource(const PoeRequest &request) {
    const uint8_t index = request.frame[1];
    if (index >= kPoeBanks)
        return;
    const PoeBank &bank = request.poe.rtl8239.settings.bank[index];
    request.reply[2] = index == 0 ? 1 : 0; // in use
    poeStoreWord(request.reply, 3, bank.power);
    poeStoreWord(request.reply, 5, bank.reserve);
}

/** What a function finds of each chip, over the ports that it serves. */
template <typename Value>
uint8_t overChip(const PoeController &poe, uint32_t chip, uint8_t start, Value value) {
    uint8_t result = start;
    for (uint32_t port = 0; port < kPoePorts; ++port) {
        if (settingsOf(poe, port).isMapped != 0 && settingsOf(poe, port).chip == chip)
            result = value(port, result);
    }
    return result;
}

/** Addresses of the chips, from the one that byte 2 names on. */
void answerChipAddresses(const PoeRequest &request) {
    constexpr uint32_t kPerFrame = 8;
    const PoeController &poe = request.poe;
    const uint32_t first = request.frame[2];
    if (first >= kPoeChips)
        return;
    request.reply[2] = request.frame[2];
    for (uint32_t i = 0; i < kPerFrame && first + i < kPoeChips; ++i)
        request.reply[3 + i] = overChip(poe, first + i, kPoeNone, [&](uint32_t port, uint8_t) {
            return settingsOf(poe, port).chipAddress;
        });
}

/** How many ports each chip delivers to. */
void answerChipLoads(const PoeRequest &request) {
    const PoeController &poe = request.poe;
    const auto load = [&](uint32_t chip) {
        return std::min(0xF, int{overChip(poe, chip, 0, [&](uint32_t port, uint8_t sum) {
                            return static_cast<uint8_t>(sum +
                                                        (poeIsPowered(poe.port[port]) ? 1 : 0));
                        })});
    };
    for (uint32_t pair = 0; pair < kPoeChips / 2; ++pair)
        request.reply[2 + pair] = static_cast<uint8_t>(load(2 * pair) << 4 | load(2 * pair + 1));
}

void answerChipRegister(const PoeRequest &request) {
    for (uint32_t at = 2; at < 7; ++at)
        request.reply[at] = request.frame[at];
    const uint32_t address = poeLong(request.frame, 3);
    uint32_t value = 0; // a register that nobody has written
    for (uint32_t i = 0; i < request.poe.rtl8239.chipRegisters; ++i) {
        const PoeChipRegister &place = request.poe.rtl8239.chipRegister[i];
        if (place.chip == request.frame[2] && place.address == address)
            value = place.value;
    }
    poeStoreLong(request.reply, 7, value);
}

struct Query {
    uint8_t code;
    void (*answer)(const PoeRequest &request);
};

constexpr Query kQueries[] = {
    {0x40, answerSystemInfo},  {0x41, answerTotals},      {0x46, answerEvents},
    {0x4A, answerGlobalParam}, {0x4B, answerPowerSource}, {0x4C, answerChipAddresses},
    {0x4D, answerFuncModes},   {0x50, answerChipLoads},   {0xF1, answerChipRegister}};

} // namespace

bool poeServeQuery(const PoeRequest &request) {
    const uint8_t code = request.frame[0];
    if (code == 0x0A) { // the only question with the code of a setting
        if (request.frame[1] != 1)
            return false;
        answerDetections(request);
        return true;
    }
    for (const Query &query : kQueries) {
        if (query.code == code) {
            query.answer(request);
            return true;
        }
    }
    return servePortQuery(request);
}

} // namespace vb
