#pragma once
// SFP modules in words.

#include "virtual_board/devices/sfp_module.h"

#include <string>

namespace vb {

/** "sr", "copper-mode4", "none" ... */
const char *sfpKindText(SfpKind kind);

/** The kind of such a text; others throw Refused. */
SfpKind sfpKindOf(const std::string &text);

} // namespace vb
