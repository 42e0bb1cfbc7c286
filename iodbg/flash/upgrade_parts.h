#pragma once
// What the upgrades of all images share.

#include "iodbg/core/command.h"
#include "iodbg/core/console.h"
#include "iodbg/flash/spooled_input.h"

#include <string>

namespace iodbg {

using UpgradeArguments = FlashInput;

/** What is replaced by what, and the question about it. */
struct UpgradePlan {
    std::string what; // "Image of bank 0, /dev/mtd12"
    std::string now;
    std::string replacement;
    std::string warning;
};

/** Adds the plan to an answer and asks; false when the command ends here, as it is a dry run. */
bool goOn(Section &section, const UpgradePlan &plan, const UpgradeArguments &arguments);

void addUpgradeOs(Command &upgrade);
void addUpgradeBoot(Command &upgrade);
void addUpgradeCpld(Command &upgrade);

/** The arguments that all upgrades have. */
void addUpgradeArguments(Command &command, UpgradeArguments &arguments,
                         const std::string &fileHelp);

} // namespace iodbg
