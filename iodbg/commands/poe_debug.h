#pragma once
// The PoE controller's own debug words: "iodbg poe poeCommand 4b 0 1", "iodbg poe -h".

#include "iodbg/command_line.h"

namespace iodbg {

/** Whether the words are for the controller's driver, which takes what is no command of iodbg's. */
bool isPoeDebug(const CommandLine &line, int argc, const char *const *argv);

ExitCode runPoeDebug(Console &console, int argc, const char *const *argv);

} // namespace iodbg
