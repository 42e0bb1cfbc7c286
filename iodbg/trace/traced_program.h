#pragma once
// A program whose requests to the board are recorded.

#include "iodbg/core/failure.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace iodbg {

/** What ends 'trace' when the program was not started. */
constexpr auto kNotTraced = static_cast<ExitCode>(125);

class TracedProgram {
  public:
    /**
     * Starts it, with a descriptor as its standard output; recording is where it hands its requests
     * over. Throws when it cannot be started, or would run without being seen.
     */
    TracedProgram(const std::vector<std::string> &words, const std::string &recording, int output);
    TracedProgram(const TracedProgram &) = delete;
    TracedProgram &operator=(const TracedProgram &) = delete;
    ~TracedProgram();

    /** Whether it, or one that it has started, is there. */
    bool isThere();

    /** Ends this process as the program has ended: its exit code, unless a signal ended it. */
    int end() const;

  private:
    bool wantsEnd() const;

    pid_t pid_ = 0;
    int status_ = 0;
    bool hasEnded_ = false;
};

} // namespace iodbg
