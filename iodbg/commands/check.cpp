// iodbg check: judges the whole unit.

#include "iodbg/commands/commands.h"
#include "iodbg/console.h"
#include "iodbg/failure.h"
#include "iodbg/health.h"

#include <iterator>
#include <utility>

namespace iodbg {

namespace {

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

ExitCode check(Console &console) {
    const Findings findings = examine();
    Section summary = {"", "", {}};
    const int64_t faults = countOf(findings, Severity::Fault);
    summary.add("faults", "Faults", numberCell(faults));
    summary.add("warnings", "Warnings", numberCell(countOf(findings, Severity::Warning)));
    console.print({{findingsTable(findings), summary}, {}});
    return faults == 0 ? ExitCode::Ok : ExitCode::Faulty;
}

} // namespace

void addCheckCommand(const Command &root) {
    root.command("check", "Judge the whole unit: what is wrong and what to do.\nExit code 5 when "
                          "there is a fault; warnings alone are 0")
        .does(check);
}

} // namespace iodbg
