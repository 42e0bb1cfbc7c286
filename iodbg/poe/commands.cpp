// iodbg poe: the PoE controller and its ports.

#include "iodbg/poe/commands.h"
#include "iodbg/poe/parts.h"

namespace iodbg {

void addPoeCommands(const Command &root) {
    const Command poe =
        root.group("poe", "Power over Ethernet; 'iodbg poe -h' lists the controller's debug words");
    addPoeShowCommands(poe);
    addPoeSetCommands(poe);
    addPoePortActions(poe);
    addPoeInitCommand(poe);
    addPoeUpgradeCommand(poe);
}

} // namespace iodbg
