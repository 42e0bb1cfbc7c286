#include "virtual_board/devices/sfp_module.h"

#include <cstdio>
#include <cstring>

namespace vb {

namespace {

// Identification page
constexpr uint32_t kIdentifier = 0;
constexpr uint32_t kConnector = 2;
constexpr uint32_t kTenGigabitCodes = 3;
constexpr uint32_t kGigabitCodes = 6;
constexpr uint32_t kCableCodes = 8;
constexpr uint32_t kEncoding = 11;
constexpr uint32_t kBitRate = 12;
constexpr uint32_t kLengths = 14;
constexpr uint32_t kVendorName = 20;
constexpr uint32_t kVendorOui = 37;
constexpr uint32_t kPartNumber = 40;
constexpr uint32_t kRevision = 56;
constexpr uint32_t kWavelength = 60;
constexpr uint32_t kBaseChecksum = 63;
constexpr uint32_t kOptions = 65;
constexpr uint32_t kSerialNumber = 68;
constexpr uint32_t kDateCode = 84;
constexpr uint32_t kMonitoring = 92;
constexpr uint32_t kEnhancedOptions = 93;
constexpr uint32_t kCompliance = 94;
constexpr uint32_t kExtendedChecksum = 95;

// Diagnostics page
constexpr uint32_t kCalibration = 56;
constexpr uint32_t kDiagnosticsChecksum = 95;
constexpr uint32_t kMeasurements = 96;
constexpr uint32_t kStatus = 110;
constexpr uint32_t kAlarms = 112;
constexpr uint32_t kWarnings = 116;
constexpr uint32_t kUserBytes = 120;
constexpr uint32_t kUserBytesEnd = 248;

constexpr uint8_t kTxDisabled = 0x80;
constexpr uint8_t kSoftTxDisable = 0x40;
constexpr uint8_t kTxFaultBit = 0x04;
constexpr uint8_t kRxLossBit = 0x02;

constexpr uint32_t kWritePage = 16; // a write starts over inside of these bytes

/** High alarm, low alarm, high warning, low warning of a quantity. */
struct Limits {
    int32_t limit[4];
};
constexpr uint32_t kQuantities = 5; // temperature, voltage, bias, power out, power in

/** What the modules of one kind are made of. */
struct Traits {
    const char *part;
    uint8_t connector;
    uint8_t tenGigabitCodes, gigabitCodes, cableCodes;
    uint8_t encoding, bitRate;
    uint8_t
        lengths[6]; // single mode in km and 100 m; 50, 62.5 um in 10 m; copper in m; OM3 in 10 m
    uint16_t wavelength; // in nm; cables: what they comply with
    uint8_t options;
    uint32_t usualMicrowatts, lostBelow; // light that arrives; 0: no optics
    int32_t biasUa, txMicrowatts;        // 0: no diagnostics
    Limits biasLimits, rxLimits;
    uint16_t phyMode; // register 27; 0: no PHY
};

constexpr Limits kTemperatureLimits = {{75 * 256, -5 * 256, 70 * 256, 0}};
constexpr Limits kVoltageLimits = {{36000, 30000, 35000, 31000}};
constexpr Limits kTxLimits = {{16000, 1000, 12600, 1300}};
constexpr Limits kNone = {};

constexpr Traits kSx = {
    "VIRTUAL-SX", 0x07, 0, 0x01, 0,     0x01,  13, {0, 0, 55, 27, 0, 0}, 850, 0x1A,
    300,          20,   0, 0,    kNone, kNone, 0};
constexpr Traits kSr = {"VIRTUAL-SR",
                        0x07,
                        0x10,
                        0,
                        0,
                        0x06,
                        103,
                        {0, 0, 8, 3, 40, 30},
                        850,
                        0x1A,
                        500,
                        50,
                        7000,
                        600,
                        {{6000, 1000, 5500, 1500}},
                        {{16000, 500, 12600, 1000}},
                        0};
constexpr Traits kLr = {"VIRTUAL-LR",
                        0x07,
                        0x20,
                        0,
                        0,
                        0x06,
                        103,
                        {10, 100, 0, 0, 0, 0},
                        1310,
                        0x1A,
                        400,
                        20,
                        35000,
                        700,
                        {{40000, 5000, 35000, 7500}},
                        {{16000, 200, 12600, 360}},
                        0};
constexpr Traits kDac = {"VIRTUAL-DAC-3M",
                         0x21,
                         0,
                         0,
                         0x04,
                         0,
                         103,
                         {0, 0, 0, 0, 3, 0},
                         0x0100,
                         0,
                         0,
                         0,
                         0,
                         0,
                         kNone,
                         kNone,
                         0};

constexpr Traits copper(uint16_t phyMode) {
    return {"VIRTUAL-T", 0x22, 0, 0x08, 0,     0x01,  13,     {0, 0, 0, 0, 100, 0}, 0, 0x12,
            0,           0,    0, 0,    kNone, kNone, phyMode};
}

constexpr Traits kTraits[kSfpKinds] = {
    {}, kSx, kSr, kLr, kDac, copper(0x9084), copper(0x908C), copper(0x9080), kSr, kSr, kSr};

const Traits &traitsOf(const SfpModule &module) {
    return kTraits[static_cast<uint32_t>(module.kind)];
}

void storeWord(uint8_t *place, int32_t value) {
    place[0] = static_cast<uint8_t>(value >> 8);
    place[1] = static_cast<uint8_t>(value);
}

/** A text that is filled up with blanks. */
void storeText(uint8_t *place, const char *text, uint32_t size) {
    std::memset(place, ' ', size);
    std::memcpy(place, text, strnlen(text, size));
}

uint8_t sumOf(const uint8_t *page, uint32_t first, uint32_t behind) {
    uint32_t sum = 0;
    for (uint32_t i = first; i < behind; ++i)
        sum += page[i];
    return static_cast<uint8_t>(sum);
}

void fillIdentification(SfpModule &module, const Traits &traits, uint32_t number) {
    uint8_t *id = module.id;
    id[kIdentifier] = 0x03; // SFP, and what follows
    id[kIdentifier + 1] = 0x04;
    id[kConnector] = traits.connector;
    id[kTenGigabitCodes] = traits.tenGigabitCodes;
    id[kGigabitCodes] = traits.gigabitCodes;
    id[kCableCodes] = traits.cableCodes;
    id[kEncoding] = traits.encoding;
    id[kBitRate] = traits.bitRate;
    std::memcpy(id + kLengths, traits.lengths, sizeof(traits.lengths));
    storeText(id + kVendorName, "VIRTUAL", 16);
    id[kVendorOui] = 0x02; // locally administered: nobody's
    id[kVendorOui + 2] = 0x5E;
    storeText(id + kPartNumber, traits.part, 16);
    storeText(id + kRevision, "A1", 4);
    storeWord(id + kWavelength, traits.wavelength);
    id[kBaseChecksum] = sumOf(id, kIdentifier, kBaseChecksum);
    id[kOptions] = traits.options;
    char serial[24];
    std::snprintf(serial, sizeof(serial), "SFP%07u", number);
    storeText(id + kSerialNumber, serial, 16);
    storeText(id + kDateCode, "240101", 8);
    if (traits.biasUa != 0) {
        id[kMonitoring] = 0x68;      // calibrated by itself, average power
        id[kEnhancedOptions] = 0xF0; // alarms, and the lines by software
        id[kCompliance] = 0x05;
    }
    id[kExtendedChecksum] = sumOf(id, kBaseChecksum + 1, kExtendedChecksum);
    if (module.kind == SfpKind::BadChecksum)
        id[kBaseChecksum] ^= 0x55;
}

void fillDiagnostics(SfpModule &module, const Traits &traits) {
    const Limits limits[kQuantities] = {kTemperatureLimits, kVoltageLimits, traits.biasLimits,
                                        kTxLimits, traits.rxLimits};
    uint8_t *place = module.diagnostics;
    for (const Limits &quantity : limits) {
        for (const int32_t limit : quantity.limit) {
            storeWord(place, limit);
            place += 2;
        }
    }
    // Constants of an outer calibration that changes nothing: factors 1, offsets 0.
    uint8_t *calibration = module.diagnostics + kCalibration;
    calibration[12] = 0x3F; // 1.0 for the received power
    calibration[13] = 0x80;
    for (uint32_t factor = 20; factor < 36; factor += 4)
        calibration[factor] = 1;
    module.diagnostics[kDiagnosticsChecksum] = sumOf(module.diagnostics, 0, kDiagnosticsChecksum);
}

void setPhy(SfpModule &module, uint32_t reg, int32_t value) {
    storeWord(&module.phy[size_t{2} * reg], value);
}

void fillPhy(SfpModule &module, const Traits &traits) {
    setPhy(module, 0, 0x1140);
    setPhy(module, 1, 0x7949);
    setPhy(module, 2, 0x0200);
    setPhy(module, 3, 0x5E10);
    setPhy(module, 27, traits.phyMode);
}

bool hasPhy(const SfpModule &module) {
    return traitsOf(module).phyMode != 0;
}

bool isTxOff(const SfpModule &module, const SfpCage &cage) {
    const bool isSoft =
        sfpHasDiagnostics(module) && (module.diagnostics[kStatus] & kSoftTxDisable) != 0;
    return cage.isDisabled || isSoft;
}

uint32_t received(const SfpModule &module) {
    return module.isLinkUp != 0 ? module.microwatts : 0;
}

/** The quantities in the units of the page. */
void measure(const SfpModule &module, const SfpCage &cage, int32_t (&value)[kQuantities]) {
    constexpr int32_t kOwnWarmth = 5000; // thousandths of degrees
    constexpr int32_t kLaserWarmth = 3000;
    const Traits &traits = traitsOf(module);
    const bool isLaserOn = !isTxOff(module, cage) && module.state == SfpState::Good;
    const int32_t warmth = cage.microdegrees / 1000 + kOwnWarmth + (isLaserOn ? kLaserWarmth : 0);
    const int32_t above25 = warmth - 25000;
    value[0] = warmth * 256 / 1000;
    value[1] = 33000;
    // A warm laser needs more current and gives less light.
    const int64_t bias = int64_t{traits.biasUa} / 2 * (200000 + above25) / 200000;
    const int64_t light = int64_t{traits.txMicrowatts} * 10 * (500000 - above25) / 500000;
    value[2] = isLaserOn ? static_cast<int32_t>(bias) : 0;
    value[3] = isLaserOn ? static_cast<int32_t>(light) : 0;
    value[4] = static_cast<int32_t>(received(module) * 10);
}

/** Sets the flags of the quantities that are above the one limit or below the other. */
void flag(const uint8_t *limits, const int32_t (&value)[kQuantities], uint8_t *flags) {
    for (uint32_t i = 0; i < kQuantities; ++i) {
        const auto limitAt = [&](uint32_t offset) {
            const uint8_t *place = &limits[size_t{8} * i + offset];
            const int32_t word = place[0] << 8 | place[1];
            return i == 0 && word > INT16_MAX ? word - 65536 : word;
        };
        const uint32_t shift = 7 - 2 * i % 8;
        if (value[i] > limitAt(0))
            flags[i / 4] = static_cast<uint8_t>(flags[i / 4] | 1u << shift);
        if (value[i] < limitAt(2))
            flags[i / 4] = static_cast<uint8_t>(flags[i / 4] | 1u << (shift - 1));
    }
}

bool answers(const SfpModule &module, uint64_t nowNs) {
    if (module.kind == SfpKind::None || module.kind == SfpKind::Dead ||
        module.state == SfpState::Dead)
        return false;
    return module.kind != SfpKind::Slow || nowNs >= module.startedNs + kSfpSlowStartNs;
}

/** The PHY's registers with the state of the link. */
void readPhy(const SfpModule &module, uint8_t (&bytes)[2 * kSfpPhyRegisters]) {
    constexpr uint8_t kLinkAndNegotiated = 0x24;
    std::memcpy(bytes, module.phy, sizeof(bytes));
    if (module.isLinkUp != 0)
        bytes[3] |= kLinkAndNegotiated;
}

void writeDiagnostics(SfpModule &module, uint32_t offset, uint8_t byte) {
    uint8_t &place = module.diagnostics[offset];
    if (offset == kStatus)
        place = byte & kSoftTxDisable;
    else if (offset >= kUserBytes && offset < kUserBytesEnd)
        place = byte;
}

} // namespace

void sfpPlug(SfpModule &module, SfpKind kind, uint32_t number, uint64_t nowNs) {
    const uint32_t lines = module.lines;
    module = SfpModule{};
    module.lines = lines;
    module.kind = kind;
    module.startedNs = nowNs;
    if (kind == SfpKind::None)
        return;
    const Traits &traits = traitsOf(module);
    module.microwatts = traits.usualMicrowatts;
    fillIdentification(module, traits, number);
    if (sfpHasDiagnostics(module))
        fillDiagnostics(module, traits);
    if (hasPhy(module))
        fillPhy(module, traits);
}

void sfpForget(SfpModule &module) {
    module.diagnostics[kStatus] = 0; // a transmitter that software had switched off
}

bool sfpIsOptical(const SfpModule &module) {
    return traitsOf(module).lostBelow != 0;
}

bool sfpHasDiagnostics(const SfpModule &module) {
    return traitsOf(module).biasUa != 0;
}

bool sfpIsSignalLost(const SfpModule &module) {
    const bool isDead = module.kind == SfpKind::Dead || module.state == SfpState::Dead;
    return isDead || module.isLinkUp == 0 || module.microwatts < traitsOf(module).lostBelow;
}

bool sfpHasTxFault(const SfpModule &module, const SfpCage &cage) {
    return module.state == SfpState::TxFault && !isTxOff(module, cage);
}

void sfpMeasure(const SfpModule &module, const SfpCage &cage, uint8_t (&page)[kSfpPageSize]) {
    std::memcpy(page, module.diagnostics, sizeof(page));
    int32_t value[kQuantities];
    measure(module, cage, value);
    for (uint32_t i = 0; i < kQuantities; ++i)
        storeWord(&page[kMeasurements + size_t{2} * i], value[i]);
    const uint32_t status = page[kStatus] | (cage.isDisabled ? kTxDisabled : 0) |
                            (sfpHasTxFault(module, cage) ? kTxFaultBit : 0) |
                            (sfpIsSignalLost(module) ? kRxLossBit : 0);
    page[kStatus] = static_cast<uint8_t>(status);
    flag(page, value, page + kAlarms);
    flag(page + 4, value, page + kWarnings);
}

bool sfpRead(const SfpModule &module, const SfpCage &cage, uint32_t devAddr, uint32_t offset,
             uint8_t *data, uint32_t length) {
    if (!answers(module, cage.nowNs))
        return false;
    uint8_t page[kSfpPageSize];
    uint8_t phy[2 * kSfpPhyRegisters];
    if (devAddr == kSfpIdAddr) {
        std::memcpy(page, module.id, sizeof(page));
    } else if (devAddr == kSfpDiagnosticsAddr && sfpHasDiagnostics(module)) {
        sfpMeasure(module, cage, page);
    } else if (devAddr == kSfpPhyAddr && hasPhy(module)) {
        readPhy(module, phy);
        for (uint32_t i = 0; i < length; ++i)
            data[i] = phy[(2 * offset + i) % sizeof(phy)];
        return true;
    } else {
        return false;
    }
    for (uint32_t i = 0; i < length; ++i)
        data[i] = page[(offset + i) % kSfpPageSize];
    return true;
}

bool sfpWrite(SfpModule &module, const SfpCage &cage, uint32_t devAddr, uint32_t offset,
              const uint8_t *data, uint32_t length) {
    const bool isPhy = devAddr == kSfpPhyAddr && hasPhy(module);
    const bool isDiagnostics = devAddr == kSfpDiagnosticsAddr && sfpHasDiagnostics(module);
    if (!answers(module, cage.nowNs) || !(devAddr == kSfpIdAddr || isPhy || isDiagnostics))
        return false;
    for (uint32_t i = 0; i < length; ++i) {
        const uint32_t place = (offset & ~(kWritePage - 1)) | ((offset + i) & (kWritePage - 1));
        if (isPhy)
            module.phy[(2 * offset + i) % sizeof(module.phy)] = data[i];
        else if (isDiagnostics)
            writeDiagnostics(module, place % kSfpPageSize, data[i]);
        else
            module.id[place % kSfpPageSize] = data[i];
    }
    return true;
}

bool sfpIsConsistent(const SfpModule &module) {
    return static_cast<uint32_t>(module.kind) < kSfpKinds && module.state <= SfpState::Dead &&
           module.isLinkUp <= 1 && module.microwatts <= kSfpMostMicrowatts;
}

} // namespace vb
