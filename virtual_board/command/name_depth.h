#pragma once
// Names of many parts in files of TOML.

#include "virtual_board/command/scenario.h"

#include <optional>
#include <string>

namespace vboard {

/**
 * Where a name goes too deep, if one does: the parser, and whoever walks through what it has read,
 * goes a step down for each part of a name, and the stack has an end.
 */
std::optional<Place> tooDeepName(const std::string &content);

} // namespace vboard
