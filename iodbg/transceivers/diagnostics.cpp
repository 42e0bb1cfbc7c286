#include "iodbg/transceivers/diagnostics.h"

#include "language/formats/byte_order.h"

#include <cmath>
#include <cstdio>
#include <cstring>

namespace iodbg {

namespace {

/** Where a quantity lies in the page, and how its numbers are meant. */
struct Layout {
    Quantity quantity;
    uint8_t limits; // high alarm, low alarm, high warning, low warning: two bytes each
    uint8_t value;
    uint8_t flagByte, flagBit; // high; low is the bit below; warnings lie four bytes behind alarms
    uint8_t slope, offset;     // of external calibration
    bool isSigned;
    double unit;
};

constexpr Layout kLayouts[kQuantities] = {
    {Quantity::Temperature, 0, 96, 112, 7, 84, 86, true, 1.0 / 256},
    {Quantity::SupplyVoltage, 8, 98, 112, 5, 88, 90, false, 0.0001},
    {Quantity::BiasCurrent, 16, 100, 112, 3, 76, 78, false, 0.002},
    {Quantity::TxPower, 24, 102, 112, 1, 80, 82, false, 0.0001},
    {Quantity::RxPower, 32, 104, 113, 7, 0, 0, false, 0.0001},
};
constexpr size_t kWarningsBehindAlarms = 4;
constexpr size_t kRxPowerCoefficients =
    56; // five floating-point numbers, of the fourth power first
constexpr size_t kChecksum = 95;
constexpr size_t kStatus = 110;

uint16_t wordAt(ByteView page, size_t offset) {
    return formats::loadBe16(&page[offset]);
}

/** A number as it is stored. */
double rawAt(ByteView page, size_t offset, bool isSigned) {
    const uint16_t word = wordAt(page, offset);
    return isSigned ? static_cast<int16_t>(word) : word;
}

float floatAt(ByteView page, size_t offset) {
    const uint32_t bits = uint32_t{wordAt(page, offset)} << 16 | uint32_t{wordAt(page, offset + 2)};
    float number = 0;
    std::memcpy(&number, &bits, sizeof(number));
    return number;
}

double calibratedRxPower(ByteView page, double raw) {
    double sum = 0;
    for (size_t i = 0; i < 5; ++i)
        sum = sum * raw + static_cast<double>(floatAt(page, kRxPowerCoefficients + 4 * i));
    return sum;
}

double calibrated(ByteView page, const Layout &layout, double raw) {
    if (layout.quantity == Quantity::RxPower)
        return calibratedRxPower(page, raw);
    return rawAt(page, layout.slope, false) / 256 * raw + rawAt(page, layout.offset, true);
}

bool isFlagged(ByteView page, size_t byte, unsigned bit) {
    return (page[byte] >> bit & 1) != 0;
}

Judgement judgementOf(ByteView page, const Layout &layout) {
    const size_t warnings = layout.flagByte + kWarningsBehindAlarms;
    if (isFlagged(page, layout.flagByte, layout.flagBit))
        return Judgement::HighAlarm;
    if (isFlagged(page, layout.flagByte, layout.flagBit - 1u))
        return Judgement::LowAlarm;
    if (isFlagged(page, warnings, layout.flagBit))
        return Judgement::HighWarning;
    return isFlagged(page, warnings, layout.flagBit - 1u) ? Judgement::LowWarning
                                                          : Judgement::Normal;
}

Measurement measurementAt(ByteView page, const Layout &layout, bool isExternallyCalibrated) {
    const double raw = rawAt(page, layout.value, layout.isSigned);
    const auto limit = [&](size_t index) {
        return rawAt(page, layout.limits + 2 * index, layout.isSigned) * layout.unit;
    };
    const double value = isExternallyCalibrated ? calibrated(page, layout, raw) : raw;
    return {layout.quantity, value * layout.unit,      limit(0), limit(1), limit(2),
            limit(3),        judgementOf(page, layout)};
}

} // namespace

Diagnostics diagnosticsOf(ByteView page, bool isExternallyCalibrated) {
    Diagnostics diagnostics = {};
    for (size_t i = 0; i < kQuantities; ++i)
        diagnostics.measurements[i] = measurementAt(page, kLayouts[i], isExternallyCalibrated);
    diagnostics.isTxDisabled = isFlagged(page, kStatus, 7);
    diagnostics.hasTxFault = isFlagged(page, kStatus, 2);
    diagnostics.hasLostSignal = isFlagged(page, kStatus, 1);
    diagnostics.isReady = !isFlagged(page, kStatus, 0); // the bit tells that data are not ready
    diagnostics.checksum = checksumOf(page, 0, kChecksum - 1);
    return diagnostics;
}

std::string dbmText(double milliwatts) {
    if (milliwatts <= 0)
        return "no light";
    char text[32];
    std::snprintf(text, sizeof(text), "%.2f dBm", 10 * std::log10(milliwatts));
    return text;
}

} // namespace iodbg
