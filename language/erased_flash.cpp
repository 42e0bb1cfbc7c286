#include "language/erased_flash.h"

#include "language/formats/crc32.h"

#include <cstring>

namespace language {

namespace {

constexpr uint8_t kErased = 0xFF;

// Polynomials over two elements, modulo that of the CRC; the highest bit is the coefficient of 1.
constexpr uint32_t kOne = 0x80000000;
constexpr uint32_t kEighthPower = kOne >> 8;

uint32_t product(uint32_t left, uint32_t right) {
    uint32_t sum = 0;
    for (; left != 0; left <<= 1) {
        if ((left & kOne) != 0)
            sum ^= right;
        right = formats::crcTimesX(right);
    }
    return sum;
}

/** What bytes that follow do to a CRC: its product with a power, and their own CRC added. */
struct Run {
    uint32_t power = kOne;
    uint32_t crc = 0;

    uint32_t behind(uint32_t before) const { return product(power, before) ^ crc; }
    Run then(const Run &next) const { return {product(power, next.power), next.behind(crc)}; }
};

Run erasedRun(size_t length) {
    Run run, doubled = {kEighthPower, formats::crc32(0, &kErased, 1)};
    for (; length != 0; length >>= 1) {
        if ((length & 1) != 0)
            run = run.then(doubled);
        doubled = doubled.then(doubled);
    }
    return run;
}

} // namespace

bool isErased(ByteView bytes) {
    return bytes.empty() || (bytes[0] == kErased &&
                             std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0);
}

uint32_t flashCrc32(uint32_t before, ByteView bytes) {
    if (isErased(bytes))
        return erasedRun(bytes.size()).behind(before);
    return formats::crc32(before, bytes.data(), static_cast<uint32_t>(bytes.size()));
}

} // namespace language
