// iodbg capture: the unit in a file.

#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/findings.h"
#include "iodbg/core/host_file.h"
#include "iodbg/unit/capture.h"
#include "iodbg/unit/commands.h"
#include "language/captured_unit_privacy.h"

#include <algorithm>

namespace iodbg {

namespace {

struct CaptureArguments {
    std::string file;
    CaptureWishes wishes;
    bool isAnonymous = false;
    bool isForced = false;
};

int64_t verdicts(const language::CapturedUnit &unit, Severity severity) {
    return std::count_if(unit.findings.begin(), unit.findings.end(),
                         [severity](const language::CapturedFinding &finding) {
                             return finding.verdict == severityKey(severity);
                         });
}

Report reportOf(const language::CapturedUnit &unit, const Destination &destination) {
    const auto failed =
        std::count_if(unit.properties.begin(), unit.properties.end(),
                      [](const language::CapturedReading &reading) { return reading.hasFailed(); });
    Section section = {"", "", {}};
    section.add("output", "Saved in", textCell(destination.name()));
    section.add("properties", "Properties",
                numberCell(static_cast<int64_t>(unit.properties.size())));
    section.add("failed", "Of these failed to be read", numberCell(failed));
    section.add("left_out", "Left out, with a reason",
                numberCell(static_cast<int64_t>(unit.capture.leftOut.size())));
    section.add("faults", "Faults", numberCell(verdicts(unit, Severity::Fault)));
    section.add("warnings", "Warnings", numberCell(verdicts(unit, Severity::Warning)));
    return {{section}, {}};
}

ExitCode capture(Console &console, const CaptureArguments &arguments) {
    requireBoard();
    // It tells what nobody but the unit's owner is to know.
    const Destination destination = {arguments.file, arguments.isForced, true};
    Saving file(console, destination);
    language::CapturedUnit unit = captureUnit(console, arguments.wishes);
    if (arguments.isAnonymous)
        language::makeAnonymous(unit);
    const std::string document = language::writtenCapture(unit);
    file.write({reinterpret_cast<const uint8_t *>(document.data()), document.size()});
    file.finish();
    return console.print(reportOf(unit, destination));
}

} // namespace

void addCaptureCommand(Command &root) {
    const auto arguments = std::make_shared<CaptureArguments>();
    Command &command =
        root.command("capture", "Save everything that can be read of the unit in one file");
    command.argument("FILE", "The document, - is standard output", fileName(arguments->file));
    command.flag("--with-secrets", "Passwords, and the boot settings as they lie in flash",
                 arguments->wishes.hasSecrets);
    command.flag("--with-flash", "The content of the flash partitions", arguments->wishes.hasFlash);
    command.flag("--anonymous", "Other serial numbers and MAC addresses, with right checksums",
                 arguments->isAnonymous);
    command.flag("--force", kForceHelp, arguments->isForced);
    command
        .detail("Nothing on the unit is changed. What cannot be read stands there with its status, "
                "what was left out with the reason.\nThe file is readable by its owner alone.")
        .example("iodbg capture unit.json")
        .example("iodbg capture unit.json --anonymous --force")
        .example("iodbg capture - --with-secrets");
    command.does([arguments](Console &console) { return capture(console, *arguments); });
}

} // namespace iodbg
