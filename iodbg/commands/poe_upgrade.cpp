#include "iodbg/commands/poe_parts.h"
namespace iodbg {
void addPoeUpgradeCommand(const Command &) {}
} // namespace iodbg
