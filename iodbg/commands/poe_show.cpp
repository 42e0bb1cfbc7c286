// iodbg poe status, port: what the controller and its ports say.

#include "bsp.h"
#include "iodbg/commands/poe_parts.h"
#include "iodbg/console.h"
#include "iodbg/failure.h"
#include "iodbg/poe_board.h"
#include "iodbg/poe_controller.h"
#include "iodbg/poe_port.h"
#include "iodbg/progress.h"

namespace iodbg {

namespace {

constexpr uint32_t kPortMs = 1600; // eight exchanges

/** Ends the command when the controller does not answer at all, rather than fail on each port. */
void requireAnswer() {
    uint32_t drawn = 0;
    require(ioPoeGlobalPowerGet(&drawn), "ask the PoE controller");
}

Table portsTable() {
    Table table = {"ports", {{"port", "PORT"}}, {}};
    for (const PoePortItem &item : poePortItems())
        table.columns.push_back({item.key, item.label});
    return table;
}

void addPorts(Report &report, Console &console, const std::vector<uint32_t> &ports) {
    std::vector<WorkStep> steps;
    steps.reserve(ports.size());
    for (const uint32_t port : ports)
        steps.push_back({"port " + std::to_string(port), kPortMs});
    Progress progress(console, "poe status", steps, Progress::Only::OnTerminals);
    Table table = portsTable();
    for (size_t i = 0; i < ports.size(); ++i) {
        progress.reach(i, 0);
        table.rows.push_back(readPoePort(report, ports[i]));
        table.rows.back().insert(table.rows.back().begin(), numberCell(ports[i]));
    }
    report.parts.emplace_back(table);
}

ExitCode showStatus(Console &console, const PortList &list) {
    const std::vector<uint32_t> ports = list.within(requirePoe());
    requireAnswer();
    Report report;
    addPoeController(report);
    addPorts(report, console, ports);
    return console.print(report);
}

ExitCode showPort(Console &console, uint32_t port) {
    requirePort(port, requirePoe());
    requireAnswer();
    Report report;
    Section section = {"", "", {}};
    section.add("port", "Port", numberCell(port));
    const std::vector<Cell> cells = readPoePort(report, port);
    for (size_t i = 0; i < cells.size(); ++i)
        section.add(poePortItems()[i].key, poePortItems()[i].longLabel, cells[i]);
    report.parts.emplace_back(section);
    return console.print(report);
}

ExitCode showController(Console &console) {
    requirePoe();
    requireAnswer();
    Report report;
    addPoeController(report);
    return console.print(report);
}

} // namespace

void addPoeShowCommands(const Command &poe) {
    const auto ports = std::make_shared<PortList>("all");
    const Command status = poe.command("status", "Show the controller and all ports (takes more "
                                                 "than a second for each port)");
    status.optionalArgument("PORTS", std::string(kPortListHelp) + " (default all)",
                            portList(*ports));
    status.does([ports](Console &console) { return showStatus(console, *ports); });

    poe.command("info", "Show the controller: firmware, state, power budget").does(showController);

    const auto port = std::make_shared<uint32_t>(0);
    const Command portCommand = poe.command("port", "Show one port");
    portCommand.argument("PORT", "Number of the port", portNumber(*port));
    portCommand.does([port](Console &console) { return showPort(console, *port); });
}

} // namespace iodbg
