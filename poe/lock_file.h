#pragma once
// The file that keeps the processes of the board apart on the way to the controller. Its first byte
// counts the frames of controllers that number them.

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

namespace bsp {

/** The way to the controller, for as long as this lives. */
class PoeLock {
  public:
    PoeLock() : file_(bspPoeLockFileOpen(&result_)) {}
    PoeLock(const PoeLock &) = delete;
    PoeLock &operator=(const PoeLock &) = delete;
    ~PoeLock() { bspPoeLockFileClose(file_); }

    /** Whether locking failed. A board where the file cannot even be opened goes on without it. */
    bool isRefused() const { return result_ != 0; }
    /** The next number of a frame. */
    uint8_t nextNumber() const { return bspPoeSeqNumNext(file_, nullptr); }

  private:
    int32_t result_ = 0;
    int32_t file_;
};

} // namespace bsp
