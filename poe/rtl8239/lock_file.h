#pragma once
// The file that keeps the processes of the board apart on the way to the controller. Its first byte
// counts the frames.

#include <cstdint>

extern "C" {
/**
 * Opens the lock file and locks it; 0 when it cannot be opened. The result of locking is stored: 0,
 * or another value when it failed.
 */
int32_t bspPoeLockFileOpen(int32_t *lockResult);

/** Unlocks and closes what bspPoeLockFileOpen() answered; nothing for 0. */
void bspPoeLockFileClose(int32_t fd);

/**
 * The next sequence number, kept in the lock file's first byte. Without a descriptor it is counted
 * in *counter; without that too it is 0.
 */
uint8_t bspPoeSeqNumNext(int32_t fd, uint8_t *counter);
}
