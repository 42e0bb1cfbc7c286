#pragma once
// Waits for descriptors, by the board's clock.

#include "virtual_board/os/board_wait.h"

namespace vb {

/** The C library's own. */
int nextPpoll(pollfd *descriptors, nfds_t count, const timespec *timeout, const sigset_t *signals);

/**
 * Waits until one descriptor is ready, or the deadline is over. 1, 0 or -1 with errno. A point of
 * cancellation.
 */
int waitForDescriptor(int fd, short events, const Deadline &deadline,
                      const sigset_t *signals = nullptr);

/** Waits until a signal's handler has run, with a mask meanwhile, or none; -1 with EINTR. */
int waitForHandler(const sigset_t *signals);

enum class Transfer { In, Out };

/**
 * Waits as a transfer that blocks does: on a socket with a time-out, or on a timer. False, with
 * errno, when its time is over or a signal has come.
 */
bool awaitTransfer(int fd, Transfer transfer);
/** The same of a read; one of a timer into less than its count is refused at once. */
bool awaitRead(int fd, size_t length);
/** The same of a function that takes flags for messages. */
bool awaitMessage(int socket, int flags, Transfer transfer = Transfer::In);

} // namespace vb
