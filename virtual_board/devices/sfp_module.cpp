#include "virtual_board/devices/sfp_module.h"

#include "virtual_board/devices/byte_order.h"
#include "virtual_board/devices/sfp_pages.h"

#include <cstring>

namespace vb {

namespace {

// Diagnostics page
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

bool hasPhy(const SfpModule &module) {
    return sfpTraits(module.kind).phyMode != 0;
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
void measure(const SfpModule &module, const SfpCage &cage, int32_t (&value)[kSfpQuantities]) {
    constexpr int32_t kOwnWarmth = 5000; // thousandths of degrees
    constexpr int32_t kLaserWarmth = 3000;
    const SfpTraits &traits = sfpTraits(module.kind);
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
void flag(const uint8_t *limits, const int32_t (&value)[kSfpQuantities], uint8_t *flags) {
    for (uint32_t i = 0; i < kSfpQuantities; ++i) {
        const auto limitAt = [&](uint32_t offset) {
            const int32_t word = loadBe16(&limits[size_t{8} * i + offset]);
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
    module.microwatts = sfpTraits(kind).usualMicrowatts;
    fillSfpPages(module, number);
}

void sfpRelease(SfpModule &module) {
    if (module.isHeld == 0)
        return;
    module.isHeld = 0;
    sfpForget(module); // state and flags are made anew
}

void sfpForget(SfpModule &module) {
    module.diagnostics[kStatus] = 0; // a transmitter that software had switched off
}

bool sfpIsOptical(const SfpModule &module) {
    return sfpTraits(module.kind).lostBelow != 0;
}

bool sfpHasDiagnostics(const SfpModule &module) {
    return sfpTraits(module.kind).biasUa != 0;
}

bool sfpIsSignalLost(const SfpModule &module) {
    const bool isDead = module.kind == SfpKind::Dead || module.state == SfpState::Dead;
    return isDead || module.isLinkUp == 0 || module.microwatts < sfpTraits(module.kind).lostBelow;
}

bool sfpHasTxFault(const SfpModule &module, const SfpCage &cage) {
    return module.state == SfpState::TxFault && !isTxOff(module, cage);
}

SfpSignal sfpSignal(const SfpModule &module, const SfpCage &cage) {
    if (module.kind == SfpKind::None)
        return SfpSignal::None;
    if (sfpHasTxFault(module, cage))
        return SfpSignal::TxFault;
    if (cage.isDisabled)
        return SfpSignal::Off;
    return sfpIsSignalLost(module) ? SfpSignal::Lost : SfpSignal::Good;
}

void sfpMeasure(const SfpModule &module, const SfpCage &cage, uint8_t (&page)[kSfpPageSize]) {
    std::memcpy(page, module.diagnostics, sizeof(page));
    if (module.isHeld != 0)
        return;
    int32_t value[kSfpQuantities];
    measure(module, cage, value);
    for (uint32_t i = 0; i < kSfpQuantities; ++i)
        storeSfpWord(&page[kMeasurements + size_t{2} * i], value[i]);
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
           module.isLinkUp <= 1 && module.isHeld <= 1 && module.microwatts <= kSfpMostMicrowatts;
}

} // namespace vb
