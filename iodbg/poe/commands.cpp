// iodbg poe: the PoE controller and its ports.

#include "iodbg/poe/commands.h"
#include "iodbg/core/device_node.h"
#include "iodbg/poe/parts.h"

namespace iodbg {

namespace {

void definePoe(Command &poe) {
    addPoeShowCommands(poe);
    addPoeSetCommands(poe);
    addPoePortActions(poe);
    addPoeInitCommand(poe);
    addPoeUpgradeCommand(poe);
}

} // namespace

void addPoeCommands(Command &root) {
    root.group("poe", "Power over Ethernet; 'iodbg poe -h' lists the controller's debug words",
               definePoe)
        .onlyAfter(requireKernelModule);
}

} // namespace iodbg
