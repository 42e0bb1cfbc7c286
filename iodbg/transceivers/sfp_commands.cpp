// iodbg sfp: cages and the modules in them.

#include "bsp.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"
#include "iodbg/core/model.h"
#include "iodbg/transceivers/cage.h"
#include "iodbg/transceivers/cage_table.h"
#include "iodbg/transceivers/commands.h"
#include "iodbg/transceivers/identification.h"
#include "iodbg/transceivers/module_report.h"

#include <algorithm>

namespace iodbg {

namespace {

constexpr uint32_t kPhyRegisters = 32;

std::vector<uint32_t> readCages() {
    Model model;
    require(readModel(model), "read the device id");
    return model.cages;
}

/** The library does not check the ports of its lines, so iodbg does. */
void requireCage(uint32_t port) {
    const std::vector<uint32_t> cages = readCages();
    if (std::find(cages.begin(), cages.end(), port) != cages.end())
        return;
    throw Failure::refused("use " + portName(port), BSP_E_INVALID,
                           "the SFP cages of this board are " + portsCell(cages).text);
}

// sfp list

ExitCode list(Console &console) {
    const std::vector<uint32_t> cages = readCages();
    Report report;
    report.parts.emplace_back(cageTable(report, cages));
    return console.print(report);
}

// sfp show

ExitCode show(Console &console, uint32_t port) {
    requireCage(port);
    Report report;
    Section section = {"", "", {}};
    section.add("port", "Port", numberCell(port));
    CageLines lines;
    addCageLines(report, section, port, lines);
    Bytes page;
    const int32_t status =
        lines.isPresent == 0 ? int32_t{BSP_OK}
                             : readSfpPage(port, BSP_SFP_IDENTIFICATION, kIdentificationSize, page);
    if (status != BSP_OK) {
        section.add("kind", "Kind", report.tried("identification", status, {}));
    } else if (lines.isPresent != 0) {
        const Identification module = identificationOf(page);
        addIdentification(section, module);
        addCopper(report, section, port);
        addDiagnostics(report, section, port, module);
    }
    report.parts.insert(report.parts.begin(), section);
    return console.print(report);
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
    command.example("iodbg sfp " + name + " " + examplePort);
    command.does([port, run](Console &console) { return run(console, *port); });
}

void defineSfp(Command &sfp) {
    sfp.command("list", "Show all cages: lines, and what is plugged")
        .example("iodbg sfp list")
        .example("iodbg sfp list --json")
        .does(list);
    addOfPort(sfp, "show", "Show a module: identification, diagnostics with limits, checksums",
              "49", show);
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
