// iodbg clock: the battery-backed clock chip and the system's clock.

#include "bsp.h"
#include "iodbg/chassis/calendar.h"
#include "iodbg/chassis/clocks.h"
#include "iodbg/chassis/commands.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/model.h"
#include "language/times.h"

namespace iodbg {

namespace {

// What a program can be expected to take between two looks at a clock, in seconds.
constexpr int64_t kTolerance = 2;

ChipTime readChip() {
    Model model;
    require(readModel(model), "read the device id");
    if (!model.hasClock)
        throw Failure::board("use the clock chip", BSP_E_NOT_SUPPORTED, "this model has none");
    ChipTime chip;
    require(readChipTime(chip), "read the clock chip");
    return chip;
}

ExitCode showBoth(Console &console) {
    const ChipTime chip = readChip();
    Section section = {"", "", {}};
    addClocks(section, chip);
    return console.print({{section}, {}});
}

/** "now", or "2026-11-21T12:34:56", which may have a blank in the middle. */
BspCalendar parseTime(const std::string &word) {
    if (word == "now")
        return systemTime();
    constexpr uint32_t kFirstYear = BSP_CALENDAR_FIRST_YEAR;
    const language::CalendarTime time = language::parseCalendarTime(
        word, kFirstYear, kFirstYear + BSP_CLOCK_YEAR_MAX, "'now', or ");
    return {time.second, time.minute, time.hour, time.day, time.month - 1, time.year - kFirstYear};
}

ExitCode setClock(Console &console, const BspCalendar &wanted) {
    const BspCalendar before = readChip().time;
    require(ioRealtimeSet(&wanted), "set the clock chip");
    const ChipTime chip = readChip();
    const BspCalendar &after = chip.time;
    const int64_t passed = secondsBetween(wanted, after);
    if (!chip.isValid() || passed < 0 || passed > kTolerance)
        throw Failure(ExitCode::ReadBack, "the clock chip was set to " + calendarText(wanted) +
                                              " and reads " + calendarText(after) +
                                              "; look at it again with 'iodbg clock get'");
    Section section = {"", "", {}};
    section.add("before", "Before", textCell(calendarText(before)));
    section.add("after", "Now", textCell(calendarText(after)));
    return console.print({{section}, {}});
}

ExitCode sync(Console &console) {
    const ChipTime chip = readChip();
    const BspCalendar &time = chip.time;
    if (!chip.isValid())
        throw Failure(ExitCode::Board, "the clock chip holds no date and time, " +
                                           calendarText(time) +
                                           "; set it with 'iodbg clock set' first");
    require(bspSysClockSync(), "set the system clock from the clock chip");
    // The library does not tell whether the system took it.
    const BspCalendar now = systemTime();
    const int64_t difference = secondsBetween(time, now);
    if (difference < -kTolerance || difference > kTolerance)
        throw Failure(ExitCode::ReadBack, "the system clock is " + calendarText(now) + " and not " +
                                              calendarText(time) + "; setting it takes root");
    Section section = {"", "", {}};
    section.add("system", "System clock (local time)", textCell(calendarText(now)));
    section.add("verified", "Verified", flagCell(true, "read back", ""));
    return console.print({{section}, {}});
}

void defineClock(Command &clock) {
    takesCapturedUnit(clock.command("get", "Show both"))
        .detail("These are the clock chip, the system's clock and their difference.")
        .example("iodbg clock get")
        .does(showBoth);
    const auto time = std::make_shared<BspCalendar>();
    Command &setCommand = clock.command("set", "Set the clock chip and read it back");
    setCommand.argument(
        "TIME", "'now' (the system clock), or local time like 2026-11-21T12:34:56",
        offering("now", [time](const std::string &word) { *time = parseTime(word); }));
    setCommand.example("iodbg clock set now").example("iodbg clock set 2026-11-21T12:34:56");
    setCommand.does([time](Console &console) { return setClock(console, *time); });
    clock.command("sync", "Set the system clock from the chip")
        .detail("That takes root.")
        .example("iodbg clock sync")
        .does(sync);
}

} // namespace

void addClockCommands(Command &root) {
    root.group("clock", "The clock chip and the system's clock", defineClock)
        .onlyAfter(requireKernelModule);
}

} // namespace iodbg
