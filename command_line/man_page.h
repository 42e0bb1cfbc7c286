#pragma once
// The commands of a tool as a section of its manual page.

#include "command_line/line.h"

namespace command_line {

/** The word at which a tool prints the section. */
constexpr char kManPageWord[] = "__man-page";

/** The section COMMANDS, in mdoc. */
std::string manPageOf(Tool &tool);

} // namespace command_line
