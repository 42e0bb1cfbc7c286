// Flash that is mostly erased.

#include "language/erased_flash.h"
#include "language/formats/crc32.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using language::flashCrc32;
using language::isErased;

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kBefore[] = {0, 1, 0xCBF43926, 0xFFFFFFFF};

uint32_t plainCrc32(uint32_t before, const Bytes &bytes) {
    return formats::crc32(before, bytes.data(), static_cast<uint32_t>(bytes.size()));
}

TEST(ErasedFlashTest, IsErasedToItsLastBit) {
    EXPECT_TRUE(isErased(Bytes()));
    for (size_t length = 1; length < 70; ++length) {
        Bytes bytes(length, 0xFF);
        EXPECT_TRUE(isErased(bytes)) << length;
        for (size_t bit = 0; bit < 8 * length; ++bit) {
            bytes[bit / 8] ^= static_cast<uint8_t>(1U << bit % 8);
            EXPECT_FALSE(isErased(bytes)) << length << " " << bit;
            bytes[bit / 8] = 0xFF;
        }
    }
    EXPECT_FALSE(isErased(Bytes(64, 0)));
}

TEST(ErasedFlashTest, HasTheChecksumOfItsBytes) {
    for (size_t length = 0; length < 300; ++length) {
        for (const uint32_t before : kBefore)
            EXPECT_EQ(flashCrc32(before, Bytes(length, 0xFF)),
                      plainCrc32(before, Bytes(length, 0xFF)))
                << length << " " << before;
    }
    const Bytes block(131072, 0xFF), odd(1000003, 0xFF);
    EXPECT_EQ(flashCrc32(0x12345678, block), plainCrc32(0x12345678, block));
    EXPECT_EQ(flashCrc32(0x12345678, odd), plainCrc32(0x12345678, odd));
}

TEST(ErasedFlashTest, WhatIsProgrammedCounts) {
    Bytes bytes(4096, 0xFF);
    for (const size_t place : {0U, 1U, 2047U, 4095U}) {
        bytes[place] = 0x5A;
        for (const uint32_t before : kBefore)
            EXPECT_EQ(flashCrc32(before, bytes), plainCrc32(before, bytes)) << place;
        bytes[place] = 0xFF;
    }
}

} // namespace
