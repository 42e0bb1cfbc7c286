#pragma once
// Words that nobody else may see.

#include <string>

namespace iodbg {

/** Takes a line from standard input; on a terminal it asks for it and shows nothing of it. */
std::string readSecret(const std::string &prompt);

} // namespace iodbg
