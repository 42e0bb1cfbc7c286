#pragma once
// The clock of a board while its programs read it.

#include "virtual_board/board/folder.h"

namespace vb {

/** What the host's clocks show now. */
HostTime hostTime();

/** The clock as it is between two changes. */
Clock readClock(const BoardFolder &folder);

/**
 * A change of the clock other than by time. Its maker holds the board's lock. Those who wait for
 * the time look anew.
 */
class ClockChange {
  public:
    /** Who only moves it calls those whose time has come. */
    enum class Wakes { All, Nobody };

    explicit ClockChange(const BoardFolder &folder, Wakes wakes = Wakes::All);
    ClockChange(const ClockChange &) = delete;
    ClockChange &operator=(const ClockChange &) = delete;
    ~ClockChange();

    Clock *operator->() const { return &folder_.board()->clock; }
    Clock &operator*() const { return folder_.board()->clock; }

  private:
    const BoardFolder &folder_;
    const Wakes wakes_;
};

/** Calls one who waits; lets all look at the clock. */
void wake(const BoardFolder &folder, Waiter &waiter);
void wakeAll(const BoardFolder &folder);

/** Puts right what is left of a change amid which somebody was killed, or of another boot. */
void mendClock(Clock &clock, const HostTime &host);

} // namespace vb
