// Signal handlers that come for the board, or for the host, while the program they interrupt does.

#include "bsp.h"
#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/os/seam.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <functional>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

// What handlers can reach.
char hostFile[256];
std::atomic<int> failuresUnderSignals;
std::atomic<int> handlersRun;

void expectTrue(bool isTrue) {
    if (!isTrue)
        ++failuresUnderSignals;
}

bool readsText(const char *path, const char *text) {
    char found[16] = {};
    const int fd = open(path, O_RDONLY);
    const bool isRight =
        fd >= 0 && read(fd, found, sizeof(found) - 1) > 0 && std::strcmp(found, text) == 0;
    return close(fd) == 0 && isRight;
}

bool readsRegister() {
    const int fd = open("/dev/bspHandle", O_RDONLY);
    uint32_t value = 0;
    BspIoctlRecord record = {};
    record.slot[0] = 1;
    record.slot[1] = reinterpret_cast<uintptr_t>(&value);
    const bool isRight = ioctl(fd, BSP_REQ_CPLD_READ, &record) == 0 && value == 0x0709;
    return close(fd) == 0 && isRight;
}

bool sleepsBriefly() {
    const timespec time = {0, 1000};
    return usleep(1) == 0 && nanosleep(&time, nullptr) == 0 && sleep(1) == 0;
}

bool examines(const char *path, off_t size) {
    struct stat info = {};
    return stat(path, &info) == 0 && info.st_size == size;
}

bool writesTo(const char *path) {
    const int fd = open(path, O_WRONLY | O_CREAT | O_APPEND, 0644);
    const bool isRight = write(fd, "x", 1) == 1;
    return close(fd) == 0 && isRight;
}

bool readsFlash() {
    char first = 'x';
    const int fd = open("/dev/mtd4", O_RDONLY);
    const bool isRight = pread(fd, &first, 1, 0) == 1;
    return close(fd) == 0 && isRight;
}

/** What handlers may call, one thing after the other. */
bool useOnce(int turn) {
    switch (turn % 8) {
    case 0:
        return readsText("/tmp/bsp/file", "board");
    case 1:
        return readsText(hostFile, "host");
    case 2:
        return readsRegister();
    case 3:
        return sleepsBriefly();
    case 4:
        return examines("/tmp/bsp/file", 5) && examines(hostFile, 4);
    case 5:
        return writesTo("/tmp/bsp/log");
    case 6:
        return readsFlash();
    default:
        return writesTo("/dev/null") && open("/tmp/bsp/none/x", O_RDONLY) == -1;
    }
}

void handle(int) {
    const int errnoBefore = errno;
    const int turn = handlersRun++;
    expectTrue(useOnce(turn));
    if (turn % 8 != 7) // all of it succeeds
        expectTrue(errno == errnoBefore);
    errno = errnoBefore;
}

void handleSignal(int signal) {
    struct sigaction action = {};
    action.sa_handler = handle;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
}

void setTimer(int microseconds) {
    const itimerval timer = {{0, microseconds}, {0, microseconds}};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

bool listsFolder(const char *path) {
    DIR *folder = opendir(path);
    int entries = 0;
    while (folder != nullptr && readdir(folder) != nullptr)
        ++entries;
    return folder != nullptr && closedir(folder) == 0 && entries > 2;
}

// What the program asks the loader for, when a handler comes.
bool hasFunctions() {
    for (const char *name : {"printf", "qsort", "no_such_function"})
        (void)dlsym(RTLD_DEFAULT, name);
    void *memory = std::malloc(100000);
    std::free(memory);
    return memory != nullptr;
}

/** Does something again and again, until handlers have come often enough. */
void useUntil(int handlers, const std::function<bool()> &use) {
    while (handlersRun < handlers)
        expectTrue(use());
}

// The program's own part in forks. It is told of before the seam tells of its own, so that it runs
// while the seam holds its threads back.
std::atomic<void (*)()> aroundFork;

void beFork() {
    if (void (*call)() = aroundFork.load())
        call();
}

const int toldOfForks = pthread_atfork(beFork, beFork, beFork);

class SignalsTest : public VirtualBoardTest {
  protected:
    void SetUp() override {
        VirtualBoardTest::SetUp();
        writeBoardFile("/tmp/bsp/file", "board");
        const std::string path = host_.path() + "/file";
        const int fd = open(path.c_str(), O_WRONLY | O_CREAT, 0644);
        ASSERT_EQ(write(fd, "host", 4), 4);
        close(fd);
        ASSERT_LT(path.size(), sizeof(hostFile));
        std::strcpy(hostFile, path.c_str());
        handlersRun = 0;
        failuresUnderSignals = 0;
        aroundFork = nullptr;
    }

    /** Runs functions in processes of their own, which must come to their ends. */
    static void runApart(const std::vector<std::function<void()>> &functions) {
        std::vector<pid_t> children;
        for (const auto &function : functions) {
            children.push_back(fork());
            if (children.back() == 0) {
                function();
                _exit(std::min(failuresUnderSignals.load(), 100));
            }
        }
        for (const pid_t child : children) {
            int status = -1;
            if (!comesTrue([&] { return waitpid(child, &status, WNOHANG) == child; })) {
                ADD_FAILURE() << "a process hangs";
                kill(child, SIGKILL);
                waitpid(child, &status, 0);
            }
            EXPECT_EQ(status, 0);
        }
    }

    void expectBoardToWork() {
        EXPECT_EQ(bspCpldSet(40, 0x1234), BSP_OK);
        EXPECT_EQ(devices().cpld.reg[40], 0x1234);
    }

    static constexpr int kHandlers = 200;

  private:
    TemporaryFolder host_;
};

TEST_F(SignalsTest, HandlersUseTheBoardWhileItIsInUse) {
    const auto useAll = [] {
        handleSignal(SIGALRM);
        setTimer(1000);
        // One after the other in one thread, and each in a thread of its own.
        std::thread requests([] { useUntil(kHandlers, readsRegister); });
        std::thread files(
            [] { useUntil(kHandlers, [] { return readsText("/tmp/bsp/file", "board"); }); });
        std::thread hostFiles([] {
            useUntil(kHandlers, [] { return examines(hostFile, 4) && listsFolder("/dev"); });
        });
        int turn = 0;
        useUntil(kHandlers, [&] { return useOnce(turn++) && time(nullptr) > 0; });
        requests.join();
        files.join();
        hostFiles.join();
        setTimer(0);
    };
    runApart({useAll, useAll});
    expectBoardToWork();
}

TEST_F(SignalsTest, EachUseIsInterruptedByEachOther) {
    const auto useOne = [](const std::function<bool()> &use) {
        return [use] {
            handleSignal(SIGALRM);
            setTimer(1000);
            useUntil(64, use);
            setTimer(0);
        };
    };
    runApart({useOne(readsRegister), useOne(sleepsBriefly)});
    runApart({useOne(readsFlash), useOne([] { return listsFolder("/dev"); })});
    runApart({useOne([] { return readsText("/tmp/bsp/file", "board"); }),
              useOne([] { return readsText(hostFile, "host"); })});
    runApart({useOne(hasFunctions), useOne([] { return time(nullptr) > 0; })});
    expectBoardToWork();
}

TEST_F(SignalsTest, HandlersThatComeDuringAForkUseTheBoardAfterIt) {
    ASSERT_EQ(toldOfForks, 0);
    runApart({[] {
        handleSignal(SIGUSR1);
        aroundFork = [] { raise(SIGUSR1); };
        const pid_t child = fork();
        aroundFork = nullptr;
        expectTrue(handlersRun >= 1);
        expectTrue(readsRegister());
        if (child == 0)
            _exit(failuresUnderSignals);
        int status = -1;
        waitpid(child, &status, 0);
        expectTrue(status == 0);
    }});
    expectBoardToWork();
}

TEST_F(SignalsTest, WhatAProgramDoesAroundForksMayUseTheBoard) {
    runApart({[] {
        aroundFork = [] { expectTrue(readsRegister()); };
        const pid_t child = fork();
        aroundFork = nullptr;
        if (child == 0)
            _exit(failuresUnderSignals);
        int status = -1;
        waitpid(child, &status, 0);
        expectTrue(status == 0);
    }});
    expectBoardToWork();
}

#ifdef BSP_TEST_FORKS_OF_THREADS
TEST_F(SignalsTest, ForksAreNotHeldUpByHandlersOfOtherThreads) {
    runApart({[] {
        handleSignal(SIGALRM);
        setTimer(1000);
        std::thread other([] { useUntil(kHandlers, readsRegister); });
        useUntil(kHandlers, [] {
            const pid_t child = fork();
            if (child == 0)
                _exit(readsRegister() ? 0 : 1);
            int status = -1;
            waitpid(child, &status, 0);
            return status == 0;
        });
        other.join();
        setTimer(0);
    }});
    expectBoardToWork();
}

#endif

TEST_F(SignalsTest, TheirHandlersMasksAreAsTheyWere) {
    sigset_t mine, before, after;
    sigemptyset(&mine);
    sigaddset(&mine, SIGUSR2);
    pthread_sigmask(SIG_BLOCK, &mine, &before);
    for (int turn = 0; turn < 8; ++turn)
        EXPECT_TRUE(useOnce(turn)) << turn;
    pthread_sigmask(SIG_SETMASK, &before, &after);
    for (const int signal : {SIGUSR1, SIGUSR2, SIGALRM, SIGTERM, SIGCHLD})
        EXPECT_EQ(sigismember(&after, signal), signal == SIGUSR2 ? 1 : 0) << signal;
}

} // namespace
