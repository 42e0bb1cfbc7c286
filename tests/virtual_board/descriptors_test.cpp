// Descriptors of the board's nodes and files, in all the ways that a program can come by one.

#include "bsp.h"
#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/os/seam.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <glob.h>
#include <mtd/mtd-abi.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class DescriptorsTest : public VirtualBoardTest {
  protected:
    void SetUp() override {
        VirtualBoardTest::SetUp();
        writeBoardFile("/tmp/bsp/file", "board");
        close(open(hostFile().c_str(), O_WRONLY | O_CREAT, 0644));
        ASSERT_EQ(truncate(hostFile().c_str(), 7), 0);
    }

    std::string hostFile() const { return host_.path() + "/file"; }
    const std::string &hostFolder() const { return host_.path(); }

    static bool isDriver(int fd) {
        uint32_t value = 0;
        BspIoctlRecord record = {};
        record.slot[0] = 1;
        record.slot[1] = reinterpret_cast<uintptr_t>(&value);
        return ioctl(fd, BSP_REQ_CPLD_READ, &record) == 0 && value == 0x0709;
    }

    static bool isFlash(int fd) {
        mtd_info_user info = {};
        return ioctl(fd, MEMGETINFO, &info) == 0 && info.size > 0;
    }

    static off_t sizeOf(int fd) {
        struct stat info = {};
        return fstat(fd, &info) == 0 ? info.st_size : -1;
    }

    static std::string linkOf(int fd) { return "/proc/self/fd/" + std::to_string(fd); }

    /** Does something in a child, which has to find it right. */
    static void expectInChild(const std::function<bool()> &isRight) {
        const pid_t child = fork();
        if (child == 0)
            _exit(isRight() ? 0 : 1);
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }

  private:
    TemporaryFolder host_;
};

TEST_F(DescriptorsTest, CopiesAreOfTheSameFile) {
    const int driver = open("/dev/bspHandle", O_RDWR);
    const int flash = open("/dev/mtd4", O_RDWR);
    const int other = open(hostFile().c_str(), O_RDWR);
    const std::pair<const char *, std::function<int(int, int)>> ways[] = {
        {"dup", [](int fd, int) { return dup(fd); }},
        {"dup2", [](int fd, int to) { return dup2(fd, to); }},
        {"dup3", [](int fd, int to) { return dup3(fd, to, O_CLOEXEC); }},
        {"F_DUPFD", [](int fd, int) { return fcntl(fd, F_DUPFD, 100); }},
        {"F_DUPFD_CLOEXEC", [](int fd, int) { return fcntl(fd, F_DUPFD_CLOEXEC, 100); }},
        {"raw dup3", [](int fd, int to) { return static_cast<int>(syscall(SYS_dup3, fd, to, 0)); }},
        {"raw fcntl",
         [](int fd, int) {
#ifdef SYS_fcntl64
             return static_cast<int>(syscall(SYS_fcntl64, fd, F_DUPFD, 100));
#else
             return static_cast<int>(syscall(SYS_fcntl, fd, F_DUPFD, 100));
#endif
         }},
    };
    for (const auto &[name, copyTo] : ways) {
        // Over a number that was another's, and back.
        int number = dup(other);
        const auto replace = [&, copy = copyTo](int fd) {
            const int made = copy(fd, number);
            if (made != number)
                close(number);
            number = made;
        };
        replace(driver);
        EXPECT_TRUE(isDriver(number)) << name;
        replace(flash);
        EXPECT_TRUE(isFlash(number)) << name;
        replace(other);
        EXPECT_FALSE(isDriver(number) || isFlash(number)) << name;
        EXPECT_EQ(sizeOf(number), 7) << name;
        replace(driver);
        EXPECT_TRUE(isDriver(number)) << name;
        close(number);
        EXPECT_FALSE(isDriver(number)) << name;
    }
    close(driver);
    close(flash);
    close(other);
}

TEST_F(DescriptorsTest, NumbersAreReused) {
    for (int round = 0; round < 3; ++round) {
        const int driver = open("/dev/bspHandle", O_RDWR);
        EXPECT_TRUE(isDriver(driver));
        close(driver);
        const int file = open(hostFile().c_str(), O_RDWR);
        EXPECT_EQ(file, driver);
        EXPECT_FALSE(isDriver(file));
        EXPECT_EQ(sizeOf(file), 7);
        close(file);
        const int flash = open("/dev/mtd4", O_RDWR);
        EXPECT_EQ(flash, file);
        EXPECT_TRUE(isFlash(flash));
        syscall(SYS_close, flash);
        const int own = open("/tmp/bsp/file", O_RDWR);
        EXPECT_EQ(own, flash);
        EXPECT_FALSE(isFlash(own));
        EXPECT_EQ(sizeOf(own), 5);
        close(own);
    }
}

TEST_F(DescriptorsTest, RangesAreClosed) {
    expectInChild([] {
        const int low = open("/dev/bspHandle", O_RDWR);
        const int high = fcntl(low, F_DUPFD, 200);
        if (close_range(100, ~0u, 0) != 0)
            return errno == ENOSYS; // an emulator that has none
        return isDriver(low) && !isDriver(high) && open("/dev/bspHandle", O_RDWR) >= 0;
    });
    expectInChild([] {
        const int low = open("/dev/bspHandle", O_RDWR);
        const int high = fcntl(low, F_DUPFD, 200);
        closefrom(low);
        const bool areGone = !isDriver(low) && !isDriver(high);
        return areGone && open("/dev/bspHandle", O_RDWR) == low && isDriver(low);
    });
}

TEST_F(DescriptorsTest, DescriptorsComeOverSockets) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    const int sent[] = {open("/dev/bspHandle", O_RDWR), open("/dev/mtd4", O_RDWR),
                        open(hostFile().c_str(), O_RDWR)};
    char byte = 'x';
    iovec data = {&byte, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(sent))] = {};
    msghdr message = {};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof(control);
    cmsghdr *header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(sent));
    std::memcpy(CMSG_DATA(header), sent, sizeof(sent));
    ASSERT_EQ(sendmsg(ends[0], &message, 0), 1);
    for (const int fd : sent)
        close(fd);

    // To a process that has had none so far
    vb::FolderError error = {};
    ASSERT_TRUE(vb::attachBoard(boardFolder().c_str(), error)) << error.text;
    std::memset(control, 0, sizeof(control));
    message.msg_controllen = sizeof(control);
    ASSERT_EQ(recvmsg(ends[1], &message, 0), 1);
    int received[3] = {-1, -1, -1};
    header = CMSG_FIRSTHDR(&message);
    ASSERT_NE(header, nullptr);
    std::memcpy(received, CMSG_DATA(header), sizeof(received));
    EXPECT_TRUE(isDriver(received[0]));
    EXPECT_TRUE(isFlash(received[1]));
    EXPECT_EQ(sizeOf(received[2]), 7);
    EXPECT_FALSE(isDriver(received[2]));
    for (const int fd : received)
        close(fd);
    close(ends[0]);
    close(ends[1]);
}

TEST_F(DescriptorsTest, InheritedNodesAreKnownUnderAnyNumber) {
    const int driver = open("/dev/bspHandle", O_RDWR);
    for (const int number : {0, 9, 321}) {
        expectInChild([&] {
            dup2(driver, number);
            closefrom(number + 1); // and all that has been known
            vb::FolderError error = {};
            return vb::attachBoard(boardFolder().c_str(), error) && isDriver(number);
        });
    }
    close(driver);
}

TEST_F(DescriptorsTest, LinksOfDescriptorsLeadToThem) {
    const int driver = open("/dev/bspHandle", O_RDWR);
    const int flash = open("/dev/mtd4", O_RDWR);
    const int own = open("/tmp/bsp/file", O_RDWR);
    const int other = open(hostFile().c_str(), O_RDWR);
    for (const std::string folder : {"/proc/self/fd/", "/dev/fd/", "/proc/thread-self/fd/"}) {
        const auto reopened = [&](int fd) {
            return open((folder + std::to_string(fd)).c_str(), O_RDONLY);
        };
        const int again[] = {reopened(driver), reopened(flash), reopened(own), reopened(other)};
        EXPECT_TRUE(isDriver(again[0])) << folder;
        EXPECT_TRUE(isFlash(again[1])) << folder;
        EXPECT_EQ(sizeOf(again[2]), 5) << folder;
        EXPECT_EQ(sizeOf(again[3]), 7) << folder;
        for (const int fd : again)
            close(fd);
    }
    char target[64] = {};
    EXPECT_EQ(readlink(linkOf(driver).c_str(), target, sizeof(target) - 1), 14);
    EXPECT_STREQ(target, "/dev/bspHandle");
    std::memset(target, 0, sizeof(target));
    EXPECT_EQ(readlink(linkOf(driver).c_str(), target, 6), 6); // the board's path, cut short
    EXPECT_STREQ(target, "/dev/b");
    for (const int fd : {driver, flash, own, other})
        close(fd);
}

TEST_F(DescriptorsTest, TheWorkingFolderIsToldInTheRoomThatItTakes) {
    ASSERT_EQ(chdir("/tmp/bsp"), 0);
    char path[sizeof("/tmp/bsp")] = {};
    EXPECT_EQ(getcwd(path, sizeof(path)), path) << std::strerror(errno);
    EXPECT_STREQ(path, "/tmp/bsp");
    EXPECT_EQ(getcwd(path, sizeof(path) - 1), nullptr);
    EXPECT_EQ(errno, ERANGE);
    ASSERT_EQ(chdir("/usr"), 0);
    EXPECT_EQ(getcwd(path, 4), nullptr);
    EXPECT_EQ(errno, ERANGE);
    ASSERT_EQ(chdir("/"), 0);
}

TEST_F(DescriptorsTest, LinksOfWhatHasNoPathLeadToIt) {
    const int deleted = open("/tmp/bsp/deleted", O_RDWR | O_CREAT, 0644);
    EXPECT_EQ(write(deleted, "123", 3), 3);
    EXPECT_EQ(unlink("/tmp/bsp/deleted"), 0);
    const int deletedOnHost = open(hostFile().c_str(), O_RDWR);
    EXPECT_EQ(unlink(hostFile().c_str()), 0);
    const int memory = static_cast<int>(syscall(SYS_memfd_create, "memory", 0));
    EXPECT_EQ(write(memory, "12345", 5), 5);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const struct {
        int fd;
        off_t size;
    } rows[] = {{deleted, 3}, {deletedOnHost, 7}, {memory, 5}, {ends[1], 0}};
    for (const auto &row : rows) {
        const int again = open(linkOf(row.fd).c_str(), O_WRONLY);
        EXPECT_EQ(sizeOf(again), row.size) << linkOf(row.fd);
        EXPECT_EQ(write(again, "x", 1), 1);
        EXPECT_FALSE(isDriver(again));
        close(again);
        close(row.fd);
    }
    close(ends[0]);
}

TEST_F(DescriptorsTest, UnnamedFilesAreMadeOnBoardAndHost) {
    for (const std::string &folder : {std::string("/tmp/bsp"), hostFolder()}) {
        const int fd = open(folder.c_str(), O_TMPFILE | O_RDWR, 0640);
        ASSERT_GE(fd, 0) << folder << ": " << std::strerror(errno);
        EXPECT_EQ(write(fd, "1234", 4), 4);
        struct stat info = {};
        EXPECT_EQ(fstat(fd, &info), 0);
        EXPECT_EQ(info.st_mode & 0777u, 0640u);
        const std::string name = folder + "/named";
        EXPECT_EQ(linkat(AT_FDCWD, linkOf(fd).c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW),
                  0)
            << std::strerror(errno);
        EXPECT_EQ(stat(name.c_str(), &info), 0);
        EXPECT_EQ(info.st_size, 4);
        close(fd);
    }
    EXPECT_EQ(readBoardFile("/tmp/bsp/named"), "1234");
}

TEST_F(DescriptorsTest, PathsFromFoldersLeadInAndOut) {
    ASSERT_EQ(mkdir("/tmp/bsp/folder", 0755), 0);
    const int devices = open("/dev", O_RDONLY | O_DIRECTORY);
    const int shared = open("/tmp/bsp/folder", O_RDONLY | O_DIRECTORY);
    const int temporary = open("/tmp", O_PATH | O_DIRECTORY);
    const struct {
        int folder;
        const char *path;
        bool isDriver;
        off_t size;
    } rows[] = {
        {devices, "bspHandle", true, 0},
        {devices, "./../dev//bspHandle", true, 0},
        {devices, "../tmp/bsp/file", false, 5},
        {shared, "../file", false, 5},
        {shared, "../../../dev/bspHandle", true, 0},
        {temporary, "bsp/file", false, 5},
        {temporary, "bsp/folder/.././file", false, 5},
        {-1, "/tmp/bsp/file", false, 5},
    };
    for (const auto &row : rows) {
        const int fd = openat(row.folder, row.path, O_RDONLY);
        EXPECT_EQ(isDriver(fd), row.isDriver) << row.path;
        EXPECT_EQ(sizeOf(fd), row.size) << row.path;
        close(fd);
    }
    std::string outside = "../../.." + hostFile();
    const int fd = openat(shared, outside.c_str(), O_RDONLY);
    EXPECT_EQ(sizeOf(fd), 7) << outside;
    close(fd);
    EXPECT_EQ(openat(shared, "bspHandle", O_RDONLY), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(openat(-1, "bsp/file", O_RDONLY), -1);
    EXPECT_EQ(errno, EBADF);
    close(devices);
    close(shared);
    close(temporary);
}

TEST_F(DescriptorsTest, FlashIsTransferredInSeveralPieces) {
    const int flash = open("/dev/mtd4", O_RDWR);
    std::string whole(64, '\0'), one(10, '\0'), two(54, '\0');
    ASSERT_EQ(pread(flash, whole.data(), whole.size(), 0), 64);
    const iovec parts[] = {{one.data(), one.size()}, {nullptr, 0}, {two.data(), two.size()}};
    EXPECT_EQ(readv(flash, parts, 3), 64);
    EXPECT_EQ(one + two, whole);
    EXPECT_EQ(lseek(flash, 0, SEEK_CUR), 64);
    std::fill(one.begin(), one.end(), '\0');
    EXPECT_EQ(preadv(flash, parts, 1, 0), 10);
    EXPECT_EQ(one, whole.substr(0, 10));

    erase_info_user block = {0, 0x10000};
    mtd_info_user info = {};
    ASSERT_EQ(ioctl(flash, MEMGETINFO, &info), 0);
    block.length = info.erasesize;
    ASSERT_EQ(ioctl(flash, MEMERASE, &block), 0);
    one = "0123456789";
    std::fill(two.begin(), two.end(), 'x');
    EXPECT_EQ(pwritev(flash, parts, 3, 0), 64);
    EXPECT_EQ(lseek(flash, 0, SEEK_CUR), 64);
    EXPECT_EQ(writev(flash, parts, 1), 10);
    std::string written(74, '\0');
    EXPECT_EQ(pread(flash, written.data(), written.size(), 0), 74);
    EXPECT_EQ(written, one + two + one);
    EXPECT_EQ(preadv2(flash, parts, 1, -1, 0), 10);
    EXPECT_EQ(lseek(flash, 0, SEEK_CUR), 84);

    // The end of the device ends the list.
    EXPECT_EQ(preadv(flash, parts, 3, static_cast<off_t>(info.size) - 4), 4);
    EXPECT_EQ(preadv(flash, parts, 3, static_cast<off_t>(info.size)), 0);
    close(flash);
}

TEST_F(DescriptorsTest, DevicesAreNotCopiedFromDirectlyNorMapped) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const int other = open(hostFile().c_str(), O_RDWR);
    for (const char *path : {"/dev/bspHandle", "/dev/mtd4"}) {
        const int node = open(path, O_RDWR);
        EXPECT_EQ(sendfile(other, node, nullptr, 16), -1) << path;
        EXPECT_EQ(errno, EINVAL) << path;
        EXPECT_EQ(copy_file_range(node, nullptr, other, nullptr, 16, 0), -1) << path;
        EXPECT_EQ(errno, EINVAL) << path;
        EXPECT_EQ(copy_file_range(other, nullptr, node, nullptr, 7, 0), -1) << path;
        EXPECT_EQ(errno, EINVAL) << path;
        EXPECT_EQ(splice(node, nullptr, ends[1], nullptr, 16, 0), -1) << path;
        EXPECT_EQ(errno, EINVAL) << path;
        EXPECT_EQ(mmap(nullptr, 4096, PROT_READ, MAP_SHARED, node, 0), MAP_FAILED) << path;
        EXPECT_EQ(errno, ENODEV) << path;
        close(node);
    }
    EXPECT_EQ(sizeOf(other), 7);
    const int flash = open("/dev/mtd4", O_RDONLY);
    EXPECT_EQ(fdopen(flash, "r"), nullptr);
    EXPECT_EQ(errno, ENOTSUP);
    for (const int fd : {flash, other, ends[0], ends[1]})
        close(fd);
}

TEST_F(DescriptorsTest, PatternsFindTheBoardsFiles) {
    const auto found = [](const char *pattern) {
        glob64_t search = {};
        Lines paths;
        EXPECT_EQ(glob64(pattern, 0, nullptr, &search), 0) << pattern;
        for (size_t i = 0; i < search.gl_pathc; ++i)
            paths.emplace_back(search.gl_pathv[i]);
        globfree64(&search);
        return paths;
    };
    EXPECT_EQ(found("/dev/mtd*"), (Lines{"/dev/mtd0", "/dev/mtd12", "/dev/mtd14", "/dev/mtd4"}));
    EXPECT_EQ(found("/tmp/bs[p]/f*"), Lines{"/tmp/bsp/file"});
    EXPECT_EQ(found((hostFolder() + "/f*").c_str()), Lines{hostFile()});
}

TEST_F(DescriptorsTest, FilesForChildrenAreOpenedOnTheBoard) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    EXPECT_EQ(posix_spawn_file_actions_addopen(&actions, 1, "/tmp/bsp/out",
                                               O_WRONLY | O_CREAT | O_TRUNC, 0644),
              0);
    EXPECT_EQ(posix_spawn_file_actions_addopen(&actions, 2, "/tmp/bsp/none/x", O_WRONLY, 0),
              ENOENT);
    char name[] = "/bin/echo", word[] = "hello";
    char *arguments[] = {name, word, nullptr};
    pid_t child = -1;
    ASSERT_EQ(posix_spawn(&child, name, &actions, nullptr, arguments, environ), 0);
    waitpid(child, nullptr, 0);
    posix_spawn_file_actions_destroy(&actions);
    EXPECT_EQ(readBoardFile("/tmp/bsp/out"), "hello\n");
}

} // namespace
