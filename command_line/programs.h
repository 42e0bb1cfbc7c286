#pragma once
// Programs that the tools start and wait for.

#include "command_line/blocked_signals.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace command_line {

/** A program to start. */
struct ProgramLine {
    std::vector<std::string> words;     // the first is its name, or its path
    std::vector<std::string> variables; // "NAME=VALUE", instead of this program's of that name
    int output, errors;                 // descriptors that it has for its standard ones
};

/** Starts it with some signals blocked; 0, or why it could not be started. */
int startProgram(const ProgramLine &line, const sigset_t &blocked, pid_t &pid);

/** Ends this process as one has ended that waitpid tells of: its exit code, unless a signal. */
int endAs(int status);

/**
 * Starts programs, one after the other, and waits for each. As long as this lives, signals that end
 * programs do not end this one: they are handed on, and what has to be put in order can be.
 */
class ProgramRunner {
  public:
    ProgramRunner();

    /** What waitpid tells of it; throws std::system_error when it cannot be started. */
    int run(const ProgramLine &line);

  private:
    int await(pid_t pid) const;

    const BlockedSignals handled_;
};

} // namespace command_line
