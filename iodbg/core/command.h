#pragma once
// The commands of iodbg: defined as those of every tool, and answered on a console.

#include "command_line/command.h"
#include "command_line/parse.h"
#include "iodbg/core/console.h"
#include "iodbg/core/format.h"
#include "language/refused.h"

namespace iodbg {

using namespace command_line;

} // namespace iodbg
