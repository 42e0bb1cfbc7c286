#pragma once
// What the tools say of themselves.

#include "virtual_board/flash_tools/tools.h"

namespace flash_tools {

/** Prints help or version when a command line asks for it; false when it does not. */
bool answersAboutItself(const Arguments &arguments);

/** Tells how the tool is used, and answers the status for a wrong command line. */
int refuseUsage(const std::string &tool);

} // namespace flash_tools
