// The lock file of the PoE exchanges, and the sequence counter in it.

#include "bsp.h"
#include "poe/lock_file.h"
#include "tests/poe/poe_board.h"
#include "tests/support/answer.h"
#include "tests/support/descriptor_zero.h"
#include "tests/support/scripted_controller.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class LockFileTest : public PoeTest {
  protected:
    bool isFree() const {
        const int fd = open(boardFile(kLockFile).c_str(), O_RDWR | O_CLOEXEC);
        const bool isFree = flock(fd, LOCK_EX | LOCK_NB) == 0;
        close(fd);
        return isFree;
    }
};

TEST_F(LockFileTest, IsHeldFromOpenToClose) {
    int32_t result = -7;
    const int32_t fd = bspPoeLockFileOpen(&result);
    EXPECT_GT(fd, 0);
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(isFree());
    EXPECT_NE(fcntl(fd, F_GETFD) & FD_CLOEXEC, 0);
    bspPoeLockFileClose(fd);
    EXPECT_TRUE(isFree());
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
}

TEST_F(LockFileTest, NeedNotTellHowLockingWent) {
    const int32_t fd = bspPoeLockFileOpen(nullptr);
    EXPECT_GT(fd, 0);
    EXPECT_FALSE(isFree());
    bspPoeLockFileClose(fd);
    EXPECT_TRUE(isFree());
}

TEST_F(LockFileTest, IsUnlockedAlsoWhenAnotherDescriptorSharesTheLock) {
    int32_t result = 0;
    const int32_t fd = bspPoeLockFileOpen(&result);
    const int shared = dup(fd);
    bspPoeLockFileClose(fd);
    EXPECT_TRUE(isFree());
    close(shared);
}

TEST_F(LockFileTest, IsCreatedForEveryProcessToRead) {
    unlink(boardFile(kLockFile).c_str());
    const mode_t mask = umask(0);
    int32_t result = -7;
    bspPoeLockFileClose(bspPoeLockFileOpen(&result));
    umask(mask);
    struct stat info = {};
    ASSERT_EQ(stat(boardFile(kLockFile).c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0644u);
    EXPECT_EQ(info.st_size, 0);
    EXPECT_EQ(result, 0);
}

TEST_F(LockFileTest, ThatDoesNotOpenIsReportedOnStandardErrorAndIsDescriptorZero) {
    addFault(openFails(kLockFile, EACCES));
    int32_t result = 0;
    int32_t fd = -7;
    EXPECT_EQ(complainedBy([&] { fd = bspPoeLockFileOpen(&result); }),
              "open /tmp/bspPoeLockFile error \n: Permission denied\n");
    EXPECT_EQ(fd, 0);
    EXPECT_EQ(result, 0);
}

TEST_F(LockFileTest, ThatCannotBeLockedStillHasADescriptorToClose) {
    recorder.failAlways("flock /tmp/bspPoeLockFile");
    int32_t result = 0;
    const int32_t fd = bspPoeLockFileOpen(&result);
    EXPECT_GT(fd, 0);
    EXPECT_NE(result, 0);
    bspPoeLockFileClose(fd);
}

TEST_F(LockFileTest, IsMovedAwayFromDescriptorZero) {
    int32_t result = -7;
    int32_t fd = -7;
    {
        const FreeDescriptorZero zero;
        fd = bspPoeLockFileOpen(&result);
        EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1) << "descriptor 0 is still in use";
    }
    EXPECT_GT(fd, 0);
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(isFree());
    EXPECT_NE(fcntl(fd, F_GETFD) & FD_CLOEXEC, 0);
    bspPoeLockFileClose(fd);
}

TEST_F(LockFileTest, ZeroIsNothingToClose) {
    const bool wasOpen = fcntl(0, F_GETFD) != -1;
    bspPoeLockFileClose(0);
    EXPECT_EQ(fcntl(0, F_GETFD) != -1, wasOpen);
}

TEST_F(LockFileTest, CountsInItsFirstByte) {
    struct Case {
        std::string before;
        uint8_t number;
        std::string after;
    };
    const std::string zero(1, '\0');
    const Case cases[] = {
        {"", 0, ""}, // nobody has seeded it, and nobody does
        {zero, 1, "\x01"}, {"\x7F", 0x80, "\x80"},      {"\xFE", 0xFF, "\xFF"},
        {"\xFF", 0, zero}, {"\x05tail", 6, "\x06tail"},
    };
    for (const Case &row : cases) {
        writeBoardFile(kLockFile, row.before);
        int32_t result = 0;
        const int32_t fd = bspPoeLockFileOpen(&result);
        uint8_t unused = 0x55;
        EXPECT_EQ(bspPoeSeqNumNext(fd, &unused), row.number);
        bspPoeLockFileClose(fd);
        EXPECT_EQ(readBoardFile(kLockFile), row.after);
        EXPECT_EQ(unused, 0x55);
    }
}

TEST_F(LockFileTest, WithoutADescriptorTheCallersCounterCounts) {
    for (const int32_t fd : {0, -1}) {
        uint8_t counter = 0xFE;
        EXPECT_EQ(bspPoeSeqNumNext(fd, &counter), 0xFF);
        EXPECT_EQ(bspPoeSeqNumNext(fd, &counter), 0);
        EXPECT_EQ(counter, 0);
        EXPECT_EQ(bspPoeSeqNumNext(fd, nullptr), 0);
    }
}

} // namespace
