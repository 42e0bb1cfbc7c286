#pragma once
// What a command line was about, and the help for that.

#include <CLI/CLI.hpp>
#include <string>

namespace vboard {

/** The help of the command that was meant; its usage shows what the command's groups take as well.
 */
std::string helpWanted(const CLI::App &app);

/** What is wrong with a command line, and which command's help tells more. */
std::string mistakeText(const CLI::App &app, const CLI::ParseError &mistake);

} // namespace vboard
