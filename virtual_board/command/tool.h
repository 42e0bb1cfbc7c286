#pragma once
// All that `vboard` can be asked.

#include "command_line/line.h"

namespace vboard {

command_line::Tool makeTool();

} // namespace vboard
