// The lock that keeps flash work of different processes apart.

#include "flash/flash_lock.h"

#include "tests/support/descriptor_zero.h"
#include "tests/support/flash_board_test.h"

#include <gtest/gtest.h>

namespace {

constexpr char kLockFile[] = "/tmp/bspFlashLockFile";

/** The lock taken by a call and given back after it. */
struct LockTest : FlashCallsTest {
    int32_t result = 0;
    int32_t fd = -7;

    int32_t work() {
        fd = bsp_flash_lock_get(&result);
        bsp_flash_lock_release(fd);
        return result;
    }
    Answer takeAndRelease() {
        return recorder.run([this] { return work(); });
    }
    /** The same where the lock file would get descriptor 0. */
    Answer takeAndReleaseWithZero() {
        return recorder.run([this] {
            const FreeDescriptorZero zero;
            return work();
        });
    }
};

TEST_F(LockTest, IsAWriteLockOnTheWholeFile) {
    EXPECT_EQ(takeAndRelease(), kSilentSuccess);
    EXPECT_EQ(recorder.work(), joined({kLocking, kUnlocking}));
    EXPECT_GT(fd, 0);
    EXPECT_EQ(recorder.complaints, "");
}

TEST_F(LockTest, StoresThatItWasTaken) {
    result = 5;
    EXPECT_EQ(takeAndRelease(), kSilentSuccess);
}

TEST_F(LockTest, IsTriedAHundredTimes) {
    recorder.fail("lock", 1, -1, 99);
    EXPECT_EQ(takeAndRelease(), kSilentSuccess);
    EXPECT_EQ(recorder.callsOf("lock").size(), 100u);
    EXPECT_EQ(recorder.callsOf("wait 2 us").size(), 99u);

    recorder.clearFailures();
    recorder.failAlways("lock");
    EXPECT_EQ(takeAndRelease(),
              (Answer{1, "bsp_flash_lock_set failed: type=1, retry_times=100 \n"}));
    EXPECT_EQ(recorder.work(), joined({{kLocking[0]}, hundredTimes(kLocking[1]), kUnlocking}));
}

TEST_F(LockTest, IsReleasedInAHundredAttempts) {
    recorder.fail("unlock", 1, -1, 99);
    EXPECT_EQ(takeAndRelease(), kSilentSuccess);
    Calls attempts = hundredTimes(kUnlocking[0]);
    attempts.resize(attempts.size() - 2);
    EXPECT_EQ(recorder.work(), joined({kLocking, attempts, kUnlocking}));
}

TEST_F(LockTest, WorkGoesOnWithoutALockFile) {
    recorder.fail("open", 1, -1, 1, EACCES);
    result = 5;
    EXPECT_EQ(takeAndRelease(), (Answer{5, ""})) << "the result is left alone";
    EXPECT_EQ(fd, 0);
    EXPECT_EQ(recorder.work(), (Calls{kLocking[0]}));
    EXPECT_EQ(recorder.complaints, "open /tmp/bspFlashLockFile error \n: Permission denied\n");
}

TEST_F(LockTest, IsMovedAwayFromDescriptorZero) {
    EXPECT_EQ(takeAndReleaseWithZero(), kSilentSuccess);
    EXPECT_GT(fd, 0);
    // Closing it later would give up the lock.
    const std::string close = std::string("close ") + kLockFile;
    EXPECT_EQ(recorder.calls,
              joined({{kLocking[0], std::string("move up ") + kLockFile, close, kLocking[1]},
                      kUnlocking,
                      {close}}));
}

TEST_F(LockTest, WorkGoesOnWhenItCannotBeMoved) {
    recorder.fail("move up", 1, -1, 1, EMFILE);
    EXPECT_EQ(takeAndReleaseWithZero(), kSilentSuccess);
    EXPECT_EQ(fd, 0);
}

TEST_F(LockTest, ZeroIsNothingToRelease) {
    EXPECT_EQ(recorder.run([] {
        bsp_flash_lock_release(0);
        return 0;
    }),
              kSilentSuccess);
    EXPECT_EQ(recorder.work(), (Calls{}));
}

TEST_F(LockTest, NobodyNeedsToTakeTheResult) {
    EXPECT_EQ(recorder.run([] {
        bsp_flash_lock_release(bsp_flash_lock_get(nullptr));
        return 0;
    }),
              kSilentSuccess);
}

} // namespace
