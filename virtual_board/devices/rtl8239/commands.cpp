// The application's settings.

#include "virtual_board/devices/poe_budget.h"
#include "virtual_board/devices/poe_ports.h"
#include "virtual_board/devices/rtl8239/frame.h"

namespace vb {

namespace {

constexpr uint8_t kConfigSave = 0x01;
constexpr uint8_t kConfigClear = 0x02;
constexpr uint8_t kConfigReset = 0x05;
constexpr uint8_t kConfigInit = 0x06;
constexpr uint32_t kChannels = 8;

using Result = uint8_t; // kPoeAccepted or kPoeRefused

constexpr Result resultOf(bool isAccepted) {
    return isAccepted ? kPoeAccepted : kPoeRefused;
}

// Settings of ports: up to four pairs of a port and its value

using SetPort = bool (*)(PoeController &poe, uint32_t port, uint8_t value, uint64_t nowNs);

struct PortCommand {
    uint8_t code;
    uint8_t lowest, highest;                   // values that the firmware takes
    uint8_t PoePortSettings::*field = nullptr; // where the value is kept
    SetPort set = nullptr;                     // what else it causes
};

bool refresh(PoeController &poe, uint32_t port, uint8_t, uint64_t nowNs) {
    poeRefreshPort(poe, port, nowNs);
    return true;
}

/** A port that is not powered looks at its device again, now in another way. */
bool searchAnew(PoeController &poe, uint32_t port, uint8_t, uint64_t nowNs) {
    if (!poeIsPowered(poe.port[port]))
        poeRestartPort(poe, port, nowNs);
    return true;
}

bool resetPort(PoeController &poe, uint32_t port, uint8_t value, uint64_t nowNs) {
    if (value != 0) {
        poeSetPortDefaults(poe.rtl8239.settings.port[port]);
        poeRestartPort(poe, port, nowNs);
    }
    return true;
}

bool triggerDetection(PoeController &poe, uint32_t port, uint8_t value, uint64_t nowNs) {
    return value == 0 || poeTrigger(poe, port, PoeGoal::Detect, nowNs);
}

bool triggerClassification(PoeController &poe, uint32_t port, uint8_t value, uint64_t nowNs) {
    return value == 0 || poeTrigger(poe, port, PoeGoal::Classify, nowNs);
}

bool triggerPower(PoeController &poe, uint32_t port, uint8_t value, uint64_t nowNs) {
    constexpr uint8_t kPower = 3;
    if (value == kPower)
        return poeTrigger(poe, port, PoeGoal::Power, nowNs);
    poeRelease(poe, port, nowNs);
    return value == 0;
}

constexpr PortCommand kPortCommands[] = {
    {0x01, 0, 2, &PoePortSettings::enable, refresh},
    {0x03, 0, 1, nullptr, resetPort},
    {0x08, 0, 2, &PoePortSettings::funcMode, searchAnew},
    {0x09, 0, 6, &PoePortSettings::detType, searchAnew},
    {0x0A, 0, 1, nullptr, triggerDetection},
    {0x0B, 0, 1, nullptr, triggerClassification},
    {0x0C, 0, 9, &PoePortSettings::inrushMode, nullptr},
    {0x0D, 0, 255, &PoePortSettings::forceInrush, nullptr},
    {0x0F, 0, 3, &PoePortSettings::disconnectType, refresh},
    {0x12, 1, 2, &PoePortSettings::limitType, refresh},
    {0x14, 0, 255, &PoePortSettings::limit, refresh},
    {0x15, 0, kPoeHighestPriority, &PoePortSettings::priority, refresh},
    {0x18, 0, 3, nullptr, triggerPower},
};

Result setPort(const PoeRequest &request, const PortCommand &command, uint32_t port,
               uint8_t value) {
    if (port >= kPoePorts || port == request.badPort || value < command.lowest ||
        value > command.highest)
        return kPoeRefused;
    if (command.field != nullptr)
        request.poe.rtl8239.settings.port[port].*command.field = value;
    return resultOf(command.set == nullptr || command.set(request.poe, port, value, request.nowNs));
}

bool servePortSetting(const PoeRequest &request) {
    constexpr uint32_t kFirstPair = 2, kBehindPairs = 10;
    for (const PortCommand &command : kPortCommands) {
        if (command.code != request.frame[0])
            continue;
        for (uint32_t at = kFirstPair; at < kBehindPairs; at += 2) {
            const uint8_t port = request.frame[at];
            if (port == kPoeNone)
                break;
            request.reply[at] = port;
            request.reply[at + 1] = setPort(request, command, port, request.frame[at + 1]);
        }
        return true;
    }
    return false;
}

// Settings of the whole controller

struct GlobalCommand {
    uint8_t code;
    uint8_t highest;
    uint8_t PoeSettings::*field;
};

constexpr GlobalCommand kGlobalCommands[] = {
    {kPoeGlobalEnable, 1, &PoeSettings::isEnabled},
    {0x10, kPoeHighestPm, &PoeSettings::pmMode},
    {0x11, 1, &PoeSettings::pmModeExt},
    {0x16, 6, &PoeSettings::eventMask},
};

bool serveGlobalSetting(const PoeRequest &request) {
    for (const GlobalCommand &command : kGlobalCommands) {
        if (command.code != request.frame[0])
            continue;
        const uint8_t value = request.frame[2];
        request.reply[2] = resultOf(value <= command.highest);
        if (value <= command.highest) {
            request.poe.rtl8239.settings.*command.field = value;
            poeRefreshPorts(request.poe, request.nowNs);
        }
        return true;
    }
    return false;
}

/** The application starts over with other settings. */
void restart(const PoeRequest &request, const PoeSettings &settings) {
    request.poe.rtl8239.settings = settings;
    poeResetPorts(request.poe);
    poeRefreshPorts(request.poe, request.nowNs);
}

PoeSettings defaults() {
    PoeSettings settings;
    poeSetDefaults(settings);
    return settings;
}

void resetAll(const PoeRequest &request) {
    const uint8_t value = request.frame[2];
    request.reply[2] = resultOf(value <= 1);
    if (value == 1)
        restart(request,
                request.poe.hasSavedSettings != 0 ? request.poe.rtl8239.saved : defaults());
}

void setPowerSource(const PoeRequest &request) {
    const uint8_t bank = request.frame[2];
    request.reply[2] = bank;
    request.reply[3] = resultOf(bank < kPoeBanks);
    if (bank >= kPoeBanks)
        return;
    request.poe.rtl8239.settings.bank[bank] = {static_cast<uint16_t>(poeWord(request.frame, 3)),
                                               static_cast<uint16_t>(poeWord(request.frame, 5))};
    poeBalance(request.poe, request.nowNs);
}

void enableMapping(const PoeRequest &request) {
    const uint8_t enable = request.frame[2];
    const uint8_t count = request.frame[3];
    request.reply[2] = resultOf(enable <= 1);
    request.reply[3] = resultOf(count <= kPoePorts);
    if (enable > 1 || count > kPoePorts)
        return;
    request.poe.rtl8239.settings.isMappingEnabled = enable;
    request.poe.rtl8239.settings.portCount = count;
    poeRefreshPorts(request.poe, request.nowNs);
}

void mapPort(const PoeRequest &request) {
    const PoeFrame &frame = request.frame;
    const uint8_t port = frame[2];
    const bool isPort = port < kPoePorts && port != request.badPort;
    const bool hasSecond = frame[6] != kPoeNone;
    PoeFrame &reply = request.reply;
    reply[2] = port;
    reply[3] = resultOf(isPort && frame[3] <= 1);
    reply[4] = resultOf(frame[4] < kPoeChips);
    reply[5] = resultOf(frame[5] < kChannels);
    reply[6] = resultOf(!hasSecond || frame[6] < kChannels);
    reply[10] = kPoeAccepted;
    if ((reply[3] | reply[4] | reply[5] | reply[6]) != kPoeAccepted)
        return;
    PoePortSettings &settings = request.poe.rtl8239.settings.port[port];
    settings.isMapped = 1;
    settings.isFourPair = frame[3];
    settings.chip = frame[4];
    settings.primaryChannel = frame[5];
    settings.secondaryChannel = frame[6];
    settings.chipAddress = frame[10];
    poeRefreshPort(request.poe, port, request.nowNs);
}

void setThresholds(const PoeRequest &request) {
    request.poe.rtl8239.settings.lowThreshold = request.frame[2];
    request.poe.rtl8239.settings.highThreshold = request.frame[4];
    request.reply[2] = kPoeAccepted;
}

/** The place of a chip's register; a new one, or null when all are in use. */
PoeChipRegister *chipRegister(PoeController &poe, uint32_t chip, uint32_t address) {
    for (uint32_t i = 0; i < poe.rtl8239.chipRegisters; ++i) {
        if (poe.rtl8239.chipRegister[i].chip == chip &&
            poe.rtl8239.chipRegister[i].address == address)
            return &poe.rtl8239.chipRegister[i];
    }
    if (poe.rtl8239.chipRegisters == kPoeChipRegisters)
        return nullptr;
    PoeChipRegister &added = poe.rtl8239.chipRegister[poe.rtl8239.chipRegisters++];
    added = {chip, address, 0};
    return &added;
}

void setChipRegister(const PoeRequest &request) {
    const PoeFrame &frame = request.frame;
    PoeChipRegister *place = nullptr;
    if (frame[2] < kPoeChips)
        place = chipRegister(request.poe, frame[2], poeLong(frame, 3));
    for (uint32_t at = 2; at < 7; ++at)
        request.reply[at] = frame[at];
    request.reply[7] = resultOf(place != nullptr);
    if (place != nullptr)
        place->value = poeLong(frame, 7);
}

} // namespace

bool poeServeSetting(const PoeRequest &request) {
    if (servePortSetting(request) || serveGlobalSetting(request))
        return true;
    switch (request.frame[0]) {
    case 0x02:
        resetAll(request);
        return true;
    case 0x04:
        setPowerSource(request);
        return true;
    case kPoeMappingEnable:
        enableMapping(request);
        return true;
    case 0x06:
        mapPort(request);
        return true;
    case 0x0E:
        setThresholds(request);
        return true;
    case 0xF0:
        setChipRegister(request);
        return true;
    default:
        return false;
    }
}

bool poeServeStoredSettings(const PoeRequest &request) {
    PoeController &poe = request.poe;
    switch (request.frame[1]) {
    case kConfigSave:
        poe.rtl8239.saved = poe.rtl8239.settings;
        poe.hasSavedSettings = 1;
        break;
    case kConfigClear:
        poe.hasSavedSettings = 0;
        break;
    case kConfigReset:
        restart(request, poe.hasSavedSettings != 0 ? poe.rtl8239.saved : defaults());
        break;
    case kConfigInit:
        restart(request, defaults());
        break;
    default:
        return false;
    }
    request.reply[2] = kPoeAccepted;
    return true;
}

} // namespace vb
