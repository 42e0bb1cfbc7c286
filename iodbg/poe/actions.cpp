// iodbg poe on, off, detect, classify: a command to ports, and what came of it.

#include "bsp.h"
#include "iodbg/core/console.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"
#include "iodbg/poe/board.h"
#include "iodbg/poe/cells.h"
#include "iodbg/poe/parts.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace iodbg {

namespace {

constexpr useconds_t kSettle = 1000000; // detection, classification and power-up are done by then

struct PortAction {
    const char *name;
    const char *help;
    const char *details;
    const char *example;
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
    return ioPoePortPowerOnSet(port, BSP_POE_ON);
}
int32_t switchOff(uint32_t port) {
    return ioPoePortPowerOnSet(port, BSP_POE_OFF);
}

constexpr PortAction kSwitchOn = {
    "on",
    "Switch ports on that are in the mode semi or manual",
    "Waits until they have power: a port that stays off is named with the likely reason, "
    "and the exit code is 3.",
    "iodbg poe on 3",
    "switch on",
    switchOn,
    "delivering",
    "POWER",
    ioPoePortDisconnectGet,
    poeDeliveringCell,
    true};
constexpr PortAction kSwitchOff = {"off",
                                   "Switch ports off that are in the mode semi or manual",
                                   "",
                                   "iodbg poe off 3",
                                   "switch off",
                                   switchOff,
                                   "delivering",
                                   "POWER",
                                   ioPoePortDisconnectGet,
                                   poeDeliveringCell,
                                   true};
constexpr PortAction kDetect = {"detect",
                                "Look for a device on ports",
                                "",
                                "iodbg poe detect 1-8",
                                "start a detection on",
                                ioPoePortDetectionSet,
                                "detection",
                                "DETECTION",
                                ioPoePortDetectionGet,
                                poeDetectionCell,
                                false};
constexpr PortAction kClassify = {"classify",
                                  "Ask the devices on ports for their class",
                                  "",
                                  "iodbg poe classify 1-8",
                                  "start a classification on",
                                  ioPoePortClassificationSet,
                                  "class",
                                  "CLASS",
                                  ioPoePortClassificationGet,
                                  poeClassCell,
                                  false};

/** Why the controller refused; a port in the mode auto is the usual reason. */
std::string refusalHint(uint32_t port) {
    uint32_t mode = 0;
    if (ioPoePortModeGet(port, &mode) != BSP_OK)
        return "";
    const std::string semi =
        "another mode with 'iodbg poe set mode " + std::to_string(port) + " semi'";
    if (mode == BSP_POE_MODE_0)
        return "the port is in the mode auto: the controller powers it by itself; set " + semi;
    return mode == BSP_POE_MODE_DISABLED ? "the port is disabled; set " + semi : "";
}

void act(const PortAction &action, const std::vector<uint32_t> &ports) {
    for (const uint32_t port : ports) {
        if (const int32_t status = action.act(port); status != BSP_OK)
            throw Failure::board(std::string(action.doing) + " port " + std::to_string(port),
                                 status, action.needsOwnMode ? refusalHint(port) : "");
    }
}

ExitCode carryOut(Console &console, const PortAction &action, const PortList &list) {
    const std::vector<uint32_t> ports = list.within(requirePoe().poePorts);
    act(action, ports);
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

/** What a port that was switched on has come to. */
struct Outcome {
    uint32_t port;
    int32_t status = BSP_OK;
    BspPoePortState state{};

    bool isKnown() const { return status == BSP_OK; }
    bool isOn() const { return isKnown() && state.disconnect == BSP_POE_DELIVERING; }
};

/** Gives the ports time to power up, and those that do not some more. */
std::vector<Outcome> awaitPower(const std::vector<uint32_t> &ports) {
    constexpr int kRounds = 3; // a controller that looks for devices in turns takes longer
    std::vector<Outcome> outcomes;
    outcomes.reserve(ports.size());
    for (const uint32_t port : ports)
        outcomes.push_back({port});
    const auto isOn = [](const Outcome &outcome) { return outcome.isOn(); };
    for (int i = 0; i < kRounds && !std::all_of(outcomes.begin(), outcomes.end(), isOn); ++i) {
        usleep(kSettle);
        for (Outcome &outcome : outcomes) {
            if (!outcome.isOn())
                outcome.status = ioPoePortStateGet(outcome.port, &outcome.state);
        }
    }
    return outcomes;
}

/** How much of the power budget is left, in words; empty when the controller does not tell. */
std::string budgetText() {
    uint32_t budget = 0;
    uint32_t drawn = 0;
    if (ioPoeGlobalMaxPowerGet(&budget) != BSP_OK || ioPoeGlobalPowerGet(&drawn) != BSP_OK)
        return "";
    return " (" + thousandths(drawn) + " of " + thousandths(budget) + " W are drawn)";
}

/** Why a port has no power although it was switched on, and what to do. */
std::string whyOff(const BspPoePortState &state) {
    if (state.fault == BSP_POE_FAULT)
        return "it has a fault: look at device and cable";
    if (state.detection == kPoeDetectedLegacy)
        return "an older device: see 'iodbg poe set legacy'";
    if (state.detection != kPoeDetectedGood)
        return "no device was found: check device and cable";
    return "too little power is left for it" + budgetText();
}

ExitCode tellOutcomes(const Console &console, const std::vector<Outcome> &outcomes) {
    Report report;
    Table table = {"ports", {{"port", "PORT"}, {"delivering", "POWER"}, {"why", "WHY"}}, {}};
    std::vector<int64_t> off;
    for (const Outcome &outcome : outcomes) {
        const bool staysOff = outcome.isKnown() && !outcome.isOn();
        if (staysOff)
            off.push_back(outcome.port);
        table.rows.push_back({numberCell(outcome.port),
                              report.tried("ports." + std::to_string(outcome.port), outcome.status,
                                           poeDeliveringCell(outcome.state.disconnect)),
                              staysOff ? textCell(whyOff(outcome.state)) : Cell{"-", nullptr}});
    }
    report.parts.emplace_back(table);
    const ExitCode code = console.print(report);
    if (off.empty())
        return code;
    std::fprintf(stderr, "iodbg: switched on, but without power: port %s\n",
                 listCell(off).text.c_str());
    return ExitCode::ReadBack;
}

ExitCode powerUp(Console &console, const PortAction &action, const PortList &list) {
    const std::vector<uint32_t> ports = list.within(requirePoe().poePorts);
    act(action, ports);
    return tellOutcomes(console, awaitPower(ports));
}

void addAction(Command &poe, const PortAction &action,
               ExitCode (*run)(Console &, const PortAction &, const PortList &)) {
    const auto ports = std::make_shared<PortList>();
    Command &command = poe.command(action.name, action.help);
    command.argument("PORTS", kPortListHelp, portList(*ports));
    command.detail(action.details).example(action.example);
    command.does([&action, run, ports](Console &console) { return run(console, action, *ports); });
}

} // namespace

void addPoePortActions(Command &poe) {
    addAction(poe, kSwitchOn, powerUp);
    for (const PortAction *action : {&kSwitchOff, &kDetect, &kClassify})
        addAction(poe, *action, carryOut);
}

} // namespace iodbg
