// What iodbg thinks of the folder and the lock files that the board's programs share.

#include "iodbg/core/shared_files.h"
#include "tests/iodbg/flash_commands_test.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr char kFolder[] = "/tmp/bsp";
constexpr const char *kLocks[] = {"/tmp/bspFlashLockFile", "/tmp/bspPoeLockFile"};

class SharedFilesTest : public FlashCommandsTest {
  protected:
    /** The flaws as lines. */
    static Lines flaws(uid_t user = geteuid()) {
        Lines lines;
        for (const iodbg::SharedFileFlaw &flaw : iodbg::sharedFileFlaws(user))
            lines.push_back(flaw.path + " " + flaw.found + "; " + flaw.advice);
        return lines;
    }
    static std::string firstFlaw() {
        const Lines found = flaws();
        return found.empty() ? "none" : found[0];
    }
    void setMode(const char *path, mode_t mode) const {
        ASSERT_EQ(chmod(boardFile(path).c_str(), mode), 0);
    }
    /** A folder that is wrong: no header is read, which every command says that needs one. */
    void expectNoHeader(const std::string &text) const {
        const std::string image = makeImage(4096);
        expectFailure({"image", "info"}, 4, {text});
        const std::string flaw = text.substr(0, text.find(", so that"));
        expectFailure({"upgrade", "os", image, "--bank", "1", "--yes"}, 4, {flaw});
        expectFailure({"upgrade", "os", image, "--bank", "1", "--dry-run"}, 4, {text});
        EXPECT_EQ(flash(14).erases[0], 0u);
    }
};

TEST_F(SharedFilesTest, ABoardAsItIsMadeAndUsedIsRight) {
    EXPECT_EQ(flaws(), Lines{});
    EXPECT_EQ(iodbg({"image", "info"}).exitCode, 0);
    ASSERT_EQ(iodbg({"poe", "info"}).exitCode, 0);
    for (const char *lock : kLocks)
        ASSERT_TRUE(fs::exists(boardFile(lock)));
    EXPECT_EQ(flaws(), Lines{});
}

TEST_F(SharedFilesTest, AUsersUmaskMakesNoFlaw) {
    const mode_t mask = umask(S_IWOTH);
    useModel(0x0709);
    umask(mask);
    EXPECT_EQ(flaws(), Lines{});
}

TEST_F(SharedFilesTest, OthersWhoCanWriteAreAFlaw) {
    constexpr char kAdvice[] =
        "; make it anew as root while no upgrade is under way (what it notes of a failed PoE "
        "upgrade is lost with it): rm -rf /tmp/bsp && mkdir -m 0755 /tmp/bsp";
    setMode(kFolder, 0777);
    EXPECT_EQ(flaws(),
              Lines{std::string("/tmp/bsp can be changed by others, its mode is 0777") + kAdvice});
    setMode(kFolder, 01777);
    EXPECT_EQ(flaws(),
              Lines{std::string("/tmp/bsp can be changed by others, its mode is 1777") + kAdvice});
    setMode(kFolder, 0775);
    EXPECT_EQ(flaws(),
              Lines{std::string("/tmp/bsp can be changed by others, its mode is 0775") + kAdvice});
    expectNoHeader(
        "/tmp/bsp can be changed by others, its mode is 0775, so that no image header "
        "can be read safely; make it anew as root while no upgrade is under way (what it notes of "
        "a failed PoE upgrade is lost with it): rm -rf /tmp/bsp && mkdir -m 0755 "
        "/tmp/bsp");
    setMode(kFolder, 0700);
    EXPECT_EQ(flaws(), Lines{});
    for (const char *lock : kLocks) {
        const std::string name = lock;
        writeBoardFile(name, "");
        setMode(lock, 0666);
        EXPECT_EQ(flaws(), Lines{name +
                                 " can be changed by others, its mode is 0666; remove it as "
                                 "root while no upgrade is under way: rm -f " +
                                 name});
        expectNoHeader(name + " can be changed by others");
        setMode(lock, 0644);
        EXPECT_EQ(flaws(), Lines{});
    }
}

TEST_F(SharedFilesTest, LinksAreAFlaw) {
    writeBoardFile("/tmp/bsp/elsewhere", "");
    for (const char *lock : kLocks) {
        fs::create_symlink("/tmp/bsp/elsewhere", boardFile(lock));
        EXPECT_EQ(firstFlaw().find(std::string(lock) + " is a symbolic link; "), 0u) << firstFlaw();
        expectNoHeader(std::string(lock) + " is a symbolic link");
        fs::remove(boardFile(lock));
        fs::create_symlink("/tmp/bsp/nowhere", boardFile(lock));
        EXPECT_EQ(flaws().size(), 1u);
        fs::remove(boardFile(lock));
        writeBoardFile(lock, "");
        fs::create_hard_link(boardFile(lock), boardFile("/tmp/second"));
        EXPECT_EQ(firstFlaw().find(std::string(lock) + " has another name, as a hard link; "), 0u);
        expectNoHeader(std::string(lock) + " has another name");
        fs::remove(boardFile("/tmp/second"));
        EXPECT_EQ(flaws(), Lines{});
    }
    fs::rename(boardFile(kFolder), boardFile("/tmp/real"));
    fs::create_symlink("bspPoeLockFile", boardFile(kFolder)); // whatever it leads to
    EXPECT_EQ(firstFlaw().find("/tmp/bsp is a symbolic link; "), 0u);
    expectNoHeader("/tmp/bsp is a symbolic link");
}

TEST_F(SharedFilesTest, OtherThingsInTheirPlaceAreAFlaw) {
    for (const char *lock : kLocks) {
        ASSERT_EQ(mkfifo(boardFile(lock).c_str(), 0600), 0);
        EXPECT_EQ(firstFlaw().find(std::string(lock) + " is not a regular file; "), 0u);
        fs::remove(boardFile(lock));
    }
    fs::remove_all(boardFile(kFolder));
    writeBoardFile(kFolder, "");
    EXPECT_EQ(firstFlaw().find("/tmp/bsp is not a folder; "), 0u);
    expectNoHeader("/tmp/bsp is not a folder");
}

TEST_F(SharedFilesTest, AMissingFolderIsAFlaw) {
    fs::remove_all(boardFile(kFolder));
    EXPECT_EQ(flaws(), Lines{"/tmp/bsp is missing; make it as root: mkdir -m 0755 /tmp/bsp"});
    expectNoHeader("/tmp/bsp is missing, so that no image header can be read safely; make it as "
                   "root: mkdir -m 0755 /tmp/bsp");
}

TEST_F(SharedFilesTest, AnothersFilesAreAFlaw) {
    // To a user who is neither root nor the one whose files these are.
    const uid_t owner = geteuid();
    const uid_t other = owner + 1;
    for (const char *lock : kLocks)
        writeBoardFile(lock, "");
    if (owner == 0) { // root's files are everybody's
        EXPECT_EQ(flaws(other), Lines{});
        for (const char *path : {kFolder, kLocks[0], kLocks[1]})
            ASSERT_EQ(chown(boardFile(path).c_str(), other, static_cast<gid_t>(-1)), 0);
        expectNoHeader("/tmp/bsp belongs to user " + std::to_string(other) + ", so that");
        EXPECT_EQ(flaws(other), Lines{});
    }
    const Lines found = flaws(owner == 0 ? 0 : other);
    ASSERT_EQ(found.size(), 3u);
    const std::string stranger = std::to_string(owner == 0 ? other : owner);
    EXPECT_EQ(found[0].find("/tmp/bsp belongs to user " + stranger + "; "), 0u);
    EXPECT_EQ(found[1].find("/tmp/bspFlashLockFile belongs to user " + stranger + "; "), 0u);
    EXPECT_EQ(found[2].find("/tmp/bspPoeLockFile belongs to user " + stranger + "; "), 0u);
}

TEST_F(SharedFilesTest, CheckTellsOfItAndGoesOn) {
    setMode(kFolder, 0777);
    const ProcessResult result = iodbg({"check"});
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_NE(result.out.find("/tmp/bsp can be changed by others"), std::string::npos);
    EXPECT_NE(result.out.find("\nFaults "), std::string::npos) << result.out;
    for (const std::string &line : linesOf(result.out))
        EXPECT_LE(line.size(), 80u) << line;
}

TEST_F(SharedFilesTest, CheckGoesOnWithoutIodbgsOwnLockFile) {
    constexpr char kOwnLock[] = "/tmp/bsp/iodbg.lock";
    const auto expectUnreadBanks = [&](const std::string &found, const std::string &advice) {
        const std::string answer = json({"check"}, 5);
        for (const char *bank : {"0", "1"}) {
            const std::string row = std::string("\"bank ") + bank +
                                    "\",\n      \"verdict\": \"fault\",\n      \"found\": "
                                    "\"cannot open " +
                                    kOwnLock + ": " + found + "\",\n      \"advice\": \"" + advice +
                                    "\",\n      \"code\": \"unreadable\"";
            EXPECT_NE(answer.find(row), std::string::npos) << row << "\n" << answer;
        }
        EXPECT_NE(answer.find("\"boot settings\""), std::string::npos) << "the rest is judged";
        expectFailure({"image", "info"}, 4, {found + "; " + advice});
    };
    constexpr char kRemove[] = "remove it as root while no upgrade is under way";
    fs::create_directory(boardFile(kOwnLock));
    expectUnreadBanks("Is a directory", kRemove);
    fs::remove(boardFile(kOwnLock));
    fs::create_symlink("elsewhere", boardFile(kOwnLock));
    expectUnreadBanks(std::strerror(ELOOP), kRemove);
    fs::remove(boardFile(kOwnLock));
    addFault(openFails(kOwnLock, EACCES));
    expectUnreadBanks("Permission denied", "run iodbg as root");
    clearFaults();
    addFault(openFails(kOwnLock, ENOSPC));
    expectUnreadBanks("No space left on device", "see that /tmp can be written and has space");
    clearFaults();
    EXPECT_EQ(iodbg({"image", "info"}).exitCode, 0);
}

} // namespace
