#pragma once
// Signals that end the program: when they may, and what is put in order before they do.

#include <csignal>

namespace iodbg {

/**
 * From here on Ctrl-C ends the program, with exit code 0. On a terminal the next program's output
 * begins on a line of its own.
 */
void endOnInterrupt(bool isOnTerminal);

/** As long as it lives, Ctrl-C and its like wait: nothing is left half done. */
class Uninterrupted {
  public:
    Uninterrupted();
    Uninterrupted(const Uninterrupted &) = delete;
    Uninterrupted &operator=(const Uninterrupted &) = delete;
    ~Uninterrupted();

  private:
    sigset_t before_{};
};

/**
 * As long as it lives, a signal that ends the program calls a function first, which may do only
 * what is safe in the middle of anything else. Those that live at the same time are all called, the
 * latest first.
 */
class BeforeEnd {
  public:
    using Work = void (*)(const void *subject);

    BeforeEnd(Work work, const void *subject);
    BeforeEnd(const BeforeEnd &) = delete;
    BeforeEnd &operator=(const BeforeEnd &) = delete;
    ~BeforeEnd();

  private:
    static void end(int signal);

    Work work_;
    const void *subject_;
    const BeforeEnd *earlier_;
};

} // namespace iodbg
