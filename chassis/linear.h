#pragma once
// Number formats of PMBus readings.

#include <algorithm>
#include <cstdint>

namespace bsp {

/** Thousandths of mantissa x 2^exponent, truncated toward zero and kept within 32 bits. The
 * exponent has five bits with sign, so that everything fits into 64 bits and needs no floating
 * point.
 */
constexpr int32_t scaledToThousandths(int32_t mantissa, int exponent) {
    const int64_t thousandths = int64_t{mantissa} * 1000;
    const int64_t value = exponent < 0 ? thousandths / (int64_t{1} << -exponent)
                                       : thousandths * (int64_t{1} << exponent);
    return static_cast<int32_t>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
}

/** The low bits of a word as a two's-complement number. */
constexpr int32_t signedField(uint32_t word, unsigned bits) {
    const auto sign = int32_t{1} << (bits - 1);
    const auto field = static_cast<int32_t>(word & ((1u << bits) - 1));
    return (field ^ sign) - sign;
}

/** LINEAR11: exponent in bits 15-11, mantissa in bits 10-0, both signed; in thousandths. */
constexpr int32_t linear11ToThousandths(uint16_t word) {
    return scaledToThousandths(signedField(word, 11), signedField(word >> 11u, 5));
}

/** LINEAR16: unsigned mantissa, exponent from the supply's VOUT_MODE; in thousandths. */
constexpr int32_t linear16ToThousandths(uint16_t word, int exponent) {
    return scaledToThousandths(word, exponent);
}

} // namespace bsp
