#pragma once
// PMBus access to the power supplies.

#include <cstdint>

namespace bsp::pmbus {

constexpr uint8_t kReadVin = 0x88;
constexpr uint8_t kReadIin = 0x89;
constexpr uint8_t kReadVout = 0x8B;
constexpr uint8_t kReadIout = 0x8C;
constexpr uint8_t kReadTemperature1 = 0x8D;
constexpr uint8_t kReadTemperature2 = 0x8E;
constexpr uint8_t kReadTemperature3 = 0x8F;
constexpr uint8_t kReadPout = 0x96;
constexpr uint8_t kReadPin = 0x97;

} // namespace bsp::pmbus

extern "C" {
/**
 * Reads one PMBus command of supply 1 or 2: length bytes, up to 32. From 3 bytes on the reply is a
 * block, whose first byte counts the length - 1 bytes that are stored.
 */
int32_t bsp_power_info_read(int32_t index, uint32_t command, int32_t length, uint8_t *buffer);
}
