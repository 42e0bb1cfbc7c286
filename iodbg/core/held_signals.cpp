#include "iodbg/core/held_signals.h"

#include <ctime>
#include <unistd.h>

namespace iodbg {

namespace {

constexpr int kEnding[] = {SIGINT, SIGHUP, SIGTERM};
constexpr int kSignalled = 128; // added to a signal's number, as shells do

} // namespace

HeldSignals::HeldSignals() : held_(kEnding) {}

HeldSignals::~HeldSignals() {
    constexpr timespec kNow = {};
    while (sigtimedwait(&held_.all(), nullptr, &kNow) > 0) {
    }
}

int HeldSignals::waiting() const {
    sigset_t pending;
    sigpending(&pending);
    for (const int signal : kEnding) {
        if (sigismember(&pending, signal) == 1)
            return signal;
    }
    return 0;
}

void HeldSignals::endBy(int signal) {
    sigset_t one;
    sigemptyset(&one);
    sigaddset(&one, signal);
    std::signal(signal, SIG_DFL);
    raise(signal);
    sigprocmask(SIG_UNBLOCK, &one, nullptr);
    _exit(kSignalled + signal);
}

} // namespace iodbg
