#include "iodbg/chassis/health.h"

#include "bsp.h"
#include "iodbg/chassis/calendar.h"
#include "iodbg/chassis/thresholds.h"

namespace iodbg {

Findings clockFindings(const Model &model) {
    const Subject subject = {Unit::Clock};
    if (!model.hasClock)
        return {};
    ChipTime chip;
    if (const int32_t status = readChipTime(chip); status != BSP_OK)
        return {silent(subject, status)};
    if (!chip.isValid())
        return {chip.isLost ? Finding{subject, Code::ClockLostTime, "has lost the time"}
                            : Finding{subject, Code::ClockInvalid, "holds no date and time"}};
    const int64_t drift = secondsBetween(systemTime(), chip.time);
    if (drift > kTolerableDrift || drift < -kTolerableDrift)
        return {
            {subject, Code::ClockDiffers,
             calendarText(chip.time) + ", " + std::to_string(drift) + " s off the system clock"}};
    return {good(subject, calendarText(chip.time))};
}

} // namespace iodbg
