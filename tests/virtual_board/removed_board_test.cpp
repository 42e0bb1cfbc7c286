// Boards whose folder is removed while programs use them.

#include "bsp.h"
#include "tests/support/depth.h"
#include "tests/support/virtual_board_test.h"
#include "tests/virtual_board/state_uses.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/words/values.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class RemovedBoardTest : public VirtualBoardTest {
  protected:
    /** Starts a process that sends requests until it is killed; what it finds gone is passed over.
     */
    pid_t startProgram(uint64_t number) const {
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child != 0)
            return child;
        silence();
        if (number % 3 == 0) {
            for (uint32_t value = 0;; ++value) {
                bspCpldSet(10, value & 0xFFFF); // it is on the board all along
                usleep(1);
            }
        }
        vb::detachBoard(); // the others come and go
        Random random(number);
        for (;;) {
            const StateUse &use = stateUses()[below(random, stateUses().size())];
            try {
                if (makesNoFiles(use.name))
                    use.use(boardFolder(), random);
            } catch (const vb::Refused &) {
            }
        }
    }

    /** Runs the system's rm; its exit code. */
    int removeBoard() const {
        const pid_t child = fork();
        if (child == 0) {
            execlp("rm", "rm", "-rf", boardFolder().c_str(), nullptr);
            _exit(127);
        }
        int status = -1;
        waitpid(child, &status, 0);
        return WEXITSTATUS(status);
    }

  private:
    static bool makesNoFiles(const std::string &use) {
        return use != "files" && use != "set" && use != "get and set of names";
    }
};

TEST_F(RemovedBoardTest, GoesWhateverItsProgramsDo) {
    const int rounds = depthOf(10, 3, 50, 10);
    for (int round = 0; round < rounds; ++round) {
        useModel(0x0709);
        pid_t programs[3] = {};
        for (pid_t &program : programs)
            program = startProgram(static_cast<uint64_t>(3 * round + (&program - programs)));
        while (*const_cast<volatile uint64_t *>(&board().trace.total) < 50)
            sched_yield();
        EXPECT_EQ(removeBoard(), 0);
        poll(nullptr, 0, 5); // the programs go on
        EXPECT_FALSE(fs::exists(boardFolder()));
        for (const pid_t program : programs) {
            int status = 0;
            EXPECT_EQ(waitpid(program, &status, WNOHANG), 0) << "a program has ended: " << status;
            kill(program, SIGKILL);
            waitpid(program, nullptr, 0);
        }
        EXPECT_FALSE(fs::exists(boardFolder()));
    }
}

TEST_F(RemovedBoardTest, TakesNoNewFiles) {
    const std::string before = boardFile("/tmp/bsp/before");
    writeBoardFile("/tmp/bsp/before", "x");
    for (const char *part : {"/board.state", "/lock"}) {
        fs::rename(boardFolder() + part, boardFolder() + "/part");
        EXPECT_LT(open("/tmp/bsp/new", O_WRONLY | O_CREAT, 0644), 0);
        EXPECT_EQ(errno, ENOENT);
        EXPECT_EQ(std::fopen("/tmp/bsp/new", "w"), nullptr);
        EXPECT_EQ(errno, ENOENT);
        EXPECT_EQ(mkdir("/tmp/bsp/new", 0755), -1);
        EXPECT_EQ(errno, ENOENT);
        EXPECT_EQ(rename("/tmp/bsp/before", "/tmp/bsp/new"), -1);
        EXPECT_EQ(errno, ENOENT);
        char pattern[] = "/tmp/bsp/new-XXXXXX";
        EXPECT_EQ(mkstemp(pattern), -1);
        EXPECT_EQ(errno, ENOENT);
        const int fd = open("/tmp/bsp/before", O_RDONLY);
        EXPECT_GE(fd, 0); // what is there can be used
        close(fd);
        fs::rename(boardFolder() + "/part", boardFolder() + part);
        EXPECT_FALSE(fs::exists(boardFile("/tmp/bsp/new")));
    }
    const int fd = open("/tmp/bsp/new", O_WRONLY | O_CREAT, 0644);
    EXPECT_GE(fd, 0);
    close(fd);
}

TEST_F(RemovedBoardTest, IsToldByItsMissingLock) {
    fs::remove(boardFolder() + "/lock");
    vb::BoardFolder folder;
    vb::FolderError error = {};
    EXPECT_FALSE(folder.open(boardFolder().c_str(), error));
    EXPECT_NE(std::string(error.text).find("lock is missing; make it anew with: touch "),
              std::string::npos)
        << error.text;
    EXPECT_FALSE(fs::exists(boardFolder() + "/lock"));
}

} // namespace
