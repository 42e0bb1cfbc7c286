#pragma once
// Timers of this process that go by the board's clocks.

#include "virtual_board/os/programs_clock.h"

#include <sys/types.h>

namespace vb {

/** By a clock that is stepped threads go on in turn. */
enum class Turn { Own, Others };

/**
 * Sets the kernel's timers to the pace that the clock has; in its own turn a thread also sets off
 * those of a clock that stands whose time has come. How long the next one has to go, in the
 * programs' time; UINT64_MAX without one. The caller holds the board's lock.
 */
uint64_t serveTimers(const ProgramsClock &now, Turn turn);

/** A child of fork has none of its parent's, but for those of descriptors. */
void forgetTimersOfParent();

/** Whether a descriptor is of such a timer. */
bool isTimer(int fd);

/**
 * After a read of so many bytes: how often a timer of the board's has gone off, which is counted as
 * read. False when it was none.
 */
bool takeExpirations(int fd, ssize_t size, uint64_t &expirations);

} // namespace vb
