// iodbg poe on, off, detect, classify: a command to ports, and what came of it.

#include "bsp.h"
#include "iodbg/commands/poe_parts.h"
#include "iodbg/console.h"
#include "iodbg/failure.h"
#include "iodbg/poe_board.h"
#include "iodbg/poe_port.h"

#include <unistd.h>

namespace iodbg {

namespace {

constexpr useconds_t kSettle = 1000000; // detection, classification and power-up are done by then

struct PortAction {
    const char *name;
    const char *help;
    const char *doing; // in "cannot ... port 3"
    int32_t (*act)(uint32_t port);
    // What tells the outcome.
    const char *key;
    const char *label;
    int32_t (*get)(uint32_t port, uint32_t *out);
    Cell (*cell)(uint32_t value);
    bool needsOwnMode; // the controller refuses it while it powers the port by itself
};

int32_t switchOn(uint32_t port) {
    return ioPoePortPowerOnSet(port, 1);
}
int32_t switchOff(uint32_t port) {
    return ioPoePortPowerOnSet(port, 2);
}

constexpr PortAction kActions[] = {
    {"on", "Switch ports on that are in the mode semi or manual", "switch on", switchOn,
     "delivering", "POWER", ioPoePortDisconnectGet, poeDeliveringCell, true},
    {"off", "Switch ports off that are in the mode semi or manual", "switch off", switchOff,
     "delivering", "POWER", ioPoePortDisconnectGet, poeDeliveringCell, true},
    {"detect", "Look for a device on ports", "start a detection on", ioPoePortDetectionSet,
     "detection", "DETECTION", ioPoePortDetectionGet, poeDetectionCell, false},
    {"classify", "Ask the devices on ports for their class", "start a classification on",
     ioPoePortClassificationSet, "class", "CLASS", ioPoePortClassificationGet, poeClassCell, false},
};

/** Why the controller refused; a port in the mode auto is the usual reason. */
std::string hintFor(const PortAction &action, uint32_t port) {
    uint32_t mode = 0;
    const bool isAutomatic =
        action.needsOwnMode && ioPoePortModeGet(port, &mode) == BSP_OK && mode == kPoeModeAuto;
    return isAutomatic ? "the port is in the mode auto: the controller powers it by itself; set "
                         "another mode with 'iodbg poe set mode " +
                             std::to_string(port) + " semi'"
                       : "";
}

ExitCode carryOut(Console &console, const PortAction &action, const PortList &list) {
    const std::vector<uint32_t> ports = list.within(requirePoe());
    for (const uint32_t port : ports) {
        if (const int32_t status = action.act(port); status != BSP_OK)
            throw Failure::board(std::string(action.doing) + " port " + std::to_string(port),
                                 status, hintFor(action, port));
    }
    usleep(kSettle);
    Report report;
    Table table = {"ports", {{"port", "PORT"}, {action.key, action.label}}, {}};
    for (const uint32_t port : ports) {
        uint32_t value = 0;
        const int32_t status = action.get(port, &value);
        table.rows.push_back({numberCell(port), report.tried("ports." + std::to_string(port),
                                                             status, action.cell(value))});
    }
    report.parts.emplace_back(table);
    return console.print(report);
}

} // namespace

void addPoePortActions(const Command &poe) {
    for (const PortAction &action : kActions) {
        const auto ports = std::make_shared<PortList>();
        const Command command = poe.command(action.name, action.help);
        command.argument("PORTS", kPortListHelp, portList(*ports));
        command.does(
            [&action, ports](Console &console) { return carryOut(console, action, *ports); });
    }
}

} // namespace iodbg
