#pragma once
// The clocks that programs of the board read and wait by.

#include "virtual_board/board/clock_change.h"

#include <ctime>

namespace vb {

/** One moment of the programs' clocks. */
class ProgramsClock {
  public:
    /** The clocks now, of the attached board. */
    ProgramsClock();
    /** The same for one who holds the board's lock. */
    static ProgramsClock underLock();

    const Clock &clock() const { return clock_; }
    bool stands() const { return programRate(clock_) == 0; }

    int64_t systemNs() const { return systemClockNow(clock_, host_); }
    int64_t monotonicNs() const { return monotonicClockNow(clock_, host_); }
    /** The board's own. */
    uint64_t boardNs() const { return vb::clockNow(clock_, host_.realNs); }

    /** How long the host takes to pass so much of the programs' time. */
    uint64_t hostNs(uint64_t ns) const {
        return stands() ? UINT64_MAX : unscaled(ns, programRate(clock_));
    }

  private:
    explicit ProgramsClock(const Clock &clock) : clock_(clock), host_(hostTime()) {}

    Clock clock_;
    HostTime host_;
};

/**
 * Lets the clocks of this process go on from where they are by the host's, since its board is gone.
 * No other thread of it holds the board's lock.
 */
void goByHost();
bool goesByHost();
/** Another board has come. */
void goByBoard();

/** How far this process's clocks are from the host's; None without a board. */
Difference clockDifference();

/** Whether programs wait by the board's clocks. */
inline bool waitsByBoard() {
    return clockDifference() == Difference::Pace;
}

/** Of the kernel's clocks that which can be set; the others count from its start on. */
bool isSystemClock(clockid_t clock);

/** Whether a clock is not the host's: those that count what processors do are in any case. */
bool isOffHost(clockid_t clock);

/** Until when a program waits. */
class Deadline {
  public:
    static Deadline never() { return {Kind::Never, 0}; }
    /** So long from now on. */
    static Deadline in(uint64_t ns);
    /** A point of a clock that is off the host's. */
    static Deadline at(clockid_t clock, int64_t ns);

    bool isNever() const { return kind_ == Kind::Never; }
    /** What is left, in the programs' time; UINT64_MAX: for ever. */
    uint64_t left(const ProgramsClock &now) const;

  private:
    enum class Kind { Never, System, Monotonic };
    Deadline(Kind kind, int64_t ns) : kind_(kind), ns_(ns) {}

    Kind kind_;
    int64_t ns_;
};

} // namespace vb
