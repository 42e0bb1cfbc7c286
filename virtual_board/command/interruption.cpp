#include "virtual_board/command/interruption.h"

#include "command_line/blocked_signals.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <iterator>
#include <unistd.h>

namespace vboard {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};
constexpr size_t kMostGroups = 32;
constexpr size_t kLongestPlace = 256;

// What a handler of signals can look at. It is changed while they wait.
char placeNow[kLongestPlace];
pid_t groups[kMostGroups]; // 0: none
struct sigaction before[std::size(kSignals)];

void say(const char *text) {
    if (write(STDERR_FILENO, text, std::strlen(text)) < 0)
        return; // nobody reads it
}

extern "C" void endWork(int signal) {
    for (const pid_t leader : groups) {
        if (leader != 0)
            kill(-leader, SIGKILL);
    }
    say("vboard: interrupted at ");
    say(placeNow);
    say("\n");
    std::signal(signal, SIG_DFL);
    raise(signal); // comes when this handler is left
}

} // namespace

Interruptible::Interruptible() {
    struct sigaction action = {};
    action.sa_handler = endWork;
    sigfillset(&action.sa_mask);
    for (size_t i = 0; i < std::size(kSignals); ++i) {
        sigaction(kSignals[i], &action, &before[i]);
        if (before[i].sa_handler == SIG_IGN) // as 'nohup' wants it
            sigaction(kSignals[i], &before[i], nullptr);
    }
}

Interruptible::~Interruptible() {
    for (size_t i = 0; i < std::size(kSignals); ++i)
        sigaction(kSignals[i], &before[i], nullptr);
}

void setPlaceOfWork(const std::string &text) {
    const command_line::BlockedSignals quiet(kSignals);
    const size_t length = std::min(text.size(), kLongestPlace - 1);
    std::memcpy(placeNow, text.data(), length);
    placeNow[length] = '\0';
}

bool addGroup(pid_t leader) {
    const command_line::BlockedSignals quiet(kSignals);
    pid_t *room = std::find(std::begin(groups), std::end(groups), 0);
    if (room == std::end(groups))
        return false;
    *room = leader;
    return true;
}

void removeGroup(pid_t leader) {
    const command_line::BlockedSignals quiet(kSignals);
    std::replace(std::begin(groups), std::end(groups), leader, 0);
}

} // namespace vboard
