#pragma once
// A panel as a page that stands alone.

#include "virtual_board/drawing/panel.h"

#include <string>
#include <vector>

namespace vboard::drawing {

/** The drawing, and a table that says of each part what it shows: no scripts, no other files. */
std::string pageOf(const Readings &readings, const std::vector<Part> &parts,
                   const std::string &description);

} // namespace vboard::drawing
