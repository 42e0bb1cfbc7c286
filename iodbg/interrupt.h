#pragma once
// Work that goes on until somebody presses Ctrl-C, which is then its proper end.

#include <csignal>

namespace iodbg {

/**
 * From here on Ctrl-C ends the program, with exit code 0. On a terminal the next program's output
 * begins on a line of its own.
 */
void endOnInterrupt(bool isOnTerminal);

/** As long as it lives, Ctrl-C waits: an exchange with the hardware is not left half done. */
class Uninterrupted {
  public:
    Uninterrupted();
    Uninterrupted(const Uninterrupted &) = delete;
    Uninterrupted &operator=(const Uninterrupted &) = delete;
    ~Uninterrupted();

  private:
    sigset_t before_{};
};

} // namespace iodbg
