#pragma once
// Asking the user before something that cannot be taken back.

#include <string>

namespace iodbg {

/** Asks on standard error and reads the answer from standard input; throws unless it is yes. */
void requireConsent(const std::string &question);

} // namespace iodbg
