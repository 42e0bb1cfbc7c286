#include "virtual_board/devices/rtl8239/image.h"

#include "virtual_board/devices/byte_order.h"

#include <bit>
#include <cstring>

namespace vb {

namespace {

constexpr uint8_t kErased = 0xFF;
constexpr uint16_t kFactoryVersion = 0x1000; // V1.0.0.0

void erase(PoeImage &image) {
    image.size = 0;
    std::memset(image.written, 0, sizeof(image.written));
    std::memset(image.bytes, kErased, sizeof(image.bytes));
}

void markWritten(PoeImage &image, uint32_t unit) {
    const auto bit = static_cast<uint8_t>(1u << unit % 8);
    image.written[unit / 8] = static_cast<uint8_t>(image.written[unit / 8] | bit);
}

uint32_t unitsWritten(const PoeImage &image) {
    uint32_t units = 0;
    for (const uint8_t bits : image.written)
        units += static_cast<uint32_t>(std::popcount(bits));
    return units;
}

} // namespace

void poeProgramImage(PoeImage &image) {
    const uint8_t version[kPoeImageUnit] = {kFactoryVersion >> 8, kFactoryVersion & 0xFF, kErased,
                                            kErased};
    const uint8_t code[kPoeImageUnit] = {0x12, 0x34, 0x56, 0x78};
    poeProgramBlock(image, 0, version, sizeof(version));
    for (uint32_t position = sizeof(version); position < kPoeSmallestImage;
         position += kPoeImageUnit)
        poeProgramBlock(image, position, code, sizeof(code));
    image.isValid = 1;
}

bool poeProgramBlock(PoeImage &image, uint32_t position, const uint8_t *data, uint32_t length) {
    const bool isWholeUnits = position % kPoeImageUnit == 0 && length % kPoeImageUnit == 0;
    if (!isWholeUnits || position > kPoeImageSize || length > kPoeImageSize - position)
        return false;
    image.isValid = 0;
    if (position == 0)
        erase(image);
    std::memcpy(image.bytes + position, data, length);
    for (uint32_t at = position; at < position + length; at += kPoeImageUnit)
        markWritten(image, at / kPoeImageUnit);
    if (position + length > image.size)
        image.size = position + length;
    return true;
}

bool poeIsWhole(const PoeImage &image) {
    return image.size >= kPoeSmallestImage && unitsWritten(image) * kPoeImageUnit == image.size;
}

bool poeIsConsistent(const PoeImage &image) {
    return image.isValid <= 1 && image.size <= kPoeImageSize;
}

uint16_t poeVersion(const PoeImage &image) {
    return loadBe16(image.bytes);
}

} // namespace vb
