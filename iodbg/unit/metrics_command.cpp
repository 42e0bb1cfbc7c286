// iodbg metrics: all readings for monitoring systems.

#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/host_file.h"
#include "iodbg/unit/commands.h"
#include "iodbg/unit/metrics_readings.h"
#include "iodbg/unit/metrics_text.h"

#include <memory>
#include <string>
#include <string_view>

namespace iodbg {

namespace {

struct MetricsArguments {
    std::string file = "-";
    bool isForced = false;
};

/** What collectors look for: such a file is there to be replaced again and again. */
bool isForCollector(const std::string &path) {
    return std::string_view(path).ends_with(".prom");
}

ExitCode metrics(Console &console, const MetricsArguments &arguments) {
    requireBoard();
    const Destination destination = {
        arguments.file, arguments.isForced || isForCollector(arguments.file), false, true};
    Saving saving(console, destination);
    const Report readings = takeReadings();
    const std::string text = metricsText(readings);
    saving.write({reinterpret_cast<const uint8_t *>(text.data()), text.size()});
    saving.finish();
    if (destination.isStandardOutput() && readings.failures.empty())
        return ExitCode::Ok;
    Section section = {"", "", {}};
    section.add("output", "Saved in", textCell(destination.name()));
    section.add("samples", "Samples", numberCell(static_cast<int64_t>(countOfSamples(text))));
    return console.print({{section}, readings.failures});
}

} // namespace

void addMetricsCommand(Command &root) {
    const auto arguments = std::make_shared<MetricsArguments>();
    Command &command = root.command(
        "metrics", "Read everything for monitoring systems: readings, findings, "
                   "failures, as text in OpenMetrics' form.\n"
                   "docs/metrics.md lists all metrics; share/bsp has rules for alerts");
    command.optionalArgument("FILE", "The file, - is standard output (default: -)",
                             fileName(arguments->file));
    command.flag("--force", kForceHelp, arguments->isForced);
    command.detail("The file appears whole, readable by all (0644). One that ends in '.prom', "
                   "as the node exporter's textfile collector wants it, is replaced without "
                   "--force.\n"
                   "What cannot be read is left out and counted, exit code 1; the file is whole "
                   "nevertheless.\n"
                   "The PoE controller takes 200 ms for each answer: with 48 ports this is a "
                   "matter of a minute.");
    command.example("iodbg metrics").example("iodbg metrics switch.prom");
    takesCapturedUnit(command);
    command.does([arguments](Console &console) { return metrics(console, *arguments); });
}

} // namespace iodbg
