// Where paths lead on a board: walked as the kernel does, in the board's folder where the board has
// files of its own.

#include "bsp.h"
#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/os/seam.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using vb::LastLink;
using vb::PathWalk;

/** How a walk ended. */
struct Way {
    PathWalk::End end;
    std::string boardPath = {};
    int error = 0;

    bool operator==(const Way &other) const = default;
};

void PrintTo(const Way &way, std::ostream *stream) {
    constexpr const char *kEnds[] = {"host", "board", "beyond", "nowhere", "unknown"};
    *stream << kEnds[static_cast<int>(way.end)] << " '" << way.boardPath << "' " << way.error;
}

const Way kHost = {PathWalk::End::Host};

Way ofBoard(const std::string &path) {
    return {PathWalk::End::Board, path};
}

Way nowhere(int error) {
    return {PathWalk::End::Nowhere, "", error};
}

class PathWalkTest : public VirtualBoardTest {
  protected:
    void SetUp() override {
        VirtualBoardTest::SetUp();
        writeBoardFile("/tmp/bsp/file", "board");
        fs::create_directory(boardFile("/tmp/bsp/folder"));
        std::ofstream(host("file")) << "host";
        fs::create_directory(host("folder"));
        start_ = open(".", O_RDONLY | O_DIRECTORY);
    }
    void TearDown() override {
        EXPECT_EQ(fchdir(start_), 0);
        close(start_);
        VirtualBoardTest::TearDown();
    }

    std::string host(const std::string &name) const { return host_.path() + "/" + name; }
    void link(const std::string &target, const std::string &name) const {
        fs::create_symlink(target, name);
    }

    Way walk(const std::string &path, LastLink last = LastLink::Followed,
             int folder = AT_FDCWD) const {
        const auto memory = std::make_unique<vb::WalkMemory>();
        const PathWalk way(*vb::attachedFolder(), *memory, folder, path.c_str(), last);
        return {way.end(), way.end() == PathWalk::End::Board ? way.boardPath() : "",
                way.end() == PathWalk::End::Nowhere ? way.error() : 0};
    }

    static std::string contentOf(const std::string &path) {
        char text[64] = {};
        const int fd = open(path.c_str(), O_RDONLY);
        const ssize_t count = fd >= 0 ? read(fd, text, sizeof(text)) : -1;
        if (fd >= 0)
            close(fd);
        return count < 0 ? "(" + std::string(std::strerror(errno)) + ")"
                         : std::string(text, static_cast<size_t>(count));
    }

    TemporaryFolder host_;

  private:
    int start_ = -1;
};

TEST_F(PathWalkTest, DotsAndSlashesAreWalkedInPlace) {
    EXPECT_EQ(walk("/tmp/bsp/file"), ofBoard("/tmp/bsp/file"));
    EXPECT_EQ(walk("//tmp/./bsp///file"), ofBoard("/tmp/bsp/file"));
    EXPECT_EQ(walk("/tmp/bsp/folder/../file"), ofBoard("/tmp/bsp/file"));
    EXPECT_EQ(walk("/tmp/bsp/../bsp/file"), ofBoard("/tmp/bsp/file"));
    EXPECT_EQ(walk("/dev/../tmp/bsp"), ofBoard("/tmp/bsp"));
    EXPECT_EQ(walk("/../../tmp/bsp/"), ofBoard("/tmp/bsp"));
    EXPECT_EQ(walk("/tmp/bsp/."), ofBoard("/tmp/bsp"));
    EXPECT_EQ(walk("/"), kHost);
    EXPECT_EQ(walk("/tmp"), kHost);
    EXPECT_EQ(walk(""), kHost) << "the kernel refuses it";
    EXPECT_EQ(walk("/tmp/bsp/../bspNoSuchFile").end, PathWalk::End::Beyond);
}

TEST_F(PathWalkTest, LinksAreFollowedWhereverTheyLead) {
    link("/tmp/bsp", host("toFolder"));
    link("/tmp/bsp/file", host("toFile"));
    link("toFolder/folder", host("twice"));
    link("/dev/mtd4", host("toFlash"));
    link("file", boardFile("/tmp/bsp/relative"));
    link("/tmp/bsp/file", boardFile("/tmp/bsp/absolute"));
    link(host("file"), boardFile("/tmp/bsp/out"));
    EXPECT_EQ(walk(host("toFolder/file")), ofBoard("/tmp/bsp/file"));
    EXPECT_EQ(walk(host("toFile")), ofBoard("/tmp/bsp/file"));
    EXPECT_EQ(walk(host("twice/../file")), ofBoard("/tmp/bsp/file"))
        << "above what the link leads to";
    EXPECT_EQ(walk(host("toFlash")), ofBoard("/dev/mtd4"));
    EXPECT_EQ(walk("/tmp/bsp/relative"), ofBoard("/tmp/bsp/file"));
    EXPECT_EQ(walk("/tmp/bsp/absolute"), ofBoard("/tmp/bsp/file"));
    EXPECT_EQ(walk("/tmp/bsp/out").end, PathWalk::End::Beyond);
    EXPECT_EQ(contentOf("/tmp/bsp/out"), "host");
    EXPECT_EQ(contentOf(host("toFile")), "board");
}

TEST_F(PathWalkTest, TheLastLinkIsKeptForThoseWhoWorkOnIt) {
    link("/tmp/bsp/file", host("toFile"));
    link("file", boardFile("/tmp/bsp/link"));
    EXPECT_EQ(walk(host("toFile"), LastLink::Kept), kHost);
    EXPECT_EQ(walk("/tmp/bsp/link", LastLink::Kept), ofBoard("/tmp/bsp/link"));
    link("/tmp/bsp", host("toFolder"));
    EXPECT_EQ(walk(host("toFolder"), LastLink::Kept), kHost);
    EXPECT_EQ(walk(host("toFolder/"), LastLink::Kept), ofBoard("/tmp/bsp"))
        << "a slash behind it follows it";
    EXPECT_EQ(unlink(host("toFile").c_str()), 0);
    EXPECT_TRUE(fs::exists(boardFile("/tmp/bsp/file")));
}

TEST_F(PathWalkTest, WhatTheKernelFailsFailsWithItsError) {
    link("loop", boardFile("/tmp/bsp/loop"));
    EXPECT_EQ(walk("/tmp/bsp/none/x"), nowhere(ENOENT));
    EXPECT_EQ(walk("/tmp/bsp/file/x"), nowhere(ENOTDIR));
    EXPECT_EQ(walk("/tmp/bsp/file/.."), nowhere(ENOTDIR));
    EXPECT_EQ(walk("/tmp/bsp/file/."), nowhere(ENOTDIR));
    EXPECT_EQ(walk("/tmp/bsp/loop"), nowhere(ELOOP));
    EXPECT_EQ(walk("/tmp/bsp/" + std::string(NAME_MAX + 1, 'n')), nowhere(ENAMETOOLONG));
    EXPECT_EQ(walk(host("none/x")), kHost) << "the kernel finds it itself";
    EXPECT_EQ(walk(std::string(PATH_MAX, '/')), kHost);
    const struct {
        std::string path;
        int error;
    } cases[] = {{"/tmp/bsp/none/x", ENOENT},
                 {"/tmp/bsp/file/x", ENOTDIR},
                 {"/tmp/bsp/file/", ENOTDIR},
                 {"/tmp/bsp/loop", ELOOP},
                 {host("none/x"), ENOENT},
                 {host("file/.."), ENOTDIR},
                 {std::string(PATH_MAX, 'x'), ENAMETOOLONG}};
    for (const auto &row : cases) {
        EXPECT_EQ(open(row.path.c_str(), O_RDONLY), -1) << row.path;
        EXPECT_EQ(errno, row.error) << row.path;
    }
}

TEST_F(PathWalkTest, WhatIsMissingIsJudgedByItsParent) {
    link("/tmp/bsp", host("toFolder"));
    link("/tmp/bsp/soon", host("dangling"));
    EXPECT_EQ(walk("/tmp/bsp/new"), ofBoard("/tmp/bsp/new"));
    EXPECT_EQ(walk("/dev/mtd7"), ofBoard("/dev/mtd7"));
    EXPECT_EQ(walk(host("toFolder/new")), ofBoard("/tmp/bsp/new"));
    EXPECT_EQ(walk(host("dangling")), ofBoard("/tmp/bsp/soon"));
    const int fd = open(host("dangling").c_str(), O_CREAT | O_WRONLY, 0644);
    ASSERT_GE(fd, 0);
    close(fd);
    EXPECT_TRUE(fs::exists(boardFile("/tmp/bsp/soon")));
    EXPECT_EQ(mkdir(host("toFolder/made").c_str(), 0755), 0);
    EXPECT_TRUE(fs::is_directory(boardFile("/tmp/bsp/made")));
}

TEST_F(PathWalkTest, RelativePathsStartWhereTheProgramIs) {
    ASSERT_EQ(chdir("/tmp"), 0);
    EXPECT_EQ(walk("bsp/file"), ofBoard("/tmp/bsp/file"));
    EXPECT_EQ(walk("../dev/mtd4"), ofBoard("/dev/mtd4"));
    EXPECT_EQ(contentOf("bsp/file"), "board");
    ASSERT_EQ(chdir("bsp"), 0);
    EXPECT_EQ(walk("file"), ofBoard("/tmp/bsp/file"));
    EXPECT_EQ(walk("../bsp/folder/.."), ofBoard("/tmp/bsp"));
    EXPECT_EQ(walk("../../proc/cmdline"), ofBoard("/proc/cmdline"));
    EXPECT_EQ(contentOf("file"), "board");
    ASSERT_EQ(chdir("/"), 0);
    EXPECT_EQ(walk("tmp/bsp/file"), ofBoard("/tmp/bsp/file"));
    ASSERT_EQ(chdir(host_.path().c_str()), 0);
    EXPECT_EQ(walk("file"), kHost);
    EXPECT_EQ(contentOf("file"), "host");
}

TEST_F(PathWalkTest, ProgramsMayStartInAFolderOfTheBoard) {
    ASSERT_EQ(chdir("/tmp/bsp"), 0);
    const int before = dup(STDERR_FILENO);
    close(before);
    const std::string folder = boardFolder();
    vb::FolderError error = {};
    ASSERT_TRUE(vb::attachBoard(folder.c_str(), error)) << error.text;
    const int after = dup(STDERR_FILENO);
    close(after);
    EXPECT_EQ(after, before) << "nothing is left open";
    trace();
    EXPECT_EQ(contentOf("file"), "board");
    EXPECT_EQ(trace(), Lines{"open /tmp/bsp/file"});
}

TEST_F(PathWalkTest, RelativePathsStartAtAFoldersDescriptor) {
    const int temporary = open("/tmp", O_RDONLY | O_DIRECTORY);
    const int shared = openat(temporary, "bsp", O_RDONLY | O_DIRECTORY);
    const int other = open(host_.path().c_str(), O_RDONLY | O_DIRECTORY);
    EXPECT_EQ(walk("bsp/file", LastLink::Followed, temporary), ofBoard("/tmp/bsp/file"));
    EXPECT_EQ(walk("file", LastLink::Followed, shared), ofBoard("/tmp/bsp/file"));
    EXPECT_EQ(walk("../bspPoeLockFile", LastLink::Followed, shared),
              ofBoard("/tmp/bspPoeLockFile"));
    EXPECT_EQ(walk("file", LastLink::Followed, other), kHost);
    EXPECT_EQ(walk("file", LastLink::Followed, 999), kHost) << "the kernel knows it is none";
    trace();
    const int file = openat(shared, "file", O_RDONLY);
    EXPECT_EQ(trace(), Lines{"open /tmp/bsp/file"});
    EXPECT_EQ(walk("x", LastLink::Followed, file), nowhere(ENOTDIR));
    for (const int fd : {temporary, shared, other, file})
        close(fd);
}

TEST_F(PathWalkTest, LinksOfTheKernelLeadToWhatIsOpen) {
    const int fd = open("/tmp/bsp/file", O_RDONLY);
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    EXPECT_EQ(walk(link), ofBoard("/tmp/bsp/file"));
    EXPECT_EQ(walk("/dev/fd/" + std::to_string(fd)), ofBoard("/tmp/bsp/file"));
    EXPECT_EQ(contentOf(link), "board");
    EXPECT_EQ(unlink("/tmp/bsp/file"), 0);
    EXPECT_EQ(contentOf(link), "board") << "without a path, too";
    close(fd);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_EQ(walk("/proc/self/fd/" + std::to_string(ends[0])), kHost);
    close(ends[0]);
    close(ends[1]);
    ASSERT_EQ(chdir("/tmp/bsp"), 0);
    EXPECT_EQ(walk("/proc/self/cwd/folder"), ofBoard("/tmp/bsp/folder"));
    EXPECT_EQ(walk("/proc/self/root/dev/mtd4"), ofBoard("/dev/mtd4"));
}

/** A working folder whose path is longer than the kernel tells. */
class DeepFolderTest : public PathWalkTest {
  protected:
    void SetUp() override {
        PathWalkTest::SetUp();
        ASSERT_EQ(chdir(host_.path().c_str()), 0);
        for (int i = 0; i < kLevels; ++i) {
            ASSERT_EQ(mkdir(kName.c_str(), 0755), 0);
            ASSERT_EQ(chdir(kName.c_str()), 0);
        }
    }
    void TearDown() override {
        for (int i = 0; i < kLevels; ++i)
            EXPECT_EQ(chdir(".."), 0);
        removeDeep();
        PathWalkTest::TearDown();
    }
    static std::string up(int levels) {
        std::string path;
        while (levels-- > 0)
            path += "../";
        return path;
    }

    static constexpr int kLevels = 30;
    const std::string kName = std::string(200, 'd');

  private:
    void removeDeep() const {
        for (int level = kLevels - 1; level >= 0; --level) {
            const int start = open(".", O_RDONLY | O_DIRECTORY);
            for (int i = 0; i < level; ++i)
                EXPECT_EQ(chdir(kName.c_str()), 0);
            EXPECT_EQ(rmdir(kName.c_str()), 0);
            EXPECT_EQ(fchdir(start), 0);
            close(start);
        }
    }
};

TEST_F(DeepFolderTest, FilesAreReachedFromIt) {
    std::ofstream("deep") << "host";
    EXPECT_EQ(contentOf("deep"), "host");
    EXPECT_EQ(walk("missing"), kHost);
    EXPECT_EQ(unlink("deep"), 0);
    const auto depth = static_cast<int>(std::count(host_.path().begin(), host_.path().end(), '/'));
    EXPECT_EQ(walk(up(kLevels + depth) + boardFile("/tmp/bsp/file").substr(1)),
              ofBoard("/tmp/bsp/file"));
    EXPECT_EQ(walk(up(kLevels + depth) + "tmp"), kHost);
}

TEST_F(DeepFolderTest, WhatCannotBeJudgedIsRefusedAndTraced) {
    trace();
    ASSERT_EQ(symlink("/tmp/bsp/nothing", "dangling"), 0);
    EXPECT_EQ(walk("dangling").end, PathWalk::End::Unknown);
    EXPECT_EQ(open("dangling", O_CREAT | O_WRONLY, 0644), -1);
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(trace(), Lines{"open dangling -> fails, errno 13 (Permission denied)"});
    EXPECT_EQ(unlink("dangling"), 0);
}

TEST_F(PathWalkTest, ProgramsAreToldThePathsThatTheyHave) {
    char path[PATH_MAX];
    ASSERT_EQ(chdir("/tmp/bsp/folder"), 0);
    EXPECT_STREQ(getcwd(path, sizeof(path)), "/tmp/bsp/folder");
    EXPECT_STREQ(realpath("../file", path), "/tmp/bsp/file");
    EXPECT_STREQ(realpath("/dev/mtd4", path), "/dev/mtd4");
    EXPECT_EQ(realpath("/tmp/bsp/none", path), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(realpath("/tmp/bsp/file/", path), nullptr);
    EXPECT_EQ(errno, ENOTDIR);
    const int fd = open("/tmp/bsp/file", O_RDONLY);
    const ssize_t length =
        readlink(("/proc/self/fd/" + std::to_string(fd)).c_str(), path, sizeof(path));
    EXPECT_EQ(std::string(path, static_cast<size_t>(length)), "/tmp/bsp/file");
    close(fd);
    ASSERT_EQ(chdir(host_.path().c_str()), 0);
    EXPECT_EQ(getcwd(path, sizeof(path)), host_.path());
}

TEST_F(PathWalkTest, NodesAreDevicesThatCannotBeReplaced) {
    const struct {
        const char *path;
        dev_t number;
    } cases[] = {{"/dev/bspHandle", makedev(240, 0)},
                 {"/dev/mem", makedev(1, 1)},
                 {"/dev/mtd0", makedev(90, 0)},
                 {"/dev/mtd12", makedev(90, 24)}};
    for (const auto &row : cases) {
        struct stat info = {};
        ASSERT_EQ(stat(row.path, &info), 0) << row.path;
        EXPECT_TRUE(S_ISCHR(info.st_mode)) << row.path;
        EXPECT_EQ(info.st_rdev, row.number) << row.path;
        EXPECT_EQ(info.st_size, 0) << row.path;
        const int fd = open(row.path, O_RDONLY);
        info = {};
        EXPECT_EQ(fstat(fd, &info), 0);
        EXPECT_TRUE(S_ISCHR(info.st_mode)) << row.path;
        close(fd);
        EXPECT_EQ(unlink(row.path), -1);
        EXPECT_EQ(errno, EPERM);
        EXPECT_EQ(rename("/tmp/bsp/file", row.path), -1);
        EXPECT_EQ(errno, EPERM);
    }
    EXPECT_EQ(unlink("/proc/cmdline"), -1);
    EXPECT_EQ(errno, EPERM);
}

TEST_F(PathWalkTest, FoldersOfTheHostListTheBoardsFiles) {
    const auto listed = [](const char *path) {
        std::multiset<std::string> names;
        DIR *folder = opendir(path);
        while (const dirent64 *entry = readdir64(folder))
            names.insert(entry->d_name);
        closedir(folder);
        return names;
    };
    const auto devices = listed("/dev");
    for (const char *name : {"bspHandle", "mem", "mtd0", "mtd4", "mtd12", "mtd14", "null"})
        EXPECT_EQ(devices.count(name), 1u) << name;
    for (const std::string &name : devices) {
        if (name.starts_with("mtd")) {
            EXPECT_TRUE(fs::exists(boardFile("/dev/" + name))) << "the host's " << name;
        }
    }
    EXPECT_EQ(listed("/proc").count("mtd"), 1u);
    EXPECT_EQ(listed("/proc").count("cmdline"), 1u);
    EXPECT_EQ(listed("/tmp").count("bsp"), 1u);
    EXPECT_EQ(listed("/tmp/bsp"), (std::multiset<std::string>{".", "..", "file", "folder"}));
}

TEST_F(PathWalkTest, AListingStartsAnewWhenItIsRewound) {
    DIR *folder = opendir("/tmp");
    const auto count = [&folder] {
        int entries = 0;
        while (const dirent64 *entry = readdir64(folder))
            entries += std::strcmp(entry->d_name, "bsp") == 0 ? 1 : 0;
        return entries;
    };
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(count(), 0);
    rewinddir(folder);
    EXPECT_EQ(count(), 1);
    closedir(folder);
    const int fd = open("/tmp", O_RDONLY | O_DIRECTORY);
    folder = fdopendir(fd);
    EXPECT_EQ(count(), 1);
    closedir(folder);
}

TEST_F(PathWalkTest, TheListOfPartitionsIsTheBoards) {
    std::ifstream list("/proc/mtd");
    std::vector<std::string> lines;
    for (std::string line; std::getline(list, line);)
        lines.push_back(line);
    EXPECT_EQ(
        lines,
        (Lines{"dev:    size   erasesize  name", "mtd0: 00100000 00010000 \"boot-loader\"",
               "mtd4: 00040000 00010000 \"boot-settings\"", "mtd12: 02880000 00020000 \"bank-1\"",
               "mtd14: 02880000 00020000 \"bank-2\""}));
}

TEST_F(PathWalkTest, NamesThatAreMadeUpAreTheCallers) {
    char name[] = "/tmp/bsp/made-XXXXXX";
    const int fd = mkstemp(name);
    ASSERT_GE(fd, 0);
    close(fd);
    EXPECT_STRNE(name, "/tmp/bsp/made-XXXXXX");
    EXPECT_TRUE(fs::exists(boardFile(name))) << name;
    char folder[] = "/tmp/bsp/made-XXXXXX";
    EXPECT_EQ(mkdtemp(folder), folder);
    EXPECT_TRUE(fs::is_directory(boardFile(folder))) << folder;
}

TEST_F(PathWalkTest, LinksThatTheFolderIsRefusedForAreNotMade) {
    const int folder = open("/tmp/bsp/folder", O_RDONLY | O_DIRECTORY);
    ASSERT_GE(folder, 0);
    for (const char *content : {"/etc/passwd", "../../etc", "/tmp", "folder/../../.."}) {
        errno = 0;
        EXPECT_EQ(symlink(content, "/tmp/bsp/link"), -1) << content;
        EXPECT_EQ(errno, EPERM) << content;
    }
    EXPECT_EQ(symlinkat("../../x", folder, "link"), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(symlink(std::string(PATH_MAX, 'x').c_str(), "/tmp/bsp/link"), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(symlink("/etc/passwd", "/tmp/bsp/none/link"), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(symlinkat("../file", folder, "link"), 0);
    EXPECT_EQ(symlink("/proc/cmdline", "/tmp/bsp/link"), 0);
    EXPECT_EQ(symlink("from..to", "/tmp/bsp/dots"), 0);
    EXPECT_EQ(symlink("/etc/passwd", host("link").c_str()), 0) << "links of the host are";
    EXPECT_EQ(contentOf("/tmp/bsp/folder/link"), "board");
    close(folder);
    vb::BoardFolder again;
    vb::FolderError error = {};
    EXPECT_TRUE(again.open(boardFolder().c_str(), error)) << error.text;
}

TEST_F(PathWalkTest, ProgramsReachDevicesWithAllTheirDescriptorsInUse) {
    const int driver = open("/dev/bspHandle", O_RDWR);
    const int flash = open("/dev/mtd4", O_RDONLY);
    rlimit before = {}, after = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit full = {static_cast<rlim_t>(flash) + 1, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &full), 0);
    uint32_t value = 0;
    BspIoctlRecord record = {};
    record.slot[0] = 1;
    record.slot[1] = reinterpret_cast<uintptr_t>(&value);
    char byte = 0;
    if (!isEmulated()) { // where copies of the program's memory go through a pipe
        EXPECT_EQ(ioctl(driver, BSP_REQ_CPLD_READ, &record), 0) << std::strerror(errno);
        EXPECT_EQ(value, 0x0709u);
        EXPECT_EQ(pread(flash, &byte, 1, 0), 1) << std::strerror(errno);
    }
    EXPECT_EQ(open("/tmp/bsp/new", O_CREAT | O_WRONLY, 0644), -1);
    EXPECT_EQ(errno, EMFILE);
    EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &after), 0);
    EXPECT_EQ(after.rlim_cur, full.rlim_cur);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    close(flash);
    close(driver);
}

TEST_F(PathWalkTest, WhatRootMakesIsTheOwners) {
    const uid_t owner = geteuid() == 0 ? 65534 : geteuid(); // only root can give files away
    const std::string folder = boardFolder();
    vb::detachBoard();
    ASSERT_EQ(chown(folder.c_str(), owner, getegid()), 0);
    vb::FolderError error = {};
    ASSERT_TRUE(vb::attachBoard(folder.c_str(), error)) << error.text;
    close(open("/tmp/bsp/made", O_CREAT | O_WRONLY, 0644));
    fclose(fopen("/tmp/bsp/stream", "w"));
    mkdir("/tmp/bsp/place", 0755);
    EXPECT_EQ(symlink("made", "/tmp/bsp/link"), 0);
    const int place = open("/tmp/bsp/place", O_RDONLY | O_DIRECTORY);
    mkdirat(place, "inner", 0755);
    EXPECT_EQ(symlinkat("made", place, "link"), 0);
    close(place);
    for (const char *path : {"/tmp/bsp/made", "/tmp/bsp/stream", "/tmp/bsp/place", "/tmp/bsp/link",
                             "/tmp/bsp/place/inner", "/tmp/bsp/place/link"}) {
        struct stat info = {};
        ASSERT_EQ(lstat(path, &info), 0) << path;
        EXPECT_EQ(info.st_uid, owner) << path;
    }
}

} // namespace
