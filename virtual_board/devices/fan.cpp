#include "virtual_board/devices/fan.h"

namespace vb {

uint32_t fanTarget(const Fan &fan, uint32_t level) {
    if (fan.isPresent == 0 || fan.state == FanState::Stuck)
        return 0;
    if (fan.state == FanState::Held)
        return fan.rpm;
    const uint32_t reached = level < kFanTopLevel ? level : kFanTopLevel;
    const uint32_t rpm = kFanLowestRpm + reached * kFanRpmPerLevel;
    return fan.state == FanState::Failing ? rpm / 2 : rpm;
}

void fanStep(Fan &fan, uint32_t level) {
    const uint32_t target = fanTarget(fan, level);
    if (fan.rpm + kFanRpmPerStep < target)
        fan.rpm += kFanRpmPerStep;
    else if (fan.rpm > target + kFanRpmPerStep)
        fan.rpm -= kFanRpmPerStep;
    else
        fan.rpm = target;
}

uint8_t fanCount(const Fan &fan) {
    const uint32_t count = fan.rpm / kFanRpmPerCount;
    return static_cast<uint8_t>(count < UINT8_MAX ? count : UINT8_MAX);
}

} // namespace vb
