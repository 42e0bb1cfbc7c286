#include "iodbg/chassis/clocks.h"

#include "bsp.h"

namespace iodbg {

namespace {

constexpr char kChipKey[] = "chip";
constexpr char kChipLabel[] = "Clock chip (local time)";

std::string driftText(int64_t seconds) {
    if (seconds == 0)
        return "none";
    return std::to_string(seconds < 0 ? -seconds : seconds) +
           (seconds < 0 ? " s behind the system" : " s ahead of the system");
}

} // namespace

void addClocks(Section &section, const ChipTime &chip) {
    const BspCalendar now = systemTime();
    section.add(kChipKey, kChipLabel, textCell(calendarText(chip.time)));
    section.add("valid", "Valid",
                flagCell(chip.isValid(), "yes",
                         "no: the chip was without power; set it with 'iodbg clock set'"));
    section.add("system", "System clock (local time)", textCell(calendarText(now)));
    if (chip.isValid()) {
        const int64_t drift = secondsBetween(now, chip.time);
        section.add("drift_s", "Difference", {driftText(drift), drift});
    }
}

void addClocks(Report &report) {
    Section section = {"clock", "Clock", {}};
    ChipTime chip;
    if (const int32_t status = readChipTime(chip); status == BSP_OK)
        addClocks(section, chip);
    else
        section.add(kChipKey, kChipLabel, report.tried(section.path(kChipKey), status, {}));
    report.parts.emplace_back(section);
}

} // namespace iodbg
