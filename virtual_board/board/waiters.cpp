#include "virtual_board/board/waiters.h"

#include "virtual_board/board/kernel.h"

#include <algorithm>
#include <atomic>
#include <iterator>

namespace vb {

namespace {

bool isBefore(const Waiter &a, const Waiter &b) {
    return a.dueNs != b.dueNs ? a.dueNs < b.dueNs : a.number < b.number;
}

} // namespace

WaiterState stateOf(Waiter &waiter) {
    return std::atomic_ref(waiter.state).load();
}

Waiter *beginWait(Waiters &waiters, int32_t pid, int32_t thread, WaitKind kind) {
    const auto free = std::find_if(std::begin(waiters.waiter), std::end(waiters.waiter),
                                   [](Waiter &w) { return stateOf(w) == WaiterState::Free; });
    if (free == std::end(waiters.waiter))
        return nullptr;
    free->dueNs = UINT64_MAX;
    free->number = waiters.waits++;
    free->pid = pid;
    free->thread = thread;
    free->kind = kind;
    free->due = DueKind::Timeout;
    std::atomic_ref(free->state).store(WaiterState::Waiting);
    return free;
}

void endWait(Waiter &waiter) {
    std::atomic_ref(waiter.state).store(WaiterState::Free);
}

bool hasTimerWait(Waiters &waiters, int32_t pid) {
    return std::any_of(std::begin(waiters.waiter), std::end(waiters.waiter), [=](Waiter &waiter) {
        return stateOf(waiter) != WaiterState::Free && waiter.pid == pid &&
               waiter.due == DueKind::Timer;
    });
}

bool isCalled(Waiter &waiter) {
    return stateOf(waiter) == WaiterState::Called;
}

Waiter *firstDue(Waiters &waiters) {
    Waiter *first = nullptr;
    for (Waiter &waiter : waiters.waiter) {
        if (stateOf(waiter) == WaiterState::Waiting &&
            (first == nullptr || isBefore(waiter, *first)))
            first = &waiter;
    }
    return first;
}

uint32_t waitersBefore(Waiters &waiters, const Waiter &waiter) {
    return static_cast<uint32_t>(
        std::count_if(std::begin(waiters.waiter), std::end(waiters.waiter), [&](Waiter &other) {
            return stateOf(other) == WaiterState::Waiting && isBefore(other, waiter);
        }));
}

void call(Waiter &waiter) {
    WaiterState expected = WaiterState::Waiting;
    std::atomic_ref(waiter.state).compare_exchange_strong(expected, WaiterState::Called);
}

void noteProgram(Waiters &waiters, int32_t pid) {
    int32_t *place = nullptr;
    for (int32_t &program : waiters.program) {
        if (program == pid)
            return;
        if (place == nullptr && (program == 0 || !kernel::isProcess(program)))
            place = &program;
    }
    if (place != nullptr)
        *place = pid;
}

} // namespace vb
