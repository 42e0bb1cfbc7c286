#pragma once
// Command lines that the help of each command shows.

#include <string>

namespace iodbg {

/** The examples of a command, a line for each: "iodbg cpld set". */
std::string examplesOf(const std::string &command);

} // namespace iodbg
