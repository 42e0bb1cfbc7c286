// The CRC-32 of records and boot-loader files.

#include "bsp.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

namespace {

uint32_t crcOf(const std::string &text, uint32_t crc = 0) {
    return bsp_crc32_cal(crc, reinterpret_cast<const uint8_t *>(text.data()),
                         static_cast<uint32_t>(text.size()));
}

TEST(Crc32Test, IsTheOneOfIeee8023) {
    EXPECT_EQ(crcOf("123456789"), 0xCBF43926u);
    EXPECT_EQ(crcOf("a"), 0xE8B7BE43u);
    EXPECT_EQ(crcOf("The quick brown fox jumps over the lazy dog"), 0x414FA339u);
    EXPECT_EQ(crcOf(std::string(1, '\0')), 0xD202EF8Du);
    EXPECT_EQ(crcOf(std::string(32, '\0')), 0x190A55ADu);
    EXPECT_EQ(crcOf(std::string(32, '\xFF')), 0xFF6CAB0Bu);
}

TEST(Crc32Test, KnowsEveryByteValue) {
    std::vector<uint8_t> bytes(256);
    std::iota(bytes.begin(), bytes.end(), uint8_t{0});
    EXPECT_EQ(bsp_crc32_cal(0, bytes.data(), 256), 0x29058C73u);
}

TEST(Crc32Test, GoesOnWhereItStopped) {
    const std::string text = "The quick brown fox jumps over the lazy dog";
    for (size_t split = 0; split <= text.size(); ++split)
        EXPECT_EQ(crcOf(text.substr(split), crcOf(text.substr(0, split))), 0x414FA339u) << split;
}

TEST(Crc32Test, NoBytesKeepTheRunningValue) {
    EXPECT_EQ(crcOf("", 0), 0u);
    EXPECT_EQ(crcOf("", 0x12345678), 0x12345678u);
}

TEST(Crc32Test, ANullBufferAnswersZero) {
    EXPECT_EQ(bsp_crc32_cal(0, nullptr, 9), 0u);
    EXPECT_EQ(bsp_crc32_cal(0x12345678, nullptr, 9), 0u);
    EXPECT_EQ(bsp_crc32_cal(0x12345678, nullptr, 0), 0u);
}

} // namespace
