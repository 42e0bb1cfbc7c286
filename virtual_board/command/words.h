#pragma once
// Words that several commands of `vboard` take.

#include "command_line/command.h"
#include "command_line/parse.h"

#include <string>
#include <vector>

namespace vboard {

using namespace command_line;

/** Takes the board's folder. */
void addFolder(Command &command, std::string &folder);
void addJson(Command &command, bool &asJson);

/** Stores all words that it is given, one behind the other. */
Parser texts(std::vector<std::string> &target);

} // namespace vboard
