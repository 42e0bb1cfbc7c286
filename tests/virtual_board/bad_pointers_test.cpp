// Requests with pointers that are not the program's: they fail as the kernel makes them fail.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/os/seam.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <mtd/mtd-abi.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

namespace {

/** Two pages: the first can be used, the second cannot, or can only be read. */
class Pages {
  public:
    explicit Pages(int protectionOfSecond) {
        size_ = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        void *memory =
            mmap(nullptr, 2 * size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        first_ = static_cast<char *>(memory);
        std::memset(first_, 0, 2 * size_);
        mprotect(first_ + size_, size_, protectionOfSecond);
    }
    Pages(const Pages &) = delete;
    Pages &operator=(const Pages &) = delete;
    ~Pages() { munmap(first_, 2 * size_); }

    char *second() const { return first_ + size_; }
    char *beforeSecond(size_t bytes) const { return second() - bytes; }

  private:
    size_t size_;
    char *first_;
};

class BadPointersTest : public VirtualBoardTest {
  protected:
    void SetUp() override {
        VirtualBoardTest::SetUp();
        writeBoardFile("/tmp/bsp/file", "board");
        node_ = open("/dev/bspHandle", O_RDWR);
        nor_ = open("/dev/mtd4", O_RDWR);
        nand_ = open("/dev/mtd12", O_RDWR);
        trace();
    }
    void TearDown() override {
        close(node_);
        close(nor_);
        close(nand_);
        VirtualBoardTest::TearDown();
    }

    static void *at(uintptr_t address) { return reinterpret_cast<void *>(address); }

    /** Pointers to nothing that could be read: of no page, and to the last byte before none. */
    std::vector<void *> unreadable(size_t size) const {
        return {nullptr, at(1), at(0x12345), gone_.second(), gone_.beforeSecond(size - 1)};
    }
    /** Pointers to nothing that could be written. */
    std::vector<void *> unwritable(size_t size) const {
        std::vector<void *> all = unreadable(size);
        all.push_back(fixed_.second());
        all.push_back(fixed_.beforeSecond(size - 1));
        return all;
    }
    std::vector<const char *> noPaths() const {
        std::memset(gone_.beforeSecond(8), 'x', 8);
        std::memcpy(gone_.beforeSecond(8), "/tmp/", 5);
        return {static_cast<const char *>(at(1)), static_cast<const char *>(at(0x12345)),
                gone_.second(), gone_.beforeSecond(8), gone_.beforeSecond(3)};
    }

    static void expectBadAddress(long result, const char *what, const void *pointer) {
        const int error = errno;
        EXPECT_EQ(result, -1) << what << " of " << pointer;
        EXPECT_EQ(error, EFAULT) << what << " of " << pointer;
    }

    Pages gone_{PROT_NONE}, fixed_{PROT_READ};
    int node_ = -1, nor_ = -1, nand_ = -1;
};

TEST_F(BadPointersTest, PathsThatCannotBeReadAreBadAddresses) {
    using Use = std::function<long(const char *)>;
    static char buffer[256];
    static struct stat info;
    static struct statvfs fileSystem;
    const std::pair<const char *, Use> uses[] = {
        {"open", [](const char *path) { return open(path, O_RDONLY); }},
        {"openat", [](const char *path) { return openat(AT_FDCWD, path, O_RDONLY); }},
        {"creat", [](const char *path) { return creat(path, 0644); }},
        {"fopen", [](const char *path) { return fopen(path, "r") == nullptr ? -1 : 0; }},
        {"opendir", [](const char *path) { return opendir(path) == nullptr ? -1 : 0; }},
        {"stat", [](const char *path) { return stat(path, &info); }},
        {"lstat", [](const char *path) { return lstat(path, &info); }},
        {"fstatat", [](const char *path) { return fstatat(AT_FDCWD, path, &info, 0); }},
        {"access", [](const char *path) { return access(path, F_OK); }},
        {"faccessat", [](const char *path) { return faccessat(AT_FDCWD, path, F_OK, 0); }},
        {"unlink", [](const char *path) { return unlink(path); }},
        {"unlinkat", [](const char *path) { return unlinkat(AT_FDCWD, path, 0); }},
        {"rmdir", [](const char *path) { return rmdir(path); }},
        {"remove", [](const char *path) { return remove(path); }},
        {"mkdir", [](const char *path) { return mkdir(path, 0755); }},
        {"readlink", [](const char *path) { return readlink(path, buffer, sizeof(buffer)); }},
        {"chdir", [](const char *path) { return chdir(path); }},
        {"chmod", [](const char *path) { return chmod(path, 0644); }},
        {"truncate", [](const char *path) { return truncate(path, 0); }},
        {"statvfs", [](const char *path) { return statvfs(path, &fileSystem); }},
        {"rename from", [](const char *path) { return rename(path, "/tmp/bsp/x"); }},
        {"rename to", [](const char *path) { return rename("/tmp/bsp/file", path); }},
        {"link from", [](const char *path) { return link(path, "/tmp/bsp/x"); }},
        {"link to", [](const char *path) { return link("/tmp/bsp/file", path); }},
        {"symlink content", [](const char *path) { return symlink(path, "/tmp/bsp/x"); }},
        {"symlink", [](const char *path) { return symlink("/tmp/bsp/file", path); }},
    };
    for (const auto &[name, use] : uses) {
        for (const char *path : noPaths())
            expectBadAddress(use(path), name, path);
    }
    const char *none = nullptr;
    const char *volatile hidden = none; // from the compiler, which knows better
    expectBadAddress(open(hidden, O_RDONLY), "open", nullptr);
    expectBadAddress(stat(hidden, &info), "stat", nullptr);
    EXPECT_EQ(readBoardFile("/tmp/bsp/file"), "board");
    EXPECT_EQ(trace(), Lines{});
}

TEST_F(BadPointersTest, PathsMayEndWithTheMemory) {
    char *path = gone_.beforeSecond(sizeof("/tmp/bsp/file"));
    std::strcpy(path, "/tmp/bsp/file");
    EXPECT_EQ(access(path, R_OK), 0);
    char *host = gone_.beforeSecond(sizeof("/tmp"));
    std::strcpy(host, "/tmp");
    EXPECT_EQ(access(host, R_OK), 0);
}

TEST_F(BadPointersTest, WhatIsExaminedOfBoardAndHostGoesToGoodMemoryOnly) {
#if __SIZEOF_LONG__ == 8 // elsewhere the C library stores it itself
    for (void *place : unwritable(sizeof(struct stat))) {
        if (place == nullptr)
            continue; // which the compiler knows not to be allowed
        auto *info = static_cast<struct stat *>(place);
        expectBadAddress(fstatat(AT_FDCWD, "/tmp/bsp/file", info, 0), "fstatat", place);
        expectBadAddress(fstatat(AT_FDCWD, "/tmp", info, 0), "fstatat", place);
    }
#endif
    for (void *place : unwritable(16)) {
        expectBadAddress(readlink("/proc/self/exe", static_cast<char *>(place), 16), "readlink",
                         place);
    }
}

TEST_F(BadPointersTest, RecordsHaveToBeReadAndWritten) {
    for (void *record : unreadable(sizeof(BspIoctlRecord)))
        expectBadAddress(ioctl(node_, BSP_REQ_CPLD_READ, record), "ioctl", record);
    EXPECT_EQ(requests(), Lines{}); // nobody knows what was asked for
}

TEST_F(BadPointersTest, SlotsThatCannotBeWrittenAreBadAddressesAndShow) {
    for (void *slot : unwritable(sizeof(uint32_t))) {
        BspIoctlRecord record = {};
        record.slot[0] = 1;
        record.slot[1] = reinterpret_cast<uintptr_t>(slot);
        EXPECT_EQ(ioctl(node_, BSP_REQ_CPLD_READ, &record), 0) << slot;
        EXPECT_EQ(static_cast<int32_t>(record.result), -EFAULT) << slot;
        const Lines lines = requests();
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_NE(lines[0].find("CPLD read"), std::string::npos) << lines[0];
        EXPECT_NE(lines[0].find("-14"), std::string::npos) << lines[0];
    }
}

TEST_F(BadPointersTest, DataOfI2cTransfersHasToBeThere) {
    constexpr size_t kLength = 8;
    for (const uint32_t code : {BSP_REQ_I2C_READ, BSP_REQ_I2C_WRITE}) {
        const bool isRead = code == BSP_REQ_I2C_READ;
        for (void *data : isRead ? unwritable(kLength) : unreadable(kLength)) {
            BspIoctlRecord record = {};
            record.slot[1] = 0x50;
            record.slot[3] = 1;
            record.slot[4] = reinterpret_cast<uintptr_t>(data);
            record.slot[5] = kLength;
            EXPECT_EQ(ioctl(node_, code, &record), 0) << data;
            EXPECT_NE(static_cast<int32_t>(record.result), 0) << data;
            EXPECT_EQ(requests().size(), 1u);
        }
    }
}

TEST_F(BadPointersTest, FlashReadsHaveToHaveSomewhereToGo) {
    constexpr size_t kLength = 4096;
    for (void *data : unwritable(kLength)) {
        ASSERT_EQ(lseek(nor_, 0x100, SEEK_SET), 0x100);
        expectBadAddress(read(nor_, data, kLength), "read", data);
        EXPECT_EQ(lseek(nor_, 0, SEEK_CUR), 0x100);
        expectBadAddress(pread(nor_, data, kLength, 0), "pread", data);
        const iovec part = {data, kLength};
        expectBadAddress(readv(nor_, &part, 1), "readv", data);
        expectBadAddress(preadv(nor_, &part, 1, 0), "preadv", data);
        const Lines lines = requests();
        ASSERT_EQ(lines.size(), 4u);
        for (const std::string &line : lines)
            EXPECT_NE(line.find("Bad address"), std::string::npos) << line;
    }
}

TEST_F(BadPointersTest, FlashWritesOfNothingProgramNothing) {
    constexpr size_t kLength = 4096;
    std::string before(0x2000, '\0');
    ASSERT_EQ(pread(nor_, before.data(), before.size(), 0), 0x2000);
    requests();
    for (void *data : unreadable(kLength)) {
        ASSERT_EQ(lseek(nor_, 0, SEEK_SET), 0);
        expectBadAddress(write(nor_, data, kLength), "write", data);
        EXPECT_EQ(lseek(nor_, 0, SEEK_CUR), 0);
        expectBadAddress(pwrite(nor_, data, kLength, 0), "pwrite", data);
        const iovec part = {data, kLength};
        expectBadAddress(writev(nor_, &part, 1), "writev", data);
        expectBadAddress(pwritev(nor_, &part, 1, 0), "pwritev", data);
        const Lines lines = requests();
        ASSERT_EQ(lines.size(), 4u);
        for (const std::string &line : lines)
            EXPECT_NE(line.find("Bad address"), std::string::npos) << line;
    }
    std::string after(before.size(), '\0');
    ASSERT_EQ(pread(nor_, after.data(), after.size(), 0), 0x2000);
    EXPECT_EQ(after, before);
}

TEST_F(BadPointersTest, ListsOfBuffersHaveToBeThere) {
    for (void *vector : unreadable(2 * sizeof(iovec))) {
        expectBadAddress(readv(nor_, static_cast<iovec *>(vector), 2), "readv", vector);
        expectBadAddress(writev(nor_, static_cast<iovec *>(vector), 2), "writev", vector);
    }
    char byte = 0;
    iovec parts[2] = {{&byte, 1}, {&byte, SIZE_MAX}};
    EXPECT_EQ(readv(nor_, parts, 2), -1);
    EXPECT_EQ(errno, EINVAL);
    const volatile int tooFew = -1; // from the compiler, which knows better
    EXPECT_EQ(readv(nor_, parts, tooFew), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(requests(), Lines{});
}

TEST_F(BadPointersTest, ArgumentsOfFlashIoctlsHaveToBeThere) {
    const struct {
        const char *name;
        unsigned long code;
        size_t size;
        bool isWritten;
    } rows[] = {
        {"MEMGETINFO", MEMGETINFO, sizeof(mtd_info_user), true},
        {"MEMERASE", MEMERASE, sizeof(erase_info_user), false},
        {"MEMERASE64", MEMERASE64, sizeof(erase_info_user64), false},
        {"MEMGETBADBLOCK", MEMGETBADBLOCK, sizeof(int64_t), false},
        {"MEMSETBADBLOCK", MEMSETBADBLOCK, sizeof(int64_t), false},
        {"ECCGETSTATS", ECCGETSTATS, sizeof(mtd_ecc_stats), true},
    };
    const vb::Devices before = devices();
    for (const auto &row : rows) {
        for (void *argument : row.isWritten ? unwritable(row.size) : unreadable(row.size))
            expectBadAddress(ioctl(nand_, row.code, argument), row.name, argument);
    }
    EXPECT_EQ(std::memcmp(before.flash, devices().flash, sizeof(before.flash)), 0);
}

TEST_F(BadPointersTest, TimesHaveToBeThere) {
    for (void *place : unreadable(sizeof(timespec))) {
        const auto *time = static_cast<const timespec *>(place);
#if __SIZEOF_LONG__ == 8 // elsewhere the C library reads them itself
        expectBadAddress(nanosleep(time, nullptr), "nanosleep", place);
        EXPECT_EQ(clock_nanosleep(CLOCK_MONOTONIC, 0, time, nullptr), EFAULT) << place;
#endif
        expectBadAddress(clock_settime(CLOCK_REALTIME, time), "clock_settime", place);
    }
    for (void *place : unreadable(sizeof(timeval))) {
        if (place != nullptr)
            expectBadAddress(settimeofday(static_cast<const timeval *>(place), nullptr),
                             "settimeofday", place);
    }
    EXPECT_EQ(now(), 0u);
    EXPECT_EQ(board().clock.systemOffsetNs, 0);
    EXPECT_EQ(trace(), Lines{});
}

} // namespace
