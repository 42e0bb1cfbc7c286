#pragma once
// How a board's time passes, in words.

#include "virtual_board/board/clock.h"

#include <string>

namespace vb {

/** "real", "virtual", "stepped", "x60", "x0.1". */
std::string paceText(const Pace &pace);

/** The pace that such a text tells; others throw Refused. */
Pace parsePace(const std::string &text);

} // namespace vb
