#include "iodbg/interrupt.h"

#include <unistd.h>

namespace iodbg {

namespace {

constexpr int kDone = 0;

void end(int) {
    _exit(kDone);
}

void endOnNewLine(int) {
    constexpr char kNewLine = '\n';
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, &kNewLine, 1);
    _exit(kDone);
}

} // namespace

void endOnInterrupt(bool isOnTerminal) {
    std::signal(SIGINT, isOnTerminal ? endOnNewLine : end);
}

Uninterrupted::Uninterrupted() {
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigprocmask(SIG_BLOCK, &interrupt, &before_);
}

Uninterrupted::~Uninterrupted() {
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

} // namespace iodbg
