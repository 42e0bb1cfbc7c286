#pragma once
// Questions before what cannot be undone.

#include <string>

namespace iodbg {

constexpr char kYesHelp[] = "Do not ask";

/**
 * Asks a question on standard error and takes a line from standard input. Returns on "y" and "yes";
 * every other answer, and nobody there to give one, refuses the command before it begins.
 */
void confirm(const std::string &question);

} // namespace iodbg
