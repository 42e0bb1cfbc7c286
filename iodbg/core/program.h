#pragma once
// Programs that iodbg starts.

#include <csignal>
#include <string>
#include <sys/types.h>
#include <vector>

namespace iodbg {

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
    ProgramRunner(const ProgramRunner &) = delete;
    ProgramRunner &operator=(const ProgramRunner &) = delete;
    ~ProgramRunner();

    /** What waitpid tells of it; throws std::system_error when it cannot be started. */
    int run(const ProgramLine &line);

  private:
    int await(pid_t pid) const;

    sigset_t handled_{};
    sigset_t before_{};
};

} // namespace iodbg
