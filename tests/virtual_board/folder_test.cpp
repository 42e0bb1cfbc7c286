// Board folders: made whole or not at all, and refused when they are not what they should be.

#include "tests/support/files.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/board/lock.h"
#include "virtual_board/board/paths.h"

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr uid_t kNobody = 65534;

class FolderTest : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(make(), ""); }

    /** Makes a board; the reason why not, or nothing. */
    std::string make(const std::string &name = "board", uint32_t devId = 0x0709) const {
        vb::BoardOptions options;
        options.devId = devId;
        vb::FolderError error = {};
        return vb::createBoard(path(name), options, error) ? "" : error.text;
    }

    std::string path(const std::string &name = "board") const {
        return folder_.path() + "/" + name;
    }

    /** Opens a board; the reason why not, or nothing. */
    std::string open(const std::string &name = "board") const {
        vb::BoardFolder folder;
        vb::FolderError error = {};
        return folder.open(path(name).c_str(), error) ? "" : error.text;
    }

    /** Changes bytes of the state file. */
    void patch(size_t offset, const void *data, size_t size) const {
        std::fstream file(path() + "/board.state", std::ios::in | std::ios::out);
        file.seekp(static_cast<std::streamoff>(offset));
        file.write(static_cast<const char *>(data), static_cast<std::streamsize>(size));
        file.close();
        ASSERT_FALSE(file.fail());
    }

    /** Changes the header and makes its check value fit. */
    void patchHeader(const std::function<void(vb::BoardHeader &)> &change) const {
        vb::BoardHeader header = {};
        std::ifstream(path() + "/board.state")
            .read(reinterpret_cast<char *>(&header), sizeof(header));
        change(header);
        header.check = vb::headerCheck(header);
        patch(0, &header, sizeof(header));
    }

    /** How many entries the folder above has: one per board, and nothing left over. */
    long entries() const {
        const std::vector<std::string> all = pathsUnder(folder_.path());
        return std::count_if(all.begin(), all.end(), [&](const std::string &path) {
            return fs::path(path).parent_path() == folder_.path();
        });
    }

  private:
    TemporaryFolder folder_;
};

#define EXPECT_SAYS(text, part) EXPECT_NE((text).find(part), std::string::npos) << (text)

TEST_F(FolderTest, ANewBoardIsWholeAndUsable) {
    EXPECT_EQ(open(), "");
    for (const char *file :
         {"board.state", "lock", "registers", "root/dev/bspHandle", "root/dev/mem",
          "root/proc/cmdline", "root/dev/mtd0", "root/dev/mtd14", "flash/mtd0", "flash/mtd14"})
        EXPECT_TRUE(fs::is_regular_file(path() + "/" + file)) << file;
    EXPECT_TRUE(fs::is_directory(path() + "/root/tmp/bsp"));
    EXPECT_EQ(fs::file_size(path() + "/board.state"), sizeof(vb::Board));
    EXPECT_EQ(entries(), 1);
}

TEST_F(FolderTest, AnEmptyFolderIsFilledAndAFullOneRefused) {
    fs::create_directory(path("empty"));
    EXPECT_EQ(make("empty"), "");
    EXPECT_EQ(open("empty"), "");
    EXPECT_SAYS(make("empty"), "exists already; choose another name");
    std::ofstream(path("file")) << "mine";
    EXPECT_SAYS(make("file"), "exists already");
    EXPECT_EQ(fs::file_size(path("file")), 4u);
    EXPECT_EQ(entries(), 3);
}

TEST_F(FolderTest, WhatCannotBeMadeLeavesNothing) {
    EXPECT_SAYS(make("none/board"), "is not a folder; create it first");
    EXPECT_SAYS(make("other", 0x1234), "'vboard list-models'");
    EXPECT_EQ(entries(), 1);
}

TEST_F(FolderTest, ABoardThatDoesNotFitOnTheDiskLeavesNothing) {
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {100000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const std::string reason = make("other");
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_SAYS(reason, "cannot write the board's files: File too large");
    EXPECT_EQ(entries(), 1);
}

TEST_F(FolderTest, TextsThatDoNotFitAreRefused) {
    vb::FolderError error = {};
    for (const std::string &serial : {std::string(), std::string(32, 'S'), std::string("a\nb")}) {
        vb::BoardOptions options;
        options.devId = 0x0709;
        options.serial = serial;
        EXPECT_FALSE(vb::createBoard(path("other"), options, error));
        EXPECT_SAYS(std::string(error.text), "1 to 31 printable");
    }
    vb::BoardOptions options;
    options.devId = 0x0709;
    options.commandLine = "two\nlines";
    EXPECT_FALSE(vb::createBoard(path("other"), options, error));
    EXPECT_SAYS(std::string(error.text), "1024 printable");
    EXPECT_EQ(entries(), 1);
}

TEST_F(FolderTest, AFolderWithoutABoardIsRefused) {
    EXPECT_SAYS(open("none"), "No such file or directory; create a board with");
    fs::create_directory(path("empty"));
    EXPECT_SAYS(open("empty"), "is not a board");
}

TEST_F(FolderTest, ATruncatedStateIsRefused) {
    fs::resize_file(path() + "/board.state", sizeof(vb::Board) - 1);
    EXPECT_SAYS(open(), "is damaged: board.state has " + std::to_string(sizeof(vb::Board) - 1));
    fs::resize_file(path() + "/board.state", 10);
    EXPECT_SAYS(open(), "is damaged: board.state is too short");
    fs::resize_file(path() + "/board.state", 0);
    EXPECT_SAYS(open(), "is damaged: board.state is too short");
}

TEST_F(FolderTest, AForeignFileIsRefused) {
    patch(0, "ELF", 3);
    EXPECT_SAYS(open(), "is not a board's state");
}

TEST_F(FolderTest, TheOtherByteOrderIsRefused) {
    patchHeader([](vb::BoardHeader &header) { header.byteOrder = 0x04030201; });
    EXPECT_SAYS(open(), "a machine of the other byte order");
}

TEST_F(FolderTest, AnotherVersionIsRefused) {
    patchHeader([](vb::BoardHeader &header) { ++header.version; });
    EXPECT_SAYS(open(), "a board of another version (" + std::to_string(vb::kBoardVersion + 1) +
                            ", this build uses " + std::to_string(vb::kBoardVersion) + ")");
}

TEST_F(FolderTest, ADamagedHeaderIsRefused) {
    const uint32_t devId = 0x0109;
    patch(offsetof(vb::BoardHeader, devId), &devId, sizeof(devId));
    EXPECT_SAYS(open(), "is damaged: the header");
}

TEST_F(FolderTest, ImpossibleValuesAreRefused) {
    const uint32_t many = 5;
    patch(offsetof(vb::Board, devices.eeprom.blocks), &many, sizeof(many));
    EXPECT_SAYS(open(), "impossible values");
}

TEST_F(FolderTest, AMissingFileIsRefused) {
    for (const char *file : {"root/dev/bspHandle", "root/dev/mem", "root/proc/cmdline", "registers",
                             "root/dev/mtd0", "root/dev/mtd14"}) {
        fs::rename(path() + "/" + file, path() + "/moved");
        EXPECT_SAYS(open(), std::string(file) + " is missing");
        fs::rename(path() + "/moved", path() + "/" + file);
    }
    EXPECT_EQ(open(), "");
}

/** Ends a child that has given up what root may do; codes beyond that are the caller's. */
void becomeNobody() {
    if (geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0))
        _exit(100);
}

TEST_F(FolderTest, LinksThatLeadOutAreRefused) {
    fs::create_symlink("/proc/cmdline", path() + "/root/tmp/bsp/fine");
    fs::create_symlink("bsp/fine", path() + "/root/tmp/bspPoeLockFile");
    EXPECT_EQ(open(), "");
    fs::create_directory(path() + "/root/tmp/bsp/folder");
    for (const char *place : {"/root/tmp/bsp/link", "/root/tmp/bsp/folder/link"}) {
        for (const char *target : {"/etc/passwd", "../../../etc", "folder/../../../.."}) {
            fs::create_symlink(target, path() + place);
            EXPECT_EQ(open(), path() + " cannot be used: the link " + (place + 1) +
                                  " leads out of the board; remove it")
                << target;
            fs::remove(path() + place);
        }
    }
    for (const char *own :
         {"/root", "/root/dev", "/root/tmp", "/root/dev/mtd4", "/root/dev/mem", "/root/proc/mtd"}) {
        fs::rename(path() + own, path("moved"));
        fs::create_symlink(path("moved"), path() + own);
        EXPECT_SAYS(open(), " cannot be used: the link " + std::string(own + 1) + " leads out");
        fs::remove(path() + own);
        fs::rename(path("moved"), path() + own);
    }
    EXPECT_EQ(open(), "");
}

TEST_F(FolderTest, WhatOneMayNotUseIsRefusedWithAWayOut) {
    const std::string uid = std::to_string(geteuid());
    // Root may do everything; the children give that up.
    const std::string anothers =
        geteuid() == 0 ? "Permission denied; the board is of user id " + uid + ": work as that user"
                       : "Permission denied; give yourself the permission with: chmod -R u+rwX";
    const struct {
        const char *closed; // to all but root
        std::string reason;
    } cases[] = {
        {".", "Permission denied: another user's folder is in the way"},
        {"board", "cannot open board.state for reading and writing: " + anothers},
        {"board/board.state", "cannot open board.state for reading and writing: " + anothers},
        {"board/lock", "cannot open lock for reading and writing: " + anothers},
        {"board/registers", "cannot open registers for reading and writing: " + anothers},
        {"board/flash/mtd4", "cannot open flash/mtd4 for reading and writing: " + anothers},
        {"board/root", "cannot open root/dev/bspHandle for reading and writing: " + anothers},
    };
    for (const std::string &each : pathsUnder(path()))
        fs::permissions(each, fs::perms(fs::is_directory(each) ? 0755 : 0666));
    fs::permissions(path("."), fs::perms(0755));
    for (const auto &[closed, reason] : cases) {
        const fs::perms before = fs::status(path(closed)).permissions();
        fs::permissions(path(closed), fs::perms(0));
        const pid_t child = fork();
        if (child == 0) {
            becomeNobody();
            const std::string told = open();
            const bool isReason = told.find(reason) != std::string::npos;
            const bool isCreation = told.find("create") != std::string::npos;
            if (!isReason || isCreation)
                (void)!write(STDERR_FILENO, (told + "\n").data(), told.size() + 1);
            _exit(isReason && !isCreation ? 0 : 1);
        }
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0) << closed;
        fs::permissions(path(closed), before);
    }
    EXPECT_EQ(open(), "");
}

TEST_F(FolderTest, AFolderThatOneMayNotWriteToGetsNoBoard) {
    fs::permissions(path("."), fs::perms(0555));
    const pid_t child = fork();
    if (child == 0) {
        becomeNobody();
        _exit(make("other").find("Permission denied") != std::string::npos ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    fs::permissions(path("."), fs::perms(0755));
    EXPECT_EQ(entries(), 1);
}

TEST_F(FolderTest, AnotherUsersFilesAreGivenToTheOwner) {
    const uid_t owner = geteuid() == 0 ? kNobody : geteuid(); // only root can give files away
    vb::BoardFolder folder;
    vb::FolderError error = {};
    ASSERT_EQ(chown(path().c_str(), owner, geteuid() == 0 ? kNobody : getegid()), 0);
    ASSERT_TRUE(folder.open(path().c_str(), error)) << error.text;
    std::ofstream(path() + "/root/tmp/bsp/made") << "by root";
    folder.giveToOwner((path() + "/root/tmp/bsp/made").c_str());
    struct stat info = {};
    ASSERT_EQ(stat((path() + "/root/tmp/bsp/made").c_str(), &info), 0);
    EXPECT_EQ(info.st_uid, owner);
    EXPECT_EQ(info.st_gid, geteuid() == 0 ? kNobody : getegid());
    fs::create_symlink("/nowhere", path() + "/root/tmp/bsp/link"); // is given itself
    folder.giveToOwner((path() + "/root/tmp/bsp/link").c_str());
    ASSERT_EQ(lstat((path() + "/root/tmp/bsp/link").c_str(), &info), 0);
    EXPECT_EQ(info.st_uid, owner);
}

TEST_F(FolderTest, LinksThatLeadOutOfItKeepItFromBeingUsed) {
    const std::string root = path() + "/root";
    fs::create_directory(root + "/tmp/bsp/folder");
    const struct {
        const char *place;
        const char *target;
    } out[] = {{"/tmp/bsp/link", "/etc/hosts"},
               {"/tmp/bsp/folder/link", "../../../etc"},
               {"/tmp/bsp/link", "folder/../../x"},
               {"/dev/mtd9", "/dev/null"},
               {"/link", "/tmp"}};
    for (const auto &row : out) {
        fs::create_symlink(row.target, root + row.place);
        EXPECT_EQ(open(), path() + " cannot be used: the link root" + row.place +
                              " leads out of the board; remove it");
        fs::remove(root + row.place);
    }
    for (const char *own : {"/dev/bspHandle", "/dev/mtd4", "/proc", "/tmp/bsp/folder"}) {
        fs::rename(root + own, path("part"));
        fs::create_symlink(path("part"), root + own);
        EXPECT_NE(open().find(std::string("the link root") + own), std::string::npos) << open();
        fs::remove(root + own);
        fs::rename(path("part"), root + own);
    }
    for (const char *target :
         {"folder", "/tmp/bsp/folder", "../../dev/mtd4", "a..b", "folder/..x"}) {
        fs::create_symlink(target, root + "/tmp/bsp/link");
        EXPECT_EQ(open(), "") << target;
        fs::remove(root + "/tmp/bsp/link");
    }
}

TEST_F(FolderTest, KnowsWhenItsBoardIsGone) {
    vb::BoardFolder folder;
    vb::FolderError error = {};
    ASSERT_TRUE(folder.open(path().c_str(), error));
    EXPECT_FALSE(folder.isGone());
    fs::rename(path(), path("moved"));
    EXPECT_TRUE(folder.isGone());
    ASSERT_EQ(make(), "");
    EXPECT_TRUE(folder.isGone()); // another is in its place
    removeFolder(path());
    fs::rename(path("moved"), path());
    EXPECT_FALSE(folder.isGone());
    for (const char *part : {"/lock", "/board.state"}) { // it is being removed
        fs::rename(path() + part, path("part"));
        EXPECT_TRUE(folder.isGone()) << part;
        fs::rename(path("part"), path() + part);
    }
    EXPECT_FALSE(folder.isGone());
}

TEST_F(FolderTest, ALockThatCannotBeTakenIsTold) {
    vb::BoardFolder folder;
    vb::FolderError error = {};
    ASSERT_TRUE(folder.open(path().c_str(), error));
    EXPECT_TRUE(vb::BoardLock(folder).isHeld());
    fs::remove(path() + "/lock");
    fs::create_directory(path() + "/lock");
    EXPECT_FALSE(vb::BoardLock(folder).isHeld());
}

TEST(BoardPath, IsTidiedAndRecognised) {
    const struct {
        const char *path, *tidy;
        bool isOfBoard;
    } cases[] = {
        {"/dev/bspHandle", "/dev/bspHandle", true},
        {"//dev/./bspHandle", "/dev/bspHandle", true},
        {"/tmp/bsp/", "/tmp/bsp", true},
        {"/tmp/bsp/a/b", "/tmp/bsp/a/b", true},
        {"/tmp/x/../bsp/a", "/tmp/bsp/a", true},
        {"/tmp/bsp/../x", "/tmp/x", false},
        {"/../tmp/bsp", "/tmp/bsp", true},
        {"/tmp/bspFlashLockFile", "/tmp/bspFlashLockFile", true},
        {"/tmp/bspOther", "/tmp/bspOther", false},
        {"/tmp", "/tmp", false},
        {"/", "", false},
        {"/proc/cmdline2", "/proc/cmdline2", false},
        {"/dev/mtd12", "/dev/mtd12", true},
        {"/dev/mtd7", "/dev/mtd7", true}, // which no board has, so that it is not the host's
        {"/dev/mt", "/dev/mt", false},
        {"/dev/mem", "/dev/mem", true},
        {"/dev/memory", "/dev/memory", false},
    };
    for (const auto &[path, tidy, isOfBoard] : cases) {
        char buffer[vb::kMaxBoardPath];
        ASSERT_TRUE(vb::tidyPath(path, buffer)) << path;
        EXPECT_STREQ(buffer, tidy);
        EXPECT_EQ(vb::isBoardPath(buffer), isOfBoard) << path;
    }
    char buffer[vb::kMaxBoardPath];
    EXPECT_FALSE(vb::tidyPath(("/" + std::string(vb::kMaxBoardPath, 'a')).c_str(), buffer));
}

} // namespace
