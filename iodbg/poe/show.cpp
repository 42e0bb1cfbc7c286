// iodbg poe status, port: what the controller and its ports say.

#include "bsp.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/progress.h"
#include "iodbg/poe/board.h"
#include "iodbg/poe/controller.h"
#include "iodbg/poe/guide.h"
#include "iodbg/poe/parts.h"
#include "iodbg/poe/port.h"

#include <optional>
#include <utility>

namespace iodbg {

namespace {

constexpr uint32_t kPortExchanges = 3; // and a fourth for a port with power

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

/** Text that is shown at once on a terminal, else with the rest of the answer. */
class LiveText {
  public:
    explicit LiveText(const Console &console)
        : console_(console),
          isLive_(console.form() == AnswerForm::Text && console.terminalSize().has_value()) {}

    bool isLive() const { return isLive_; }
    void add(const std::string &text) {
        if (isLive_)
            console_.printText(text);
        else
            rest_ += text;
    }
    /** What has not been shown. */
    const std::string &rest() const { return rest_; }

  private:
    const Console &console_;
    bool isLive_;
    std::string rest_;
};

std::vector<WorkStep> portSteps(const bsp::PoeGuide &guide, const std::vector<uint32_t> &ports) {
    std::vector<WorkStep> steps;
    steps.reserve(ports.size());
    for (const uint32_t port : ports)
        steps.push_back({"port " + std::to_string(port), kPortExchanges * guide.exchangeMs});
    return steps;
}

void addPorts(Report &report, Console &console, LiveText &text, const bsp::PoeGuide &guide,
              const std::vector<uint32_t> &ports) {
    std::optional<Progress> progress; // rows that appear one by one need none
    if (!text.isLive())
        progress.emplace(console, "poe status", portSteps(guide, ports));
    Table table = portsTable();
    text.add("\n" + poePortHeadLine());
    for (size_t i = 0; i < ports.size(); ++i) {
        if (progress)
            progress->reach(i, 0);
        std::vector<Cell> cells = readPoePort(report, guide, ports[i]);
        text.add(poePortLine(ports[i], cells));
        cells.insert(cells.begin(), numberCell(ports[i]));
        table.rows.push_back(std::move(cells));
    }
    report.parts.emplace_back(table);
}

ExitCode showStatus(Console &console, const PortList &list) {
    const Model model = requirePoe();
    const std::vector<uint32_t> ports = list.within(model.poePorts);
    requireAnswer();
    Report report;
    addPoeController(report);
    LiveText text(console);
    text.add(Report{report.parts, {}}.toText());
    addPorts(report, console, text, poeGuide(model.poeChip), ports);
    text.add(Report{{}, report.failures}.toText());
    return console.print(report, text.rest());
}

ExitCode showPort(Console &console, uint32_t port) {
    const Model model = requirePoe();
    requirePort(port, model.poePorts);
    requireAnswer();
    Report report;
    Section section = {"", "", {}};
    section.add("port", "Port", numberCell(port));
    const std::vector<Cell> cells = readPoePort(report, poeGuide(model.poeChip), port);
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

void addPoeShowCommands(Command &poe) {
    const auto ports = std::make_shared<PortList>("all");
    Command &status = poe.command("status", "Show the controller and all ports (takes less "
                                            "than a second for each port)");
    status.optionalArgument("PORTS", std::string(kPortListHelp) + " (default all)",
                            portList(*ports));
    status.detail("On a terminal each port appears as it is read.");
    status.example("iodbg poe status").example("iodbg poe status 1-8,12 --json");
    takesCapturedUnit(status);
    status.does([ports](Console &console) { return showStatus(console, *ports); });

    takesCapturedUnit(poe.command("info", "Show the controller: firmware, state, power budget"))
        .example("iodbg poe info")
        .does(showController);

    const auto port = std::make_shared<uint32_t>(0);
    Command &portCommand = poe.command("port", "Show one port");
    portCommand.argument("PORT", "Number of the port", portNumber(*port));
    portCommand.example("iodbg poe port 3");
    takesCapturedUnit(portCommand);
    portCommand.does([port](Console &console) { return showPort(console, *port); });
}

} // namespace iodbg
