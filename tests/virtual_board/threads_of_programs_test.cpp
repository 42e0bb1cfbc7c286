// Threads and children of programs that use the board at once, end, and are cancelled.

#include "bsp.h"
#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/os/seam.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <functional>
#include <iterator>
#include <pthread.h>
#include <sched.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

bool hasDeviceId() {
    uint16_t value = 0;
    return bspCpldGet(1, &value) == BSP_OK && value == 0x0709;
}

bool hasFile() {
    char text[8] = {};
    const int fd = open("/tmp/bsp/file", O_RDONLY);
    const bool isRight = read(fd, text, sizeof(text)) == 5;
    return close(fd) == 0 && isRight && std::strcmp(text, "board") == 0;
}

class ThreadsOfProgramsTest : public VirtualBoardTest {
  protected:
    void SetUp() override {
        VirtualBoardTest::SetUp();
        writeBoardFile("/tmp/bsp/file", "board");
    }

    /** Does something in a process of its own, which must come to its end. */
    static void expectApart(const std::function<bool()> &isRight) {
        const pid_t child = fork();
        if (child == 0)
            _exit(isRight() ? 0 : 1);
        int status = -1;
        if (!comesTrue([&] { return waitpid(child, &status, WNOHANG) == child; })) {
            ADD_FAILURE() << "a process hangs";
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
        }
        EXPECT_EQ(status, 0);
    }

    static bool endsWell(pid_t child) {
        int status = -1;
        return waitpid(child, &status, 0) == child && status == 0;
    }
};

#ifdef BSP_TEST_FORKS_OF_THREADS
TEST_F(ThreadsOfProgramsTest, ForkedWhileTheyWork) {
    expectApart([] {
        std::atomic<bool> isOver = false;
        std::atomic<int> failures = 0, rounds = 0;
        std::thread worker([&] {
            for (; !isOver; ++rounds)
                failures += hasDeviceId() && hasFile() ? 0 : 1;
        });
        // A starting thread takes memory, and sanitizers do not keep that apart from forks.
        while (rounds == 0)
            sched_yield();
        for (int i = 0; i < 50; ++i) {
            const pid_t child = fork();
            if (child == 0) {
                bool isRight = false;
                std::thread([&] { isRight = hasDeviceId(); }).join();
                _exit(isRight && hasFile() ? 0 : 1);
            }
            failures += hasDeviceId() ? 0 : 1;
            failures += endsWell(child) ? 0 : 1;
        }
        isOver = true;
        worker.join();
        return failures == 0;
    });
    EXPECT_TRUE(hasDeviceId());
}

#endif

TEST_F(ThreadsOfProgramsTest, OthersAreStartedMeanwhile) {
    expectApart([] {
        std::atomic<bool> isOver = false;
        std::atomic<int> failures = 0;
        std::thread worker([&] {
            while (!isOver)
                failures += hasDeviceId() && hasFile() ? 0 : 1;
        });
        char name[] = "/bin/true";
        char *arguments[] = {name, nullptr};
        for (int i = 0; i < 20; ++i) {
            pid_t child = -1;
            failures += posix_spawn(&child, name, nullptr, nullptr, arguments, environ);
            failures += endsWell(child) ? 0 : 1;
            child = vfork();
            if (child == 0) {
                execv(name, arguments);
                _exit(127);
            }
            failures += endsWell(child) ? 0 : 1;
        }
        isOver = true;
        worker.join();
        return failures == 0;
    });
}

TEST_F(ThreadsOfProgramsTest, EndWhileOthersWork) {
    expectApart([] {
        std::atomic<int> failures = 0;
        std::thread steady([&] {
            for (int i = 0; i < 300; ++i)
                failures += hasDeviceId() ? 0 : 1;
        });
        for (int i = 0; i < 100; ++i) {
            pthread_t thread;
            pthread_create(
                &thread, nullptr,
                [](void *count) -> void * {
                    *static_cast<std::atomic<int> *>(count) += hasDeviceId() && hasFile() ? 0 : 1;
                    pthread_exit(nullptr);
                },
                &failures);
            if (i % 2 == 0)
                pthread_detach(thread);
            else
                pthread_join(thread, nullptr);
        }
        steady.join();
        return failures == 0;
    });
}

// A cancelled thread leaves functions without their ends, which AddressSanitizer takes for errors.
#ifndef BSP_TEST_SANITIZED

/** Starts a thread that does one thing for ever, cancels it, and uses the board afterwards. */
bool endsWhenCancelled(void (*use)(), int type) {
    struct Start {
        void (*use)();
        int type;
        std::atomic<int> *hasBegun;
    };
    for (int i = 0; i < 20; ++i) {
        std::atomic<int> hasBegun = 0;
        Start start = {use, type, &hasBegun};
        pthread_t thread;
        pthread_create(
            &thread, nullptr,
            [](void *memory) -> void * {
                const Start mine = *static_cast<const Start *>(memory);
                mine.use();
                *mine.hasBegun = 1;
                pthread_setcanceltype(mine.type, nullptr);
                for (;;)
                    mine.use();
            },
            &start);
        while (i % 4 != 0 && hasBegun == 0) // or before it has
            sched_yield();
        pthread_cancel(thread);
        void *result = nullptr;
        pthread_join(thread, &result);
        if (result != PTHREAD_CANCELED || !hasDeviceId())
            return false;
    }
    return true;
}

void useOpen() {
    const int fd = open("/tmp/bsp/file", O_RDONLY);
    if (fd >= 0)
        close(fd);
}

void useSleep() {
    sleep(1);
}

void useNanosleep() {
    const timespec time = {0, 1000};
    nanosleep(&time, nullptr);
}

int sharedFlash = -1, sharedNode = -1;

void useFlash() {
    char byte = 0;
    (void)!pread(sharedFlash, &byte, 1, 0);
}

void useRequest() {
    static BspIoctlRecord record;
    static uint32_t value;
    BspIoctlRecord mine = record;
    mine.slot[0] = 1;
    mine.slot[1] = reinterpret_cast<uintptr_t>(&value);
    ioctl(sharedNode, BSP_REQ_CPLD_READ, &mine);
}

void useRequestAndEnd() {
    useRequest();
    pthread_testcancel(); // as a request is no point where threads can be cancelled
}

TEST_F(ThreadsOfProgramsTest, CancelledWhereTheyMay) {
    sharedFlash = open("/dev/mtd4", O_RDONLY);
    sharedNode = open("/dev/bspHandle", O_RDONLY);
    for (void (*use)() : {useOpen, useSleep, useNanosleep, useFlash, useRequestAndEnd})
        expectApart([=] { return endsWhenCancelled(use, PTHREAD_CANCEL_DEFERRED); });
    close(sharedFlash);
    close(sharedNode);
    EXPECT_TRUE(hasDeviceId());
}

TEST_F(ThreadsOfProgramsTest, CancelledAnywhereTheyLeaveTheBoardToOthers) {
    sharedFlash = open("/dev/mtd4", O_RDONLY);
    sharedNode = open("/dev/bspHandle", O_RDONLY);
    for (void (*use)() : {useSleep, useFlash, useRequest})
        expectApart([=] { return endsWhenCancelled(use, PTHREAD_CANCEL_ASYNCHRONOUS); });
    close(sharedFlash);
    close(sharedNode);
    EXPECT_TRUE(hasDeviceId());
}

#endif

} // namespace
