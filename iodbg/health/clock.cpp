#include "iodbg/health.h"

#include "bsp.h"
#include "iodbg/calendar.h"

namespace iodbg {

namespace {

constexpr int64_t kTolerableDrift = 60; // seconds between chip and system

} // namespace

Findings clockFindings(const Model &model) {
    if (!model.hasClock)
        return {};
    ChipTime chip;
    if (const int32_t status = readChipTime(chip); status != BSP_OK)
        return {unreadable("clock", status)};
    if (!chip.isValid())
        return {{"clock", Severity::Fault,
                 chip.isLost ? "has lost the time" : "holds no date and time",
                 "set it with 'iodbg clock set'; if it comes again, replace the battery"}};
    const int64_t drift = secondsBetween(systemTime(), chip.time);
    if (drift > kTolerableDrift || drift < -kTolerableDrift)
        return {{"clock", Severity::Warning,
                 calendarText(chip.time) + ", " + std::to_string(drift) + " s off the system clock",
                 "set the wrong one: 'iodbg clock set now' or 'iodbg clock sync'"}};
    return {good("clock", calendarText(chip.time))};
}

} // namespace iodbg
