#pragma once
// Who waits for the time of a board whose clock is stepped, and which programs are on it.

#include <cstdint>

namespace vb {

constexpr uint32_t kMostWaiters = 1024;
constexpr uint32_t kMostPrograms = 512;

/** What a thread can be woken by besides the time. */
enum class WaitKind : uint32_t { Sleep, Descriptors, Lock };

/** What comes at the moment that it waits for: its time-out, or a timer of its process is due. */
enum class DueKind : uint32_t { Timeout, Timer };

enum class WaiterState : uint32_t {
    Free,
    Waiting,
    Called // shall look at the clock
};

/** A thread that waits for a moment. */
struct Waiter {
    alignas(8) uint64_t dueNs;  // on the board's clock
    alignas(8) uint64_t number; // of its wait: they are served in this order
    int32_t pid;
    int32_t thread;
    WaiterState state;
    WaitKind kind;
    DueKind due;
    uint32_t padding;
};

struct Waiters {
    Waiter waiter[kMostWaiters];
    int32_t program[kMostPrograms]; // processes that have started on the board; 0: none
    alignas(8) uint64_t waits;      // ever begun
    int32_t stepper; // the process that moves the clock: who looks now and then does it often
    uint32_t padding;
};

/** Where a thread's wait is; it can change at any time, without the board's lock. */
WaiterState stateOf(Waiter &waiter);

/** Begins a thread's wait, for no moment yet; null when too many wait. */
Waiter *beginWait(Waiters &waiters, int32_t pid, int32_t thread, WaitKind kind);
void endWait(Waiter &waiter);
bool isCalled(Waiter &waiter);

/** Whether a thread of a process looks after its timers. */
bool hasTimerWait(Waiters &waiters, int32_t pid);

/** The one that is due first, of several the one that has waited longest; null when none waits. */
Waiter *firstDue(Waiters &waiters);

/** How many are due before one. */
uint32_t waitersBefore(Waiters &waiters, const Waiter &waiter);

/** Calls one. If it blocks it has to be woken besides. */
void call(Waiter &waiter);

/** Notes a process that starts; of processes that have ended the places are taken. */
void noteProgram(Waiters &waiters, int32_t pid);

} // namespace vb
