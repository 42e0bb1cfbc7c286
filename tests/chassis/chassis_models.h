#pragma once
// What models have in common in their chassis, and what tests leave in outputs.

#include "tests/support/device_ids.h"

#include <cstdint>

inline const DeviceIds kFourFan = idsWith(Chassis::FourFan);
inline const DeviceIds kTwoFan = idsWith(Chassis::TwoFan);
inline constexpr int32_t kMark = 0x5A5A5A5A; // no answer is this
