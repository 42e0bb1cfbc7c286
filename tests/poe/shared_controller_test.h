#pragma once
// A board with a PoE controller that several processes use.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

class SharedControllerTest : public VirtualBoardTest {
  protected:
    static constexpr char kLockFile[] = "/tmp/bspPoeLockFile";
    static constexpr uint8_t kSeed = 0x10;

    /** A lock file that counts, and a device id that is known already. */
    void SetUp() override {
        VirtualBoardTest::SetUp();
        writeBoardFile(kLockFile, {static_cast<char>(kSeed)});
        uint32_t devId = 0;
        ASSERT_EQ(bspDevIdGet(&devId), BSP_OK);
        trace();
    }

    /** Starts a process that ends with code 0 when a function answers true. */
    static pid_t start(const std::function<bool()> &function) {
        const pid_t child = fork();
        if (child == 0)
            _exit(function() ? 0 : 1);
        return child;
    }

    /** The end of a process, as waitpid() tells it. */
    static int endOf(pid_t child) {
        int status = -1;
        waitpid(child, &status, 0);
        return status;
    }
    static bool wasKilled(int status) { return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL; }

    /** Whether the PoE lock can be taken at once. */
    bool isPoeLockFree() const {
        const int fd = open(boardFile(kLockFile).c_str(), O_RDWR | O_CLOEXEC);
        const bool isFree = flock(fd, LOCK_EX | LOCK_NB) == 0;
        close(fd);
        return isFree;
    }
};
