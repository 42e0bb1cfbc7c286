#pragma once
// Signals that wait until something is whole, or gone.

#include <csignal>
#include <span>

namespace command_line {

/** What people and systems end a program by. */
constexpr int kEndingSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

/** Keeps signals away as long as it lives; those that have come by then do what they do. */
class BlockedSignals {
  public:
    explicit BlockedSignals(std::span<const int> signals);
    BlockedSignals(const BlockedSignals &) = delete;
    BlockedSignals &operator=(const BlockedSignals &) = delete;
    ~BlockedSignals();

    const sigset_t &all() const { return all_; }
    /** Those that were blocked before. */
    const sigset_t &before() const { return before_; }

  private:
    sigset_t all_{};
    sigset_t before_{};
};

} // namespace command_line
