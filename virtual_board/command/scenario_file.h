#pragma once
// Scenarios as files of TOML.

#include "virtual_board/command/scenario.h"

#include <string>

namespace vboard {

/** The scenario of a file; "-" is standard input. */
Scenario readScenario(const std::string &file);

/** The same of a file's content. What is wrong with it is refused, all of it at once, as far as it
 * can be told without a board. */
Scenario parseScenario(const std::string &file, const std::string &content);

} // namespace vboard
