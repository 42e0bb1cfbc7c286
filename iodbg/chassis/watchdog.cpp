#include "iodbg/chassis/watchdog.h"

#include "bsp.h"

namespace iodbg {

void addPeriod(Section &section, uint32_t period) {
    section.add("period", "Period", numberCell(period));
    section.add("armed", "Armed",
                flagCell(period != BSP_WATCHDOG_OFF, "yes: something must feed it", "no"));
}

void addWatchdog(Report &report) {
    Section section = {"watchdog", "Watchdog", {}};
    uint32_t period = 0;
    if (const int32_t status = ioWatchdogPeriodGet(&period); status == BSP_OK)
        addPeriod(section, period);
    else
        section.add("period", "Period", report.tried(section.path("period"), status, {}));
    report.parts.emplace_back(section);
}

} // namespace iodbg
