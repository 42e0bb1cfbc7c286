#pragma once
// A pluggable SFP transceiver: identification and diagnostics as SFF-8472 has them, the PHY of
// copper modules, and what reaches its receiver.

#include <cstdint>

namespace vb {

enum class SfpKind : uint32_t {
    None,
    Sx,          // 1000BASE-SX, without diagnostics
    Sr,          // 10GBASE-SR
    Lr,          // 10GBASE-LR
    Dac,         // passive copper cable with a plug at each end
    CopperMode4, // RJ45 with a PHY: the low digit of its register 27 is 4, 12 or another one
    CopperMode12,
    CopperOther,
    BadChecksum, // an SR whose identification is corrupt
    Dead,        // an SR that is plugged and does not answer
    Slow,        // an SR that answers after a while only
};
constexpr uint32_t kSfpKinds = 11;

enum class SfpState : uint32_t { Good, TxFault, Dead };

constexpr uint32_t kSfpPageSize = 256;
constexpr uint32_t kSfpPhyRegisters = 32;
constexpr uint32_t kSfpMostMicrowatts = 6553; // what 16 bits of 0.1 microwatts hold
constexpr uint64_t kSfpSlowStartNs = 2000000000;

constexpr uint32_t kSfpIdAddr = 0x50;
constexpr uint32_t kSfpDiagnosticsAddr = 0x51;
constexpr uint32_t kSfpPhyAddr = 0x56;

struct SfpModule {
    alignas(8) uint64_t startedNs; // plugged, or the power came
    // The world's face.
    SfpKind kind;
    SfpState state;
    uint32_t isLinkUp;
    uint32_t microwatts; // that arrive while the link is up
    uint32_t lines;      // what was put on the lines to the CPLD
    uint32_t isHeld;     // the diagnostics are those of the page, and nothing is measured
    uint8_t id[kSfpPageSize];
    uint8_t diagnostics[kSfpPageSize]; // without what is measured, unless it is held
    uint8_t phy[2 * kSfpPhyRegisters]; // the upper byte of each register first
};

/** What surrounds a module in its cage. */
struct SfpCage {
    int32_t microdegrees; // of the board
    bool isDisabled;      // by the line to the transmitter
    uint64_t nowNs;
};

/** Plugs a new module, with a serial number made of a number; None pulls it. */
void sfpPlug(SfpModule &module, SfpKind kind, uint32_t number, uint64_t nowNs);

/** Lets a module measure again. */
void sfpRelease(SfpModule &module);

/** Loses what a module keeps while it has power only. */
void sfpForget(SfpModule &module);

/** Whether a module has a receiver of light. */
bool sfpIsOptical(const SfpModule &module);

bool sfpHasDiagnostics(const SfpModule &module);

// Lines of a plugged module
bool sfpIsSignalLost(const SfpModule &module);
bool sfpHasTxFault(const SfpModule &module, const SfpCage &cage);

/** What the lines of a cage tell, in the order of what hides what. */
enum class SfpSignal : uint8_t { None, TxFault, Off, Lost, Good };
SfpSignal sfpSignal(const SfpModule &module, const SfpCage &cage);

/** The diagnostics page with what is measured now. */
void sfpMeasure(const SfpModule &module, const SfpCage &cage, uint8_t (&page)[kSfpPageSize]);

// The bus; false when nothing answers at the address.
bool sfpRead(const SfpModule &module, const SfpCage &cage, uint32_t devAddr, uint32_t offset,
             uint8_t *data, uint32_t length);
bool sfpWrite(SfpModule &module, const SfpCage &cage, uint32_t devAddr, uint32_t offset,
              const uint8_t *data, uint32_t length);

/** Whether the state is one that a module can have. */
bool sfpIsConsistent(const SfpModule &module);

} // namespace vb
