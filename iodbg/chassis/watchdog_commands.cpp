// iodbg watchdog: the hardware watchdog.

#include "bsp.h"
#include "iodbg/chassis/commands.h"
#include "iodbg/chassis/watchdog.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/interrupt.h"
#include "support/board_map.h"

#include <cstdio>
#include <optional>
#include <unistd.h>

namespace iodbg {

namespace {

constexpr uint32_t kMaxInterval = 3600;

uint32_t readPeriod() {
    uint32_t period = 0;
    require(ioWatchdogPeriodGet(&period), "read the watchdog's period");
    return period;
}

ExitCode printPeriod(Console &console, uint32_t period) {
    Section section = {"", "", {}};
    addPeriod(section, period);
    return console.print({{section}, {}});
}

/** Reads back what a write of the period has left. */
ExitCode verify(Console &console, uint32_t wanted) {
    const uint32_t period = readPeriod();
    if (period != wanted)
        throw Failure(ExitCode::ReadBack, "the watchdog's period " + std::to_string(wanted) +
                                              " was written, and it reads " +
                                              std::to_string(period) +
                                              "; check with 'iodbg cpld get " +
                                              std::to_string(bsp::kWatchdogPeriod.reg) + "'");
    return printPeriod(console, period);
}

ExitCode setPeriod(Console &console, uint32_t period) {
    require(ioWatchdogPeriodSet(period), "set the watchdog's period");
    return verify(console, period);
}

ExitCode stop(Console &console) {
    require(ioWatchdogStop(), "stop the watchdog");
    return verify(console, BSP_WATCHDOG_OFF);
}

struct Feeding {
    std::optional<uint32_t> interval; // seconds
    std::optional<uint32_t> count;    // without it and with an interval: for ever
};

std::string lineName() {
    return "the watchdog's line, GPIO " + std::to_string(bsp::kWatchdogGpio);
}

uint32_t readLine() {
    uint32_t level = 0;
    require(bspGpioGetValue(bsp::kWatchdogGpio, &level), "read " + lineName());
    return level;
}

/** One edge on the line. The library tells of no failure, so the line is looked at. */
void feedOnce() {
    const Uninterrupted whole;
    const uint32_t before = readLine();
    require(ioWatchdogFeed(), "feed the watchdog");
    if (readLine() == before)
        throw Failure(ExitCode::ReadBack, lineName() + ", stayed at " + std::to_string(before) +
                                              "; check what else drives it");
}

ExitCode feed(Console &console, const Feeding &feeding) {
    if (feeding.count && !feeding.interval)
        throw Failure::usage("--count needs --every, the seconds between the feeds");
    if (feeding.interval && !feeding.count)
        std::fprintf(stderr, "iodbg: feeding every %u s until this program is stopped\n",
                     *feeding.interval);
    const bool isEndless = feeding.interval && !feeding.count;
    const uint32_t count = feeding.count.value_or(1);
    if (isEndless)
        endOnInterrupt(console.terminalSize().has_value());
    feedOnce();
    for (uint32_t done = 1; isEndless || done < count; ++done) {
        sleep(*feeding.interval);
        feedOnce();
    }
    Section section = {"", "", {}};
    section.add("feeds", "Feeds", numberCell(count));
    return console.print({{section}, {}});
}

Parser optionalNumber(std::optional<uint32_t> &target, uint32_t highest) {
    return [&target, highest](const std::string &word) {
        numberFromOne(target.emplace(), highest)(word);
    };
}

void defineWatchdog(Command &watchdog) {
    takesCapturedUnit(watchdog.command("get", "Read the period"))
        .example("iodbg watchdog get")
        .does([](Console &console) { return printPeriod(console, readPeriod()); });

    const auto period = std::make_shared<uint32_t>(0);
    Command &setCommand = watchdog.command(
        "set", "Set the period and read it back.\nA period other than 0 arms the watchdog: "
               "unless something feeds it from then on, it resets the board");
    setCommand.argument("PERIOD", "0-63, in the CPLD's units; 0 stops it",
                        number(*period, BSP_WATCHDOG_PERIOD_MAX));
    setCommand.example("iodbg watchdog set 10");
    setCommand.does([period](Console &console) { return setPeriod(console, *period); });

    const auto feeding = std::make_shared<Feeding>();
    Command &feedCommand = watchdog.command("feed", "Feed it, once or again and again");
    feedCommand.option("--every", "SECONDS", "Go on feeding in this interval, 1-3600",
                       optionalNumber(feeding->interval, kMaxInterval));
    feedCommand.option("--count", "N", "How often with --every (default: until stopped)",
                       optionalNumber(feeding->count, UINT32_MAX));
    feedCommand.detail("Ends with Ctrl-C, exit code 0.");
    feedCommand.example("iodbg watchdog feed").example("iodbg watchdog feed --every 5");
    feedCommand.does([feeding](Console &console) { return feed(console, *feeding); });

    watchdog.command("stop", "Stop it: period 0").example("iodbg watchdog stop").does(stop);
}

} // namespace

void addWatchdogCommands(Command &root) {
    root.group("watchdog", "The hardware watchdog", defineWatchdog).onlyAfter(requireKernelModule);
}

} // namespace iodbg
