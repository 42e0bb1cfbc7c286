#pragma once
// The system's tools as they work on a board, when a program runs them through the shell: with the
// options, messages and exit statuses of the tools that real boards have.

#include <string>
#include <vector>

namespace flash_tools {

// Exit statuses.
constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kError = 255; // the MTD tools end with -1

using Arguments = std::vector<std::string>;

/** A tool; its arguments start with its own name. */
int eraseFlash(const Arguments &arguments);
int writeNand(const Arguments &arguments);
int dumpNand(const Arguments &arguments);
int setTerminal(const Arguments &arguments);
int removeFiles(const Arguments &arguments);

/** The system's tool of that name takes over; comes back only with the status of a failure. */
int runSystemTool(const Arguments &arguments);

/** Says what is wrong as the MTD tools do, and answers their status for errors. */
__attribute__((format(printf, 2, 3))) int complain(const std::string &tool, const char *format,
                                                   ...);
/** The same with the system's error. */
__attribute__((format(printf, 2, 3))) int complainSystem(const std::string &tool,
                                                         const char *format, ...);

} // namespace flash_tools
