#pragma once
// SFP modules in words.

#include "virtual_board/devices/sfp_module.h"

#include <string>

namespace vb {

/** "sr", "copper-mode4", "none" ... */
std::string sfpKindText(SfpKind kind);

} // namespace vb
