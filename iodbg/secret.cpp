#include "iodbg/secret.h"

#include "iodbg/failure.h"

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
        if (tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) != 0)
            throw Failure::file("hide what is typed", "give the password on standard input");
    }
    NoEcho(const NoEcho &) = delete;
    NoEcho &operator=(const NoEcho &) = delete;
    ~NoEcho() {
        if (isTerminal_) {
            tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
            std::fputc('\n', stderr); // the one that was not shown
        }
    }

    bool isTerminal() const { return isTerminal_; }

  private:
    termios before_{};
    bool isTerminal_;
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
