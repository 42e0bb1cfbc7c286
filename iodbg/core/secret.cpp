#include "iodbg/core/secret.h"

#include "iodbg/core/failure.h"
#include "iodbg/core/interrupt.h"

#include <cstdio>
#include <termios.h>
#include <unistd.h>

namespace iodbg {

namespace {

/** Keeps a terminal from showing what is typed, as long as it lives. */
class NoEcho {
  public:
    NoEcho() : isTerminal_(tcgetattr(STDIN_FILENO, &before_) == 0) {
        if (!isTerminal_)
            return;
        termios silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        silent.c_cc[VSUSP] = _POSIX_VDISABLE; // nobody gets a silent terminal by stopping this
        if (tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) != 0)
            throw Failure::file("hide what is typed", "give the password on standard input");
    }
    NoEcho(const NoEcho &) = delete;
    NoEcho &operator=(const NoEcho &) = delete;
    ~NoEcho() { restore(this); }

    bool isTerminal() const { return isTerminal_; }

  private:
    /** Also called in the middle of anything else, by Ctrl-C. */
    static void restore(const void *noEcho) {
        const auto *self = static_cast<const NoEcho *>(noEcho);
        if (!self->isTerminal_)
            return;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &self->before_);
        constexpr char kNewLine = '\n'; // the one that was not shown
        [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, &kNewLine, 1);
    }

    termios before_{};
    bool isTerminal_;
    BeforeEnd restoring_{restore, this};
};

} // namespace

std::string readSecret(const std::string &prompt) {
    const NoEcho silence;
    if (silence.isTerminal())
        std::fprintf(stderr, "%s: ", prompt.c_str());
    std::string line;
    int character = std::getchar();
    if (character == EOF)
        throw Failure::usage("nothing was given on standard input, nothing was done");
    for (; character != EOF && character != '\n'; character = std::getchar())
        line += static_cast<char>(character);
    return line;
}

} // namespace iodbg
