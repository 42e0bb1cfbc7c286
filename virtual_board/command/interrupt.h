#pragma once
// What goes on until somebody presses Ctrl-C, which is then its proper end, with exit code 0.

#include <csignal>

namespace vboard {

/** Work in rounds. As long as it lives, Ctrl-C waits until a round is through. */
class Rounds {
  public:
    Rounds();
    Rounds(const Rounds &) = delete;
    Rounds &operator=(const Rounds &) = delete;
    ~Rounds();

    /** The pause behind a round; false when Ctrl-C has ended the work. */
    bool pause(double seconds) const;

  private:
    sigset_t interrupt_{};
    sigset_t before_{};
};

} // namespace vboard
