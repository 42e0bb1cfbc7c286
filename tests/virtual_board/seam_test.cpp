// The seam: what concerns the board is answered from it, everything else by the host.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/board/clock_change.h"
#include "virtual_board/os/seam.h"

#include <cerrno>
#include <chrono>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

class SeamTest : public VirtualBoardTest {
  protected:
    /** Puts a file into the board's root from outside. */
    void put(const std::string &pathOnBoard, const std::string &content) const {
        std::ofstream(boardFile(pathOnBoard)) << content;
    }
    static std::string readAll(const char *path) {
        char text[64] = {};
        const int fd = open(path, O_RDONLY);
        if (fd < 0)
            return "(does not open)";
        const ssize_t count = read(fd, text, sizeof(text));
        close(fd);
        return std::string(text, static_cast<size_t>(count));
    }
    static double secondsOf(const std::function<void()> &function) {
        const auto start = std::chrono::steady_clock::now();
        function();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
};

TEST_F(SeamTest, PathsOfTheBoardLeadToItsFolder) {
    put("/tmp/bsp/devId", "here");
    for (const char *path : {"/tmp/bsp/devId", "//tmp/./bsp/devId", "/tmp/bsp//devId",
                             "/tmp/bsp/../bsp/devId", "/tmp/../tmp/bsp/devId"})
        EXPECT_EQ(readAll(path), "here") << path;
}

TEST_F(SeamTest, OtherPathsAreTheHosts) {
    const TemporaryFolder folder;
    const std::string path = folder.path() + "/file";
    std::ofstream(path) << "host";
    EXPECT_EQ(readAll(path.c_str()), "host");
    EXPECT_EQ(trace(), Lines{});
    EXPECT_EQ(open("/tmp/bspNoSuchFile", O_RDONLY), -1);
    EXPECT_EQ(trace(), Lines{});
}

TEST_F(SeamTest, FilesAreExaminedRenamedAndRemovedOnTheBoard) {
    put("/tmp/bsp/one", "12345");
    struct stat info = {};
    EXPECT_EQ(stat("/tmp/bsp/one", &info), 0);
    EXPECT_EQ(info.st_size, 5);
    EXPECT_EQ(access("/tmp/bsp/one", R_OK), 0);
    EXPECT_EQ(rename("/tmp/bsp/one", "/tmp/bsp/two"), 0);
    EXPECT_FALSE(fs::exists(boardFile("/tmp/bsp/one")));
    EXPECT_EQ(readAll("/tmp/bsp/two"), "12345");
    EXPECT_EQ(unlink("/tmp/bsp/two"), 0);
    EXPECT_FALSE(fs::exists(boardFile("/tmp/bsp/two")));
    EXPECT_EQ(stat("/tmp/bsp/two", &info), -1);
    EXPECT_EQ(mkdir("/tmp/bsp/folder", 0700), 0);
    EXPECT_TRUE(fs::is_directory(boardFile("/tmp/bsp/folder")));
    EXPECT_EQ(rmdir("/tmp/bsp/folder"), 0);
}

TEST_F(SeamTest, TheSharedFolderIsListedFromTheBoard) {
    put("/tmp/bsp/only", "");
    DIR *folder = opendir("/tmp/bsp");
    ASSERT_NE(folder, nullptr);
    Lines names;
    for (const dirent64 *entry = readdir64(folder); entry != nullptr; entry = readdir64(folder)) {
        if (entry->d_name[0] != '.')
            names.emplace_back(entry->d_name);
    }
    closedir(folder);
    EXPECT_EQ(names, Lines{"only"});
}

TEST_F(SeamTest, ALinkOnTheBoardIsRefusedWhereNoneIsWanted) {
    put("/tmp/bsp/file", "here");
    fs::create_symlink("file", boardFile("/tmp/bsp/link"));
    EXPECT_EQ(readAll("/tmp/bsp/link"), "here");
    EXPECT_EQ(open("/tmp/bsp/link", O_RDWR | O_CREAT | O_NOFOLLOW, 0644), -1);
    EXPECT_EQ(errno, ELOOP);
    EXPECT_EQ(openat(AT_FDCWD, "/tmp/bsp/link", O_RDONLY | O_NOFOLLOW), -1);
    EXPECT_EQ(errno, ELOOP);
}

TEST_F(SeamTest, StreamsOpenOnTheBoard) {
    FILE *file = fopen("/tmp/bsp/stream", "w");
    ASSERT_NE(file, nullptr);
    fputs("text", file);
    fclose(file);
    EXPECT_EQ(fs::file_size(boardFile("/tmp/bsp/stream")), 4u);
}

TEST_F(SeamTest, TheNodeIsKnownByWhateverDescriptor) {
    const int savedInput = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    const int node = open("/dev/bspHandle", O_RDONLY);
    EXPECT_EQ(node, 0);
    uint32_t value = 0;
    BspIoctlRecord record = {};
    record.slot[0] = 1;
    record.slot[1] = reinterpret_cast<uintptr_t>(&value);
    EXPECT_EQ(ioctl(node, BSP_REQ_CPLD_READ, &record), 0);
    EXPECT_EQ(value, 0x0709u);
    const int copy = dup(node);
    close(node);
    value = 0;
    EXPECT_EQ(ioctl(copy, BSP_REQ_CPLD_READ, &record), 0);
    EXPECT_EQ(value, 0x0709u);
    close(copy);
    if (savedInput >= 0) {
        dup2(savedInput, STDIN_FILENO);
        close(savedInput);
    }
}

TEST_F(SeamTest, IoctlsOfOtherFilesPassOn) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], "abc", 3), 3);
    int waiting = 0;
    EXPECT_EQ(ioctl(ends[0], FIONREAD, &waiting), 0);
    EXPECT_EQ(waiting, 3);
    BspIoctlRecord record = {};
    EXPECT_EQ(ioctl(ends[0], BSP_REQ_CPLD_READ, &record), -1);
    close(ends[0]);
    close(ends[1]);
    EXPECT_EQ(requests(), Lines{});
}

TEST_F(SeamTest, ANullRecordIsABadAddress) {
    const int node = open("/dev/bspHandle", O_RDONLY);
    EXPECT_EQ(ioctl(node, BSP_REQ_CPLD_READ, nullptr), -1);
    EXPECT_EQ(errno, EFAULT);
    close(node);
}

TEST_F(SeamTest, AForkedChildIsOnTheSameBoard) {
    const pid_t child = fork();
    if (child == 0)
        _exit(bspCpldSet(10, 0x4242) == BSP_OK ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(devices().cpld.reg[10], 0x4242);
    EXPECT_EQ(board().trace.record[0].pid, child);
}

TEST_F(SeamTest, VirtualSleepsAdvanceTheClockAndReturnAtOnce) {
    const double seconds = secondsOf([] {
        EXPECT_EQ(usleep(500000), 0);
        EXPECT_EQ(sleep(780), 0u);
        const timespec time = {1, 5};
        EXPECT_EQ(nanosleep(&time, nullptr), 0);
        EXPECT_EQ(clock_nanosleep(CLOCK_MONOTONIC, 0, &time, nullptr), 0);
    });
    EXPECT_LT(seconds, 60);
    EXPECT_EQ(now(), 782500000010u);
    const timespec wrong = {0, 1000000000};
    EXPECT_EQ(nanosleep(&wrong, nullptr), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(now(), 782500000010u);
}

TEST_F(SeamTest, WholeSecondsAreThoseOfTheClockThatWasSet) {
    constexpr time_t kSet =
        2000000000; // later than today's, of which a part of a second has passed
    const timespec wanted = {kSet, 0};
    EXPECT_EQ(clock_settime(CLOCK_REALTIME, &wanted), 0);
    const time_t seconds = time(nullptr);
    EXPECT_GE(seconds, kSet);
    timespec now = {};
    EXPECT_EQ(clock_gettime(CLOCK_REALTIME, &now), 0);
    EXPECT_LE(seconds, now.tv_sec);
}

TEST_F(SeamTest, RealSleepsTakeTheirTime) {
    setPace(board().clock, {}, vb::hostTime());
    const uint64_t before = vb::clockNow(board().clock, vb::hostNow());
    EXPECT_GE(secondsOf([] { usleep(50000); }), 0.05);
    EXPECT_GE(vb::clockNow(board().clock, vb::hostNow()) - before, 50000000u);
    EXPECT_EQ(trace(), Lines{"sleep 50000 us"});
}

TEST_F(SeamTest, ADetachedProgramIsOnTheHost) {
    EXPECT_EQ(access("/dev/bspHandle", F_OK), 0);
    const std::string node = boardFile("/dev/bspHandle");
    vb::detachBoard();
    EXPECT_EQ(access("/dev/bspHandle", F_OK), -1);
    const int fd = open(node.c_str(), O_RDONLY);
    BspIoctlRecord record = {};
    EXPECT_EQ(ioctl(fd, BSP_REQ_CPLD_READ, &record), -1);
    close(fd);
}

} // namespace
