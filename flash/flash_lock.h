#pragma once
// The lock that keeps the flash work of the board's processes apart. It belongs to the process: the
// threads of one process are not kept apart by it.

#include <cstdint>

extern "C" {
/**
 * Takes (type 1) or releases (type 2) the write lock on the whole lock file, waiting for other
 * processes. 0, or 1 when all 100 attempts failed, which is printed.
 */
int32_t bsp_flash_lock_set(int32_t fd, int32_t type);

/**
 * Opens the lock file and locks it. The result of locking is stored: 0, or 1 when it failed. A file
 * that cannot be opened is answered with 0 and leaves the result alone: flash work is not refused
 * for want of a lock file.
 */
int32_t bsp_flash_lock_get(int32_t *lockResult);

/** Unlocks and closes what bsp_flash_lock_get() answered; nothing for 0. */
void bsp_flash_lock_release(int32_t fd);
}

namespace bsp {

/** The flash lock, held from here to the end of the block. */
class FlashLock {
  public:
    FlashLock() : fd_(bsp_flash_lock_get(&result_)) {}
    FlashLock(const FlashLock &) = delete;
    FlashLock &operator=(const FlashLock &) = delete;
    ~FlashLock() { bsp_flash_lock_release(fd_); }

    bool hasFailed() const { return result_ != 0; }

    /**
     * Gives the lock back before the end of the block, whose own release then has no descriptor: it
     * tries in vain and says so. It must not try the number of the closed file, which another
     * thread may have by then.
     */
    void release() {
        bsp_flash_lock_release(fd_);
        if (fd_ != 0)
            fd_ = -1;
    }

  private:
    int32_t result_ = 0;
    int32_t fd_;
};

} // namespace bsp
