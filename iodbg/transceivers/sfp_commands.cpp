// iodbg sfp: cages and the modules in them.

#include "bsp.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"
#include "iodbg/core/model.h"
#include "iodbg/transceivers/cage.h"
#include "iodbg/transceivers/cage_table.h"
#include "iodbg/transceivers/commands.h"
#include "iodbg/transceivers/module.h"
#include "iodbg/transceivers/module_report.h"

#include <algorithm>
#include <optional>

namespace iodbg {

namespace {

constexpr uint32_t kPhyRegisters = 32;

Model readKnownModel() {
    Model model;
    require(readModel(model), "read the device id");
    return model;
}

/** The library does not check the ports of its lines, so iodbg does. */
void requireCage(uint32_t port) {
    const std::vector<uint32_t> cages = readKnownModel().cages;
    if (std::find(cages.begin(), cages.end(), port) != cages.end())
        return;
    throw Failure::refused("use " + portName(port), BSP_E_INVALID,
                           "the SFP cages of this board are " + portsCell(cages).text);
}

// sfp list

ExitCode list(Console &console) {
    const Model model = readKnownModel();
    Report report;
    const Table cages = cageTable(report, model, model.cages);
    report.parts.emplace_back(cages);
    const Report failures = {{}, report.failures};
    return console.print(report, cagesText(cages) + failures.toText());
}

// sfp show

/** Adds all that is known of a cage and the module in it; what it measures, where it does. */
std::optional<Table> addCage(Report &report, Section &section, uint32_t port) {
    section.add("port", "Port", numberCell(port));
    CageLines lines;
    addCageLines(report, section, port, lines);
    if (lines.isPresent == 0)
        return {};
    const Module module = readModule(port);
    if (module.status != BSP_OK) {
        section.add("kind", "Kind",
                    report.tried(section.path("identification"), module.status, {}));
        return {};
    }
    addIdentification(section, module.identification);
    addCopper(report, section, port);
    addDiagnostics(report, section, module);
    if (!module.diagnostics)
        return {};
    return measurementsTable(*module.diagnostics);
}

ExitCode show(Console &console, uint32_t port) {
    requireCage(port);
    Report report;
    Section section = {"", "", {}};
    const std::optional<Table> measured = addCage(report, section, port);
    report.parts.emplace_back(section);
    if (measured)
        report.parts.emplace_back(*measured);
    return console.print(report);
}

/** Programs get what all modules measure in one table, people each module's below it. */
ExitCode showAll(Console &console) {
    const Model model = readKnownModel();
    CageSummary summary;
    require(readCages(model, summary), "read the lines of the SFP cages");
    Report report;
    Table all = measurementsTable({});
    all.columns.insert(all.columns.begin(), {"port", "PORT"});
    all.rows.clear();
    std::string text;
    for (const uint32_t port : summary.plugged) {
        Section section = {"port" + std::to_string(port), "Port " + std::to_string(port), {}};
        Report shown;
        const std::optional<Table> measured = addCage(report, section, port);
        shown.parts.emplace_back(section);
        report.parts.emplace_back(section);
        if (measured) {
            shown.parts.emplace_back(*measured);
            for (std::vector<Cell> row : measured->rows) {
                row.insert(row.begin(), numberCell(port));
                all.rows.push_back(row);
            }
        }
        text += shown.toText() + "\n";
    }
    report.parts.insert(report.parts.begin(),
                        Section{"", "", {{"plugged", "Modules in", portsCell(summary.plugged)}}});
    report.parts.emplace_back(all);
    const Report failures = {{}, report.failures};
    return console.print(report, "Modules in  " + portsCell(summary.plugged).text + "\n" +
                                     (text.empty() ? "" : "\n" + text) + failures.toText());
}

// sfp dump

ExitCode dump(Console &console, uint32_t port) {
    requireCage(port);
    Report report;
    std::string text;
    Section section = {"", "", {}};
    for (const auto &[page, key, title] :
         {std::tuple{BSP_SFP_IDENTIFICATION, "a0h", "Identification page, A0h"},
          std::tuple{BSP_SFP_DIAGNOSTICS, "a2h", "Diagnostics page, A2h"}}) {
        Bytes bytes;
        const int32_t status = readSfpPage(port, page, BSP_SFP_MEMORY_SIZE, bytes);
        const Cell cell = report.tried(key, status, {hexBytes(bytes), hexBytes(bytes)});
        section.add(key, title, cell);
        text += std::string(title) + ":" +
                (status == BSP_OK ? "\n" + hexDump(0, bytes) : " " + cell.text + "\n");
    }
    report.parts.emplace_back(section);
    return console.print(report, text);
}

// sfp phy

ExitCode phy(Console &console, uint32_t port) {
    requireCage(port);
    Report report;
    Table table = {"registers", {{"register", "REGISTER"}, {"value", "VALUE"}}, {}};
    for (uint32_t reg = 0; reg < kPhyRegisters; ++reg) {
        uint16_t value = 0;
        require(ioLaserPhyGet(port, reg, &value), "read PHY register " + std::to_string(reg) +
                                                      " of the module in " + portName(port) +
                                                      ", which may be no copper module");
        table.rows.push_back({numberCell(reg), hexCell(value, 4)});
    }
    report.parts.emplace_back(table);
    return console.print(report);
}

// sfp tx

ExitCode switchTransmitter(Console &console, uint32_t port, uint32_t wanted) {
    requireCage(port);
    require(ioLaserControlSet(port, wanted), "switch the transmitter of " + portName(port));
    uint32_t state = 0;
    require(ioLaserControlGet(port, &state), "read the transmitter's line back");
    if (state != wanted)
        throw Failure(ExitCode::ReadBack,
                      "the transmitter-disable line of " + portName(port) +
                          " was written and did not change; check what else writes its register");
    Section section = {"", "", {}};
    section.add("port", "Port", numberCell(port));
    section.add("transmitter_on", "Transmitter", flagCell(state == BSP_LASER_ON, "on", "off"));
    return console.print({{section}, {}});
}

using OfPort = ExitCode (*)(Console &, uint32_t port);

void addOfPort(Command &sfp, const std::string &name, const std::string &help,
               const std::string &examplePort, OfPort run) {
    const auto port = std::make_shared<uint32_t>(0);
    Command &command = sfp.command(name, help);
    command.argument("PORT", "Front-panel port of the cage", numberFromOne(*port));
    takesCapturedUnit(command);
    command.example("iodbg sfp " + name + " " + examplePort);
    command.does([port, run](Console &console) { return run(console, *port); });
}

void addShow(Command &sfp) {
    const auto port = std::make_shared<std::optional<uint32_t>>(); // none: all
    Command &command =
        sfp.command("show", "Show a module, or all: identification, diagnostics with limits, "
                            "checksums");
    command.argument("PORT", "Front-panel port of the cage, or all",
                     offering("all", [port](const std::string &word) {
                         port->reset();
                         if (word != "all")
                             numberFromOne(port->emplace())(word);
                     }));
    command.example("iodbg sfp show 49").example("iodbg sfp show all --json");
    takesCapturedUnit(command);
    command.does(
        [port](Console &console) { return *port ? show(console, **port) : showAll(console); });
}

void defineSfp(Command &sfp) {
    takesCapturedUnit(
        sfp.command("list",
                    "Show all cages: lines, what is plugged, its light, temperature and verdict"))
        .example("iodbg sfp list")
        .example("iodbg sfp list --json")
        .does(list);
    addShow(sfp);
    addOfPort(sfp, "dump", "Show a module's pages byte for byte", "49", dump);
    addOfPort(sfp, "phy", "Show the PHY registers of a copper module", "50", phy);

    const auto port = std::make_shared<uint32_t>(0);
    const auto state = std::make_shared<uint32_t>(0);
    Command &tx = sfp.command("tx", "Switch a transmitter, and read its line back");
    tx.argument("PORT", "Front-panel port of the cage", numberFromOne(*port));
    tx.argument("STATE", "on|off", oneOf(*state, {{"on", BSP_LASER_ON}, {"off", BSP_LASER_OFF}}));
    tx.example("iodbg sfp tx 49 off");
    tx.does([port, state](Console &console) { return switchTransmitter(console, *port, *state); });
}

} // namespace

void addSfpCommands(Command &root) {
    root.group("sfp", "SFP cages and modules", defineSfp).onlyAfter(requireKernelModule);
}

} // namespace iodbg
