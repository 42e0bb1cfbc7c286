// Several iodbg on one board: whose turn it is, and who is refused.

#include "flash/flash_lock.h"
#include "support/owned.h"
#include "tests/iodbg/flash_commands_test.h"

#include <csignal>
#include <deque>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <poll.h>
#include <unistd.h>

namespace {

constexpr char kClaims[] = "/tmp/bsp/iodbg.lock";

class FlashClaimTest : public FlashCommandsTest {
  protected:
    /** Everything that iodbg locks, as another process. */
    struct Claims {
        explicit Claims(const std::string &path)
            : file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {}

        struct flock lock(short type, int command, off_t from = 0) const {
            struct flock rest = {};
            rest.l_type = type;
            rest.l_whence = SEEK_SET;
            rest.l_start = from;
            EXPECT_EQ(fcntl(file.get(), command, &rest), 0);
            return rest;
        }
        void take() const { lock(F_WRLCK, F_SETLK); }
        pid_t holder() const {
            const struct flock found = lock(F_WRLCK, F_GETLK);
            return found.l_type == F_UNLCK ? 0 : found.l_pid;
        }

        bsp::Descriptor file;
    };
    Claims claims() const { return Claims(boardFile(kClaims)); }

    /** The flash lock in this process's hands: the library of others waits. */
    struct HeldLibrary {
        explicit HeldLibrary(const std::string &path)
            : file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644)) {
            EXPECT_EQ(bsp_flash_lock_set(file.get(), 1), 0);
        }
        ~HeldLibrary() { bsp_flash_lock_set(file.get(), 2); }

        bsp::Descriptor file;
    };
    std::string libraryLock() const { return boardFile("/tmp/bspFlashLockFile"); }

    std::string bootFile() const {
        EXPECT_EQ(iodbg({"image", "pack-boot", makeImage(5000, "raw"), hostFile("boot")}).exitCode,
                  0);
        return hostFile("boot");
    }
};

TEST_F(FlashClaimTest, WhatOneChangesNoOtherChanges) {
    const std::string image = makeImage(4096);
    const std::string boot = bootFile();
    store(4, 0, "main_system=1");
    const std::string text = " is being changed by process " + std::to_string(getpid()) +
                             "; nothing was done: wait for its end";
    const std::pair<Words, const char *> changes[] = {
        {{"upgrade", "os", image, "--bank", "1", "--yes"}, "/dev/mtd14"},
        {{"upgrade", "os", image, "--bank", "0"}, "/dev/mtd12"}, // not even asked
        {{"upgrade", "boot", boot, "--yes"}, "/dev/mtd0"},
        {{"upgrade", "cpld", image, "--yes"}, "the CPLD's logic"},
        {{"mtd", "write", "mtd4", image, "--yes"}, "/dev/mtd4"},
        {{"mtd", "erase", "mtd4", "--yes"}, "/dev/mtd4"},
        {{"boot", "set", "mode", "0"}, "/dev/mtd4"}};
    {
        const Claims other = claims();
        constexpr off_t kBehindHeaders = 2; // which are free to read
        other.lock(F_WRLCK, F_SETLK, kBehindHeaders);
        for (const auto &[words, what] : changes)
            expectRefusal(words, 4, what + text);
        EXPECT_EQ(iodbg({"mtd", "write", "mtd4", image, "--dry-run"}).exitCode, 0);
        EXPECT_EQ(iodbg({"boot", "get"}).exitCode, 0);
    }
    for (const auto &[words, what] : changes)
        EXPECT_EQ(iodbg(words, "y\n").exitCode, 0) << what;
}

TEST_F(FlashClaimTest, ASecondUpgradeOfABankIsRefusedBeforeItErases) {
    const std::string image = makeImage(300000);
    const std::string later = makeImage(4096, "later");
    std::optional<HeldLibrary> held(libraryLock());
    // The first one waits for the library's lock, with its claim on the bank.
    Process first = start({"upgrade", "os", image, "--bank", "1", "--yes"});
    const Claims file = claims();
    ASSERT_TRUE(comesTrue([&] { return file.holder() != 0; }));
    Process second = start({"upgrade", "os", later, "--bank", "1", "--yes"});
    EXPECT_TRUE(comesTrue([&] {
        return second.errors().find("/dev/mtd14 is being changed by process " +
                                    std::to_string(file.holder())) != std::string::npos;
    })) << second.errors();
    expectFailure({"mtd", "write", "/dev/mtd14", later, "--yes"}, 4,
                  {"/dev/mtd14 is being changed by process"});
    EXPECT_EQ(flash(14).erases[0], 0u);
    EXPECT_EQ(iodbg({"mtd", "erase", "mtd12", "--yes"}).exitCode, 0) << "the other bank is free";
    held.reset();
    EXPECT_EQ(second.wait().exitCode, 4);
    EXPECT_EQ(first.wait().exitCode, 0);
    EXPECT_EQ(stored(14, 0, 4096), imageBytes(300000).substr(0, 4096));
    EXPECT_EQ(iodbg({"upgrade", "os", later, "--bank", "1", "--yes"}).exitCode, 0);
}

TEST_F(FlashClaimTest, AStreamOfAPartitionWaitsForTheLibrary) {
    std::optional<HeldLibrary> held(libraryLock());
    Process stream = start({"mtd", "read", "mtd4", "-"});
    poll(nullptr, 0, 200); // in real time: what does not wait has given something by then
    EXPECT_EQ(stream.output(), "");
    held.reset();
    const ProcessResult result = stream.wait();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out.size(), 262144u);
}

TEST_F(FlashClaimTest, AKilledUpgradeLeavesNoClaim) {
    const std::string image = makeImage(4096);
    {
        const HeldLibrary held(libraryLock());
        const Claims file = claims();
        const Process killed = start({"upgrade", "os", image, "--bank", "1", "--yes"});
        ASSERT_TRUE(comesTrue([&] { return file.holder() != 0; }));
    }
    EXPECT_EQ(iodbg({"upgrade", "os", image, "--bank", "1", "--yes"}).exitCode, 0);
}

TEST_F(FlashClaimTest, ReadersOfHeadersTakeTurns) {
    store(12, kHeaderPlace, "bank 0" + std::string(kPage - 6, '\0'));
    store(14, kHeaderPlace, "bank 1" + std::string(kPage - 6, '\0'));
    for (int round = 0; round < 3; ++round) {
        std::deque<Process> readers;
        for (int i = 0; i < 3; ++i) {
            for (const char *bank : {"0", "1"})
                readers.emplace_back(Words{builtProgram("iodbg"), "image", "info", "--bank", bank},
                                     boardEnvironment(boardFolder()));
        }
        for (size_t i = 0; i < readers.size(); ++i) {
            const ProcessResult result = readers[i].wait();
            const std::string bank = std::to_string(i % 2);
            EXPECT_EQ(result.exitCode, 0) << result.err;
            EXPECT_EQ(result.err, "");
            EXPECT_NE(result.out.find("|bank " + bank), std::string::npos) << result.out;
        }
    }
}

TEST_F(FlashClaimTest, AReaderWaitsForAnUpgradeAndSaysSo) {
    const Claims other = claims();
    other.take();
    Process reader = start({"image", "info"});
    EXPECT_TRUE(comesTrue([&] { return !reader.errors().empty(); }));
    EXPECT_EQ(reader.errors(), "iodbg: waiting for process " + std::to_string(getpid()) +
                                   ", which writes an image\n");
    EXPECT_EQ(reader.output(), "");
    other.lock(F_UNLCK, F_SETLK);
    EXPECT_EQ(reader.wait().exitCode, 0);
}

TEST_F(FlashClaimTest, CheckWaitsForNoUpgrade) {
    const Claims other = claims();
    other.take();
    Process checker = start({"check"});
    EXPECT_TRUE(comesTrue([&] { return checker.output().find("\nFaults ") != std::string::npos; }));
    const std::string writer =
        " not judged  process " + std::to_string(getpid()) + " writes an image\n";
    for (const char *bank : {"bank 0", "bank 1"}) {
        const std::string out = checker.output();
        const size_t row = out.find(std::string("\n") + bank + " ");
        ASSERT_NE(row, std::string::npos) << out;
        EXPECT_NE(out.substr(row + 1, out.find('\n', row + 1) - row).find(writer),
                  std::string::npos)
            << out;
    }
    EXPECT_EQ(checker.errors(), "");
    other.lock(F_UNLCK, F_SETLK);
    checker.wait();
    EXPECT_EQ(iodbg({"check"}).out.find("writes an image"), std::string::npos);
}

TEST_F(FlashClaimTest, AHeaderThatAnotherProgramRemovesIsReadAgain) {
    vb::FaultRule rule = openFails("/tmp/bsp/osHeader.bin", ENOENT);
    rule.when = vb::FaultWhen::Once;
    rule.nth = 2; // behind the tool's that writes it
    addFault(rule);
    const ProcessResult result = iodbg({"image", "info", "--bank", "0"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.err.find("open /tmp/bsp/osHeader.bin fail."), std::string::npos) << result.err;
    clearFaults();
    addFault(openFails("/tmp/bsp/osHeader.bin", EACCES));
    EXPECT_EQ(iodbg({"image", "info", "--bank", "0"}).exitCode, 1);
}

TEST_F(FlashClaimTest, AnUpgradeBelievesAnotherHeaderOnlyTheThirdTime) {
    const std::string image = makeImage(4096);
    // The reads of the scratch file: two before the upgrade, the tool's, and behind it.
    addFault(vb::parseFault({"/tmp/bsp/osHeader.bin", "read", "", "4", "once", "corrupt=3:0x10"}));
    EXPECT_EQ(iodbg({"upgrade", "os", image, "--bank", "1", "--yes"}).exitCode, 0);
    clearFaults();
    addFault(vb::parseFault({"/tmp/bsp/osHeader.bin", "read", "", "4", "from", "corrupt=3:0x10"}));
    expectFailure({"upgrade", "os", image, "--bank", "1", "--yes"}, 3,
                  {"the copy of the header block, which is read at 0x2700000, differs"});
}

TEST_F(FlashClaimTest, TheLockFileIsNotFollowedToAnothersFile) {
    constexpr char kTarget[] = "/tmp/bsp/target";
    writeBoardFile(kTarget, "kept");
    std::filesystem::create_symlink(kTarget, boardFile(kClaims));
    expectFailure({"mtd", "erase", "mtd4", "--yes"}, 4, {"cannot open /tmp/bsp/iodbg.lock: "});
    EXPECT_EQ(readBoardFile(kTarget), "kept");
    std::filesystem::remove(boardFile(kClaims));
    std::filesystem::permissions(boardFile("/tmp/bsp"), std::filesystem::perms(0777));
    expectFailure({"boot", "set", "mode", "1"}, 4,
                  {"/tmp/bsp can be changed by others, its mode is 0777, so that no change of "
                   "flash can be kept apart from others; make it anew as root while no upgrade is "
                   "under way"});
    EXPECT_EQ(flash(4).erases[0], 0u);
}

} // namespace
