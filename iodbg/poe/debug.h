#pragma once
// The PoE controller's own debug words: "iodbg poe poeCommand 4b 0 1", "iodbg poe -h".

#include "iodbg/core/exit_code.h"

namespace iodbg {

class Console;

/** Whether the words are for the controller's driver, which takes them apart by itself. */
bool isPoeDebug(int argc, const char *const *argv);

ExitCode runPoeDebug(Console &console, int argc, const char *const *argv);

} // namespace iodbg
