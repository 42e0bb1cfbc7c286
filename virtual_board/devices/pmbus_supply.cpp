#include "virtual_board/devices/pmbus_supply.h"

#include "virtual_board/devices/byte_order.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>

namespace vb {

namespace {

constexpr uint8_t kUnknownByte = 0xFF;
constexpr uint8_t kVoutMode = 0x20;
constexpr uint8_t kVoutExponent = 0x17; // -9
constexpr uint8_t kReadTemperature1 = 0x8D;

bool hasInput(const PmbusSupply &supply) {
    return supply.hasInputFailed == 0;
}

bool hasOutput(const PmbusSupply &supply) {
    return hasInput(supply) && supply.hasOutputFailed == 0;
}

bool isTold(uint32_t reading) {
    return (reading & ~uint32_t{UINT16_MAX}) == kPmbusToldWord;
}

constexpr uint8_t kReadOutputVoltage = 0x8B;

/** What is dead with which side of the supply. */
bool isAlive(const PmbusSupply &supply, uint8_t command) {
    switch (command) {
    case 0x88:
    case 0x89:
    case 0x97:
        return hasInput(supply);
    case kReadOutputVoltage:
    case 0x8C:
    case 0x96:
        return hasOutput(supply);
    default:
        return true;
    }
}

uint16_t wordOf(uint8_t command, uint32_t reading) {
    if (isTold(reading))
        return static_cast<uint16_t>(reading);
    if (command == kReadOutputVoltage)
        return toLinear16(reading);
    const bool isTemperature = command >= kReadTemperature1 && command <= kReadTemperature1 + 2;
    return toLinear11(isTemperature ? int64_t{static_cast<int32_t>(reading)} * 1000
                                    : int64_t{reading});
}

} // namespace

void pmbusBuild(PmbusSupply &supply) {
    supply = PmbusSupply{};
    supply.inputMv = 230000;
    supply.inputMa = 500;
    supply.inputMw = 115000;
    supply.outputMv = 54000;
    supply.outputMa = 1900;
    supply.outputMw = 102600;
    supply.degrees[0] = 28;
    supply.degrees[1] = 41;
    supply.degrees[2] = 45;
}

void pmbusRead(PmbusSupply &supply, uint8_t command, uint8_t *data, uint32_t length) {
    std::memset(data, kUnknownByte, length);
    ++supply.reads;
    if (supply.busyEvery != 0 && supply.reads % supply.busyEvery == 0)
        return;
    if (command == kVoutMode) {
        data[0] = kVoutExponent;
    } else if (const uint32_t *reading = pmbusReading(supply, command); reading != nullptr) {
        uint8_t bytes[2] = {};
        storeLe16(bytes, wordOf(command, isAlive(supply, command) ? *reading : 0));
        std::memcpy(data, bytes, std::min<uint32_t>(length, sizeof(bytes)));
    }
}

bool pmbusIsConsistent(const PmbusSupply &supply) {
    for (const uint32_t amount :
         {supply.inputMv, supply.inputMa, supply.inputMw, supply.outputMa, supply.outputMw}) {
        if (amount > kPmbusMost && !isTold(amount))
            return false;
    }
    for (const int32_t degrees : supply.degrees) {
        const bool isPossible = degrees >= -kPmbusMostDegrees && degrees <= kPmbusMostDegrees;
        if (!isPossible && !isTold(static_cast<uint32_t>(degrees)))
            return false;
    }
    const bool isOutputPossible = supply.outputMv <= kPmbusMostOutputMv || isTold(supply.outputMv);
    return isOutputPossible && supply.hasInputFailed <= 1 && supply.hasOutputFailed <= 1;
}

uint16_t toLinear11(int64_t thousandths) {
    constexpr int64_t kHighestMantissa = 1023;
    constexpr int kLowestExponent = -16;
    constexpr int kHighestExponent = 15;
    const bool isNegative = thousandths < 0;
    const int64_t magnitude = isNegative ? -thousandths : thousandths;
    // The smallest exponent whose mantissa still fits keeps the most digits.
    int exponent = kLowestExponent;
    int64_t mantissa = 0;
    for (; exponent <= kHighestExponent; ++exponent) {
        const int64_t scaled = exponent < 0 ? magnitude << -exponent : magnitude;
        const int64_t divisor = exponent < 0 ? 1000 : int64_t{1000} << exponent;
        mantissa = (scaled + divisor / 2) / divisor;
        if (mantissa <= kHighestMantissa)
            break;
    }
    const auto low = static_cast<uint32_t>(isNegative ? -mantissa : mantissa) & 0x7FF;
    return static_cast<uint16_t>((static_cast<uint32_t>(exponent) & 0x1F) << 11 | low);
}

uint16_t toLinear16(uint32_t thousandths) {
    return static_cast<uint16_t>((uint64_t{thousandths} * 512 + 500) / 1000);
}

int32_t fromLinear11(uint16_t word) {
    constexpr int kMantissaBits = 11;
    const auto exponent = static_cast<int16_t>(word) >> kMantissaBits;
    const int64_t mantissa =
        static_cast<int16_t>(word << (16 - kMantissaBits)) >> (16 - kMantissaBits);
    const int64_t scaled = mantissa * 1000;
    const int64_t exact =
        exponent < 0 ? scaled / (int64_t{1} << -exponent) : scaled * (int64_t{1} << exponent);
    return static_cast<int32_t>(std::clamp<int64_t>(exact, INT32_MIN, INT32_MAX));
}

uint32_t fromLinear16(uint16_t word) {
    return static_cast<uint32_t>(uint64_t{word} * 1000 / 512);
}

uint32_t pmbusAmount(uint32_t reading) {
    if (!isTold(reading))
        return reading;
    return static_cast<uint32_t>(std::max(fromLinear11(static_cast<uint16_t>(reading)), 0));
}

uint32_t pmbusOutputMv(const PmbusSupply &supply) {
    return isTold(supply.outputMv) ? fromLinear16(static_cast<uint16_t>(supply.outputMv))
                                   : supply.outputMv;
}

int32_t pmbusDegrees(int32_t reading) {
    if (!isTold(static_cast<uint32_t>(reading)))
        return reading;
    return fromLinear11(static_cast<uint16_t>(reading)) / 1000;
}

uint32_t *pmbusReading(PmbusSupply &supply, uint8_t command) {
    switch (command) {
    case 0x88:
        return &supply.inputMv;
    case 0x89:
        return &supply.inputMa;
    case kReadOutputVoltage:
        return &supply.outputMv;
    case 0x8C:
        return &supply.outputMa;
    case kReadTemperature1:
    case kReadTemperature1 + 1:
    case kReadTemperature1 + 2:
        // The same bits, read with their sign.
        return reinterpret_cast<uint32_t *>(&supply.degrees[command - kReadTemperature1]);
    case 0x96:
        return &supply.outputMw;
    case 0x97:
        return &supply.inputMw;
    default:
        return nullptr;
    }
}

void pmbusTell(PmbusSupply &supply, uint8_t command, uint16_t word) {
    if (uint32_t *reading = pmbusReading(supply, command); reading != nullptr)
        *reading = kPmbusToldWord | word;
}

} // namespace vb
