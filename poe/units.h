#pragma once
// Units of the drivers and those of the service layer's callers.

#include <cstdint>

namespace bsp {

/** Drivers tell millivolts; the quotient is that of signed numbers, truncated toward zero. */
constexpr uint32_t wholeVolts(uint32_t millivolts) {
    return static_cast<uint32_t>(static_cast<int32_t>(millivolts) / 1000);
}

} // namespace bsp
