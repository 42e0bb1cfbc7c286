#pragma once
// CPLD registers that identify the board.

#include <cstdint>

namespace bsp {

constexpr uint32_t kDeviceIdRegister = 1; // bits 7-0: device serial version
constexpr uint32_t kVersionRegister = 2;

// Fields of the version register, each four bits wide.
constexpr unsigned kHardwareLetterShift = 12; // 0 is '@', 1 is 'A', ...
constexpr unsigned kHardwareNumberShift = 8;
constexpr unsigned kCpldMajorShift = 4;
constexpr unsigned kCpldMinorShift = 0;

constexpr int versionField(uint16_t versionRegister, unsigned shift) {
    return (versionRegister >> shift) & 0xF;
}

} // namespace bsp
