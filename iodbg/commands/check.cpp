// iodbg check: judges the whole unit.

#include "iodbg/commands/commands.h"
#include "iodbg/console.h"
#include "iodbg/failure.h"
#include "iodbg/health.h"

#include <algorithm>
#include <iterator>

namespace iodbg {

namespace {

const char *severityText(Severity severity) {
    switch (severity) {
    case Severity::Good:
        return "good";
    case Severity::Warning:
        return "warning";
    case Severity::Fault:
        return "FAULT";
    }
    return "?";
}

const char *severityKey(Severity severity) {
    return severity == Severity::Fault ? "fault" : severityText(severity);
}

Findings examine() {
    Model model;
    require(readModel(model), "read the device id");
    Findings all;
    for (Findings &part : std::vector<Findings>{
             identityFindings(), temperatureFindings(), fanFindings(model), supplyFindings(model),
             poeFindings(model), clockFindings(model), flashFindings(), transceiverFindings(model)})
        std::move(part.begin(), part.end(), std::back_inserter(all));
    return all;
}

int64_t countOf(const Findings &findings, Severity severity) {
    return std::count_if(findings.begin(), findings.end(), [severity](const Finding &finding) {
        return finding.severity == severity;
    });
}

ExitCode check(Console &console) {
    const Findings findings = examine();
    Table table = {
        "findings",
        {{"subject", "SUBJECT"}, {"verdict", "VERDICT"}, {"found", "FOUND"}, {"advice", "TO DO"}},
        {}};
    for (const Finding &finding : findings)
        table.rows.push_back(
            {textCell(finding.subject),
             {severityText(finding.severity), std::string(severityKey(finding.severity))},
             textCell(finding.text),
             finding.advice.empty() ? Cell{"", nullptr} : textCell(finding.advice)});
    Section summary = {"", "", {}};
    const int64_t faults = countOf(findings, Severity::Fault);
    summary.add("faults", "Faults", numberCell(faults));
    summary.add("warnings", "Warnings", numberCell(countOf(findings, Severity::Warning)));
    console.print({{table, summary}, {}});
    return faults == 0 ? ExitCode::Ok : ExitCode::Faulty;
}

} // namespace

void addCheckCommand(const Command &root) {
    root.command("check", "Judge the whole unit: what is wrong and what to do.\nExit code 5 when "
                          "there is a fault; warnings alone are 0")
        .does(check);
}

} // namespace iodbg
