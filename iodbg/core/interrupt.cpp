#include "iodbg/core/interrupt.h"

#include <array>
#include <unistd.h>

namespace iodbg {

namespace {

constexpr int kDone = 0;

/** What ends a program that is used as it should be. */
constexpr std::array kEndingSignals = {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGXCPU, SIGXFSZ};

void end(int) {
    _exit(kDone);
}

void endOnNewLine(int) {
    constexpr char kNewLine = '\n';
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, &kNewLine, 1);
    _exit(kDone);
}

const BeforeEnd *latest = nullptr;
std::array<struct sigaction, kEndingSignals.size()> usualActions;

/** Has ending signals handled, but for those that the caller of this program has ignored. */
void handleEndingSignals(void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags =
        static_cast<int>(SA_RESETHAND | SA_NODEFER); // so that the handler can raise it once more
    for (size_t i = 0; i < kEndingSignals.size(); ++i) {
        sigaction(kEndingSignals[i], nullptr, &usualActions[i]);
        if (usualActions[i].sa_handler == SIG_DFL)
            sigaction(kEndingSignals[i], &action, nullptr);
    }
}

void leaveEndingSignals() {
    for (size_t i = 0; i < kEndingSignals.size(); ++i) {
        if (usualActions[i].sa_handler == SIG_DFL)
            sigaction(kEndingSignals[i], &usualActions[i], nullptr);
    }
}

} // namespace

void endOnInterrupt(bool isOnTerminal) {
    std::signal(SIGINT, isOnTerminal ? endOnNewLine : end);
}

Uninterrupted::Uninterrupted() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int signal : kEndingSignals)
        sigaddset(&ending, signal);
    sigprocmask(SIG_BLOCK, &ending, &before_);
}

Uninterrupted::~Uninterrupted() {
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

BeforeEnd::BeforeEnd(Work work, const void *subject) : work_(work), subject_(subject) {
    const Uninterrupted whole;
    earlier_ = latest;
    latest = this;
    if (earlier_ == nullptr)
        handleEndingSignals(end);
}

BeforeEnd::~BeforeEnd() {
    const Uninterrupted whole;
    latest = earlier_;
    if (latest == nullptr)
        leaveEndingSignals();
}

void BeforeEnd::end(int signal) {
    for (const BeforeEnd *work = latest; work != nullptr; work = work->earlier_)
        work->work_(work->subject_);
    raise(signal);
}

} // namespace iodbg
