#include "virtual_board/devices/sfp_pages.h"

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

constexpr SfpLimits kTemperatureLimits = {{75 * 256, -5 * 256, 70 * 256, 0}};
constexpr SfpLimits kVoltageLimits = {{36000, 30000, 35000, 31000}};
constexpr SfpLimits kTxLimits = {{16000, 1000, 12600, 1300}};
constexpr SfpLimits kNone = {};

constexpr SfpTraits kSx = {
    "VIRTUAL-SX", 0x07, 0, 0x01, 0,     0x01,  13, {0, 0, 55, 27, 0, 0}, 850, 0x1A,
    300,          20,   0, 0,    kNone, kNone, 0};
constexpr SfpTraits kSr = {"VIRTUAL-SR",
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
constexpr SfpTraits kLr = {"VIRTUAL-LR",
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
constexpr SfpTraits kDac = {"VIRTUAL-DAC-3M",
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

constexpr SfpTraits copper(uint16_t phyMode) {
    return {"VIRTUAL-T", 0x22, 0, 0x08, 0,     0x01,  13,     {0, 0, 0, 0, 100, 0}, 0, 0x12,
            0,           0,    0, 0,    kNone, kNone, phyMode};
}

constexpr SfpTraits kTraits[kSfpKinds] = {
    {}, kSx, kSr, kLr, kDac, copper(0x9084), copper(0x908C), copper(0x9080), kSr, kSr, kSr};

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

void fillIdentification(SfpModule &module, const SfpTraits &traits, uint32_t number) {
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
    storeSfpWord(id + kWavelength, traits.wavelength);
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

void fillDiagnostics(SfpModule &module, const SfpTraits &traits) {
    const SfpLimits limits[kSfpQuantities] = {kTemperatureLimits, kVoltageLimits, traits.biasLimits,
                                              kTxLimits, traits.rxLimits};
    uint8_t *place = module.diagnostics;
    for (const SfpLimits &quantity : limits) {
        for (const int32_t limit : quantity.limit) {
            storeSfpWord(place, limit);
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
    storeSfpWord(&module.phy[size_t{2} * reg], value);
}

void fillPhy(SfpModule &module, const SfpTraits &traits) {
    setPhy(module, 0, 0x1140);
    setPhy(module, 1, 0x7949);
    setPhy(module, 2, 0x0200);
    setPhy(module, 3, 0x5E10);
    setPhy(module, 27, traits.phyMode);
}

} // namespace

const SfpTraits &sfpTraits(SfpKind kind) {
    return kTraits[static_cast<uint32_t>(kind)];
}

void fillSfpPages(SfpModule &module, uint32_t number) {
    const SfpTraits &traits = sfpTraits(module.kind);
    fillIdentification(module, traits, number);
    if (sfpHasDiagnostics(module))
        fillDiagnostics(module, traits);
    if (traits.phyMode != 0)
        fillPhy(module, traits);
}

} // namespace vb
