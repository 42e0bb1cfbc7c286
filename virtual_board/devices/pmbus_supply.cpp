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

/** The word of a reading; false for commands that are none. */
bool reading(const PmbusSupply &supply, uint8_t command, uint16_t *word) {
    const int64_t in = hasInput(supply) ? 1 : 0;
    const int64_t out = hasOutput(supply) ? 1 : 0;
    switch (command) {
    case 0x88:
        *word = toLinear11(in * supply.inputMv);
        return true;
    case 0x89:
        *word = toLinear11(in * supply.inputMa);
        return true;
    case 0x8B:
        *word = toLinear16(hasOutput(supply) ? supply.outputMv : 0);
        return true;
    case 0x8C:
        *word = toLinear11(out * supply.outputMa);
        return true;
    case kReadTemperature1:
    case kReadTemperature1 + 1:
    case kReadTemperature1 + 2:
        *word = toLinear11(int64_t{supply.degrees[command - kReadTemperature1]} * 1000);
        return true;
    case 0x96:
        *word = toLinear11(out * supply.outputMw);
        return true;
    case 0x97:
        *word = toLinear11(in * supply.inputMw);
        return true;
    default:
        return false;
    }
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
    uint16_t word = 0;
    if (command == kVoutMode) {
        data[0] = kVoutExponent;
    } else if (reading(supply, command, &word)) {
        uint8_t bytes[2] = {};
        storeLe16(bytes, word);
        std::memcpy(data, bytes, std::min<uint32_t>(length, sizeof(bytes)));
    }
}

bool pmbusIsConsistent(const PmbusSupply &supply) {
    for (const uint32_t amount :
         {supply.inputMv, supply.inputMa, supply.inputMw, supply.outputMa, supply.outputMw}) {
        if (amount > kPmbusMost)
            return false;
    }
    for (const int32_t degrees : supply.degrees) {
        if (degrees < -kPmbusMostDegrees || degrees > kPmbusMostDegrees)
            return false;
    }
    return supply.outputMv <= kPmbusMostOutputMv && supply.hasInputFailed <= 1 &&
           supply.hasOutputFailed <= 1;
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

} // namespace vb
