// Programs use the board, and the host through the seam, on stacks as small as the system allows.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/os/seam.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <iterator>
#include <linux/limits.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

namespace {

constexpr char kPattern = 0x5A;

/** A stack with a page below it that nothing may touch. */
class SmallStack {
  public:
    explicit SmallStack(size_t size) : size_(size), page_(static_cast<size_t>(getpagesize())) {
        memory_ = static_cast<char *>(mmap(nullptr, page_ + size_, PROT_READ | PROT_WRITE,
                                           MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(memory_, page_, PROT_NONE);
        clear();
    }
    SmallStack(const SmallStack &) = delete;
    SmallStack &operator=(const SmallStack &) = delete;
    ~SmallStack() { munmap(memory_, page_ + size_); }

    char *start() const { return memory_ + page_; }
    size_t size() const { return size_; }
    void clear() const { std::memset(start(), kPattern, size_); }
    size_t used() const {
        const char *end = start() + size_;
        return static_cast<size_t>(
            end - std::find_if(start(), start() + size_, [](char c) { return c != kPattern; }));
    }

  private:
    size_t size_, page_;
    char *memory_;
};

// What is called, with everything at hand so that it needs no stack itself.
char boardFilePath[] = "/tmp/bsp/file";
char hostFilePath[256];
char linkPath[256];          // from the host to the board
char longPath[PATH_MAX];     // to the file on the board
char longHostPath[PATH_MAX]; // to that on the host
uint8_t transferred[4096];
struct stat examinedStatus;
BspIoctlRecord requestRecord;
uint32_t registerValue;
int nodeFd, flashFd, hostFd, boardFd;
timespec briefly = {0, 1000};

bool opens(const char *path) {
    const int fd = open(path, O_RDONLY);
    return fd >= 0 && close(fd) == 0;
}

bool examines(const char *path) {
    return stat(path, &examinedStatus) == 0 && lstat(path, &examinedStatus) == 0 &&
           fstatat(AT_FDCWD, path, &examinedStatus, 0) == 0 && access(path, R_OK) == 0;
}

bool lists(const char *path) {
    DIR *folder = opendir(path);
    bool isThere = folder != nullptr;
    while (isThere && readdir(folder) != nullptr) {
    }
    return isThere && closedir(folder) == 0;
}

bool sendsI2c(uint32_t code) {
    requestRecord = {};
    requestRecord.slot[1] = 0x50;
    requestRecord.slot[3] = 1;
    requestRecord.slot[4] = reinterpret_cast<uintptr_t>(transferred);
    requestRecord.slot[5] = sizeof(transferred);
    return ioctl(nodeFd, code, &requestRecord) == 0;
}

struct StackUse {
    const char *name;
    bool (*call)();
    bool isForHandlers; // listing a folder is not
};

const StackUse kStackUses[] = {
    {"nothing", [] { return true; }, true},
    {"open on the board", [] { return opens(boardFilePath); }, true},
    {"open on the host", [] { return opens(hostFilePath); }, true},
    {"open through a link", [] { return opens(linkPath); }, true},
    {"open of a long path", [] { return opens(longPath); }, true},
    {"open of a long path of the host", [] { return opens(longHostPath); }, true},
    {"open of nothing", [] { return !opens("/tmp/bsp/none/x") && !opens("/none/x"); }, true},
    {"stat on the board", [] { return examines(boardFilePath); }, true},
    {"stat on the host", [] { return examines(hostFilePath); }, true},
    {"stat through a link", [] { return examines(linkPath); }, true},
    {"stat of a long path", [] { return examines(longPath) && examines(longHostPath); }, true},
    {"read of a file",
     [] {
         return pread(hostFd, transferred, 4, 0) == 4 && read(boardFd, transferred, 0) == 0 &&
                write(boardFd, "x", 1) == 1;
     },
     true},
    {"CPLD read",
     [] {
         requestRecord = {};
         requestRecord.slot[0] = 1;
         requestRecord.slot[1] = reinterpret_cast<uintptr_t>(&registerValue);
         return ioctl(nodeFd, BSP_REQ_CPLD_READ, &requestRecord) == 0 && registerValue == 0x0709;
     },
     true},
    {"I2C read of 4096 bytes", [] { return sendsI2c(BSP_REQ_I2C_READ); }, true},
    {"I2C write of 4096 bytes", [] { return sendsI2c(BSP_REQ_I2C_WRITE); }, true},
    {"flash read", [] { return pread(flashFd, transferred, sizeof(transferred), 0) == 4096; },
     true},
    {"flash write", [] { return pwrite(flashFd, transferred, sizeof(transferred), 0) == 4096; },
     true},
    {"sleep",
     [] {
         return sleep(1) == 0 && usleep(1) == 0 && nanosleep(&briefly, nullptr) == 0 &&
                clock_nanosleep(CLOCK_MONOTONIC, 0, &briefly, nullptr) == 0;
     },
     true},
    {"time", [] { return time(nullptr) > 0; }, true},
    {"opendir on the host", [] { return lists("/dev") && lists("/etc"); }, false},
    {"opendir on the board", [] { return lists("/tmp/bsp"); }, false},
};

bool (*callOnAlternateStack)();
bool hasSucceeded;

void callInHandler(int) {
    hasSucceeded = callOnAlternateStack();
}

void *callInThread(void *use) {
    return static_cast<const StackUse *>(use)->call() ? use : nullptr;
}

class SmallStacksTest : public VirtualBoardTest {
  protected:
    void SetUp() override {
        VirtualBoardTest::SetUp();
        writeBoardFile(boardFilePath, "board");
        place(hostFilePath, host_.path() + "/file");
        close(open(hostFilePath, O_WRONLY | O_CREAT, 0644));
        ASSERT_EQ(truncate(hostFilePath, 4), 0);
        place(linkPath, host_.path() + "/link");
        ASSERT_EQ(symlink(boardFilePath, linkPath), 0);
        std::string detour;
        while (detour.size() < 3900)
            detour += "/usr/..";
        place(longPath, detour + boardFilePath);
        place(longHostPath, detour + hostFilePath);
        nodeFd = open("/dev/bspHandle", O_RDWR);
        flashFd = open("/dev/mtd4", O_RDWR);
        hostFd = open(hostFilePath, O_RDWR);
        boardFd = open(boardFilePath, O_RDWR);
        // What is called for the first time needs more, since the loader looks it up.
        for (const StackUse &use : kStackUses)
            EXPECT_TRUE(use.call()) << use.name;
    }
    void TearDown() override {
        for (const int fd : {nodeFd, flashFd, hostFd, boardFd})
            close(fd);
        VirtualBoardTest::TearDown();
    }

    template <size_t size>
    static void place(char (&to)[size], const std::string &path) {
        ASSERT_LT(path.size(), size);
        std::strcpy(to, path.c_str());
    }

    static void expectThrift(const char *name, size_t used) {
        // How much is used grows with what sanitizers watch.
#ifndef BSP_TEST_SANITIZED
        EXPECT_LT(used, 2000u) << name;
#endif
        if (std::getenv("BSP_TEST_STACKS") != nullptr)
            std::printf("%5zu %s\n", used, name);
    }

  private:
    TemporaryFolder host_;
};

TEST_F(SmallStacksTest, ThreadsWithTheSmallestStacks) {
    const SmallStack stack(static_cast<size_t>(sysconf(_SC_THREAD_STACK_MIN)));
    size_t baseline = 0;
    for (const StackUse &use : kStackUses) {
        stack.clear();
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        ASSERT_EQ(pthread_attr_setstack(&attributes, stack.start(), stack.size()), 0);
        pthread_t thread;
        ASSERT_EQ(pthread_create(&thread, &attributes, callInThread, const_cast<StackUse *>(&use)),
                  0);
        void *result = nullptr;
        pthread_join(thread, &result);
        pthread_attr_destroy(&attributes);
        EXPECT_NE(result, nullptr) << use.name;
        if (baseline == 0)
            baseline = stack.used();
        expectThrift(use.name, stack.used() - baseline);
    }
}

TEST_F(SmallStacksTest, HandlersOnStacksOfTheirOwn) {
#ifdef BSP_TEST_SANITIZED
    constexpr size_t kUsualSize = 16384; // with what the sanitizer's own functions need
#else
    constexpr size_t kUsualSize = 8192;
#endif
    ASSERT_LT(static_cast<size_t>(sysconf(_SC_MINSIGSTKSZ)), kUsualSize);
    const SmallStack stack(kUsualSize);
    stack_t alternate = {}, before = {};
    alternate.ss_sp = stack.start();
    alternate.ss_size = stack.size();
    ASSERT_EQ(sigaltstack(&alternate, &before), 0);
    struct sigaction action = {}, actionBefore = {};
    action.sa_handler = callInHandler;
    action.sa_flags = SA_ONSTACK;
    sigaction(SIGUSR1, &action, &actionBefore);
    size_t baseline = 0;
    for (const StackUse &use : kStackUses) {
        if (!use.isForHandlers)
            continue;
        stack.clear();
        callOnAlternateStack = use.call;
        hasSucceeded = false;
        raise(SIGUSR1);
        EXPECT_TRUE(hasSucceeded) << use.name;
        if (baseline == 0)
            baseline = stack.used();
        expectThrift(use.name, stack.used() - baseline);
    }
    sigaction(SIGUSR1, &actionBefore, nullptr);
    sigaltstack(&before, nullptr);
}

} // namespace
