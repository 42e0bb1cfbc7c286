#pragma once
// The diagnostics page (A2h) of an SFP module, taken apart.

#include "iodbg/transceivers/identification.h"

#include <array>
#include <cstdint>
#include <string>

namespace iodbg {

constexpr size_t kDiagnosticsSize = 128; // what of the page the standard defines

enum class Judgement { Normal, LowWarning, HighWarning, LowAlarm, HighAlarm };

enum class Quantity { Temperature, SupplyVoltage, BiasCurrent, TxPower, RxPower };
constexpr size_t kQuantities = 5;

/** What is measured, with the limits that the module's maker has set. */
struct Measurement {
    Quantity quantity;
    double value; // degrees Celsius, volts, milliamperes, milliwatts
    double highAlarm, lowAlarm, highWarning, lowWarning;
    Judgement judgement; // the module's own, by its flags
};

struct Diagnostics {
    std::array<Measurement, kQuantities> measurements;
    bool isTxDisabled, hasTxFault, hasLostSignal, isReady; // the module's own view of its lines
    PageChecksum checksum;
};

/** page: kDiagnosticsSize bytes. */
Diagnostics diagnosticsOf(ByteView page, bool isExternallyCalibrated);

/** "-2.35 dBm" of milliwatts; "no light" of none. */
std::string dbmText(double milliwatts);

} // namespace iodbg
