#pragma once
// What tests of the PoE functions look at on a board, and what they leave in outputs.

#include <cstdint>

inline constexpr char kStatusFile[] = "/tmp/bsp/poeApp";
inline constexpr char kLockFile[] = "/tmp/bspPoeLockFile";
inline constexpr uint32_t kMark = 0xA5A5A5A5; // no answer is this
inline constexpr uint32_t kPort = 6;          // the driver's 5
