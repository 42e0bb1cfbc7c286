#pragma once
// Command lines for the system's shell.

#include "bsp.h"

#include <cstddef>
#include <cstdlib>

namespace bsp {

constexpr size_t kCommandSize = BSP_COMMAND_LINE_MAX + 1; // with the terminating zero

/** A file name as one word of a command line: bare, or in single quotes when it holds characters
 * that mean something to the shell. A name that begins with "-" goes as "./-name", or the command
 * would take it for an option.
 */
class ShellWord {
  public:
    explicit ShellWord(const char *name);
    /** Cut off when it is too long for any command line. */
    const char *text() const { return text_; }

  private:
    void append(const char *characters);

    char text_[kCommandSize + 8] = "";
    size_t length_ = 0;
};

class ShellCommand {
  public:
    [[gnu::format(printf, 2, 3)]] explicit ShellCommand(const char *format, ...);

    /** Whether the line is complete; one that is not must not be run. */
    bool fits() const { return fits_; }
    /** The value of system(). */
    int run() const { return std::system(line_); }

  private:
    char line_[kCommandSize] = "";
    bool fits_;
};

} // namespace bsp
