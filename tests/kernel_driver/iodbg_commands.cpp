// iodbg on the kernel's own flash driver: it answers what the library does, and finds by reading
// back what neither the library nor the tools notice. No kernel module of the board is there.

#include "bsp.h"
#include "tests/kernel_driver/chip.h"
#include "tests/kernel_driver/files.h"
#include "tests/kernel_driver/subjects.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sys/wait.h>

namespace {

constexpr char kFile[] = "/tmp/file";
constexpr uint32_t kImageSize = 3 * kBlockSize + 1000;

// The exit codes that docs/iodbg.md promises.
constexpr int32_t kDone = 0;
constexpr int32_t kBoardFailed = 1;
constexpr int32_t kRefused = 2;
constexpr int32_t kReadsBackDifferently = 3;

/** Runs iodbg where nobody answers its questions. */
Answer iodbg(int32_t exitCode, const std::string &arguments) {
    return expectStatus("iodbg " + arguments, exitCode, [&] {
        const int status = std::system(("iodbg " + arguments + " </dev/null").c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    });
}

std::string hexNumber(size_t value) {
    char digits[24];
    std::snprintf(digits, sizeof(digits), "0x%zX", value);
    return digits;
}

/** A file whose end tells what it is. */
Bytes image(uint32_t seed) {
    const std::string name = "image " + std::to_string(seed);
    Bytes bytes = patterned(kImageSize, seed);
    Bytes header(BSP_OS_HEADER_SIZE);
    std::copy(name.begin(), name.end(), header.begin());
    std::copy(header.begin(), header.end(), bytes.end() - BSP_OS_HEADER_SIZE);
    return bytes;
}

Answer upgradeOs(int32_t exitCode, const Bytes &content, const std::string &bank = "0") {
    writeFile(kFile, content);
    return iodbg(exitCode, "upgrade os /tmp/file --bank " + bank + " --yes");
}

Answer mtdWrite(int32_t exitCode, const Bytes &content) {
    writeFile(kFile, content);
    return iodbg(exitCode, "mtd write mtd0 /tmp/file --yes");
}

constexpr char kImageVerified[] =
    "Verified                     read back, image and header block are the file's\n";
constexpr char kFileVerified[] = "Verified     read back, all bytes are the file's\n";
constexpr char kDoNotStart[] =
    "; do not start this bank: write the image again, or use the other bank\n";

void checkGoodBanks() {
    const Chip chip;
    beginSection("iodbg: images in good banks");
    expectSame("there is no kernel module of the board", 0, exists("/dev/bspHandle") ? 1 : 0);
    expectSame("both banks are empty",
               "Bank 0 (/dev/mtd12): empty, all 512 bytes of the header block are 0xFF\n"
               "Bank 1 (/dev/mtd14): empty, all 512 bytes of the header block are 0xFF\n",
               iodbg(kDone, "image info").printed);
    expectPrinted(iodbg(kRefused, "upgrade os /tmp/file --bank 2 --yes"),
                  "--bank: '2' is not a number from 0 to 1");
    const Answer first = upgradeOs(kDone, image(1));
    expectPrinted(first, kImageVerified);
    expectPrinted(first, "Bad blocks below it          none\n");
    expectPrinted(upgradeOs(kDone, image(2), "1"), kImageVerified);
    expectSame("the first is in its bank", image(1), readCells(12, 0, kImageSize));
    expectSame("the second is in its bank", image(2), readCells(14, 0, kImageSize));
    expectPrinted(iodbg(kDone, "image info --bank 0"), "|image 1.........|\n");
    expectPrinted(iodbg(kDone, "image info --bank 1"), "|image 2.........|\n");
    expectPrinted(iodbg(kRefused, "upgrade os /tmp/file --bank 0"), "nobody answered");
    expectSame("unconfirmed, the first is still there", image(1), readCells(12, 0, kImageSize));
}

/** What passes to a driver that is the kernel's own: of iodbg, and of a tool that it starts. */
void checkTrace() {
    const Chip chip;
    beginSection("iodbg: what programs send to the driver");
    const Answer read = iodbg(kDone, "trace --output - -- iodbg mtd read mtd0 /tmp/copy --force");
    expectPrinted(read, " open /dev/mtd0\n");
    expectPrinted(read, " MTD info mtd0\n");
    expectPrinted(read, " MTD read mtd0 0x0+0x20000\n");
    const Answer header = iodbg(kDone, "trace --output - -- iodbg image info --bank 1");
    expectPrinted(header, " open /dev/mtd14\n");
    expectPrinted(header, " MTD is-bad mtd14 0x");
    expectPrinted(header, " MTD read mtd14 0x");
    const Answer json = iodbg(kDone, "trace --json --output - -- nanddump -l 1 -f /dev/null "
                                     "/dev/mtd12");
    expectPrinted(json, "\"kind\":\"mtd-read\"");
    expectPrinted(json, "\"partition\":12");
}

/** How often a text is in another. */
int64_t count(const std::string &text, const std::string &wanted) {
    int64_t found = 0;
    for (size_t at = text.find(wanted); at != std::string::npos; at = text.find(wanted, at + 1))
        ++found;
    return found;
}

void checkProgress() {
    const Chip chip({slowness()});
    beginSection("iodbg: how far the tool has come with an image");
    constexpr size_t kLargeSize = 8 * 1024 * 1024; // in 4096 pages, each of which takes 0.2 ms
    writeFile(kFile, patterned(kLargeSize));
    const std::string printed = iodbg(kDone, "upgrade os /tmp/file --bank 0 --yes --json").printed;
    expectSame("the erase is told at its start", 1, count(printed, "\"step\":1,"));
    expectSame("the write is told several times", 1, count(printed, "\"step\":2,") > 2 ? 1 : 0);
}

void checkBanksWithBadBlocks() {
    const Chip chip({badBlock(12, 2), badBlock(14, kHeaderAt / kBlockSize)});
    beginSection("iodbg: an image around a bad block");
    const Answer moved = upgradeOs(kDone, image(1));
    expectPrinted(moved, kImageVerified);
    expectPrinted(moved, "Bad blocks below it          2\n"
                         "Moved behind them by, bytes  131072\n");
    beginSection("iodbg: a bad block where the header belongs");
    // It is in the next block, where the tool that reads it looks as well.
    expectPrinted(upgradeOs(kDone, image(1), "1"), kImageVerified);
}

void checkWeakPage() {
    const Chip chip({weakPage(12, 70, 1)});
    beginSection("iodbg: a page of the image wears out");
    upgradeOs(kDone, image(1));
    const Answer answer = upgradeOs(kReadsBackDifferently, image(2));
    expectPrinted(answer, "iodbg: bank 0 reads back differently: byte 0x20000 of the file, at "
                          "0x20000 in /dev/mtd12, is 0xFF instead of ");
    expectPrinted(answer, std::string("; block 1 reads as erased") + kDoNotStart);
    expectPrinted(upgradeOs(kDone, image(2), "1"), kImageVerified); // what the message advises
}

void checkWornBlock() {
    const Chip chip({weakBlock(12, 1, 1)});
    beginSection("iodbg: a block of the image wears out");
    upgradeOs(kDone, image(1));
    // The simulation erases before it fails.
    const Answer answer = upgradeOs(kDone, image(2));
    expectPrinted(answer, "flash_erase: error!: /dev/mtd12: MTD Erase failure\n");
    expectPrinted(answer, kImageVerified);
}

void checkHeaderPages() {
    const Chip chip(
        {weakPage(12, kHeaderAt / kPageSize, 1), lostPage(14, kHeaderAt / kPageSize, 2)});
    beginSection("iodbg: the header's page wears out");
    upgradeOs(kDone, image(1));
    expectPrinted(upgradeOs(kReadsBackDifferently, image(2)),
                  std::string("iodbg: bank 0 reads back differently: the copy of the header block, "
                              "which is read at 0x2700000, is empty") +
                      kDoNotStart);
    expectSame("the bank looks empty",
               "Bank 0 (/dev/mtd12): empty, all 512 bytes of the header block are 0xFF\n",
               iodbg(kDone, "image info --bank 0").printed);
    beginSection("iodbg: the header's page cannot be read any more");
    upgradeOs(kDone, image(1), "1"); // each upgrade looks at it before and behind the write
    expectPrinted(upgradeOs(kReadsBackDifferently, image(2), "1"),
                  std::string("iodbg: bank 1 reads back differently: the copy of the header block, "
                              "which is read at 0x2700000, differs") +
                      kDoNotStart);
}

void checkLostPage() {
    const Chip chip({lostPage(12, 70, 1)});
    beginSection("iodbg: a page of the image cannot be read any more");
    upgradeOs(kDone, image(1));
    expectPrinted(upgradeOs(kReadsBackDifferently, image(2)),
                  "iodbg: bank 0 reads back differently: byte 0x23");
}

void checkSmallBank() {
    constexpr uint32_t kBlocks = 16;
    const Chip chip({}, kBlocks);
    beginSection("iodbg: a bank without a place for the header");
    expectPrinted(upgradeOs(kBoardFailed, image(1), "1"),
                  "iodbg: /dev/mtd14 has 2097152 bytes, too few for an image and the copy of its "
                  "header block; nothing was changed\n");
    expectSame("nothing is written", erased(kBlockSize), readCells(14, 0, kBlockSize));
}

constexpr char kAllLost[] =
    " was not stored, and all boot settings are lost: the block was erased and not written; they "
    "were main_system=1, boot_type=-7, baudrate=19200, password=1, user_pwd=0, boot_pwd=(not "
    "shown); "
    "the flash takes only whole pages of 2048 bytes, and so no setting of these 256; write the "
    "block "
    "back with 'iodbg mtd write mtd4 ";

void checkLostSettings() {
    const Chip chip;
    const Bytes settings = part(settingsPage(), 0, 256);
    beginSection("iodbg: a boot setting loses them all");
    expectSame("settings are stored", 0, writeDevice(4, 0, settingsPage()));
    expectPrinted(iodbg(kDone, "boot get"), "Mode (system to start)       1\n"
                                            "Boot flag                    -7\n"
                                            "Console, baud                19200\n"
                                            "Console asks for a password  yes\n"
                                            "User password in force       no\n");
    expectPrinted(iodbg(kReadsBackDifferently, "boot set mode 0 --backup /tmp/backup"),
                  std::string("iodbg: mode") + kAllLost + "/tmp/backup'\n");
    expectSame("the block is erased", erased(kBlockSize), readCells(4, 0, kBlockSize));
    expectPrinted(iodbg(kDone, "boot get"),
                  "Block                        erased: nothing is stored");
    expectSame("the backup is the block", settings, readFile("/tmp/backup"));

    beginSection("iodbg: boot settings come back as the message says");
    expectPrinted(iodbg(kDone, "mtd write mtd4 /tmp/backup --yes"), kFileVerified);
    expectSame("they are stored", settings, readCells(4, 0, 256));
    expectPrinted(iodbg(kDone, "boot get flag"), "Boot flag  -7\n");
    expectPrinted(iodbg(kReadsBackDifferently, "boot set user-password on"),
                  std::string("iodbg: user-password") + kAllLost +
                      "FILE', FILE being its 256 bytes");
    expectPrinted(iodbg(kRefused, "boot set baudrate 1200"), "baudrate: '1200' is none of 9600|");
}

void checkBadSettingsBlock() {
    const Chip chip({badBlock(4, 0)});
    beginSection("iodbg: a bad block keeps the boot settings");
    expectSame("settings are stored", 0, writeDevice(4, 0, settingsPage()));
    expectPrinted(iodbg(kReadsBackDifferently, "boot set mode 0"),
                  "iodbg: mode was not stored, the block is as it was; the flash takes only whole "
                  "pages of 2048 bytes, and so no setting of these 256: write a whole block of "
                  "settings with 'iodbg mtd write mtd4 FILE'\n");
    expectPrinted(iodbg(kDone, "boot get mode"), "Mode (system to start)  1\n");
}

void checkGoodPartition() {
    const Chip chip;
    beginSection("iodbg: a file in a partition");
    const Bytes content = patterned(kImageSize, 1);
    expectPrinted(mtdWrite(kDone, content), kFileVerified);
    iodbg(kDone, "mtd read mtd0 /tmp/read");
    Bytes expected = paddedToPage(content);
    expected.resize(kBootBlocks * kBlockSize, kErased);
    expectSame("the copy is the whole partition", expected, readFile("/tmp/read"));
    expectPrinted(iodbg(4, "mtd read mtd0 /tmp/read"), "iodbg: /tmp/read exists");
    expectPrinted(iodbg(kDone, "mtd erase mtd0 --yes"), "Erased, bytes  131072\n");
    expectSame("the first block is erased", erased(kBlockSize), readCells(0, 0, kBlockSize));

    beginSection("iodbg: a boot loader");
    iodbg(kDone, "image pack-boot /tmp/file /tmp/boot --force");
    expectPrinted(iodbg(kDone, "upgrade boot /tmp/boot --yes"), kFileVerified);
    expectSame("it is in the partition", readFile("/tmp/boot"), readCells(0, 0, kImageSize + 80));
}

void checkBadPartition() {
    const Chip chip({badBlock(0, 0)});
    beginSection("iodbg: a file over a bad block, twice");
    const Bytes first = patterned(kImageSize, 1);
    const Bytes second = patterned(kImageSize, 2);
    expectPrinted(mtdWrite(kDone, first), kFileVerified); // the driver takes it
    const Answer answer = mtdWrite(kReadsBackDifferently, second);
    const Bytes both = bothProgrammed(first, second);
    size_t at = 0;
    while (both[at] == second[at])
        ++at;
    const std::string place = hexNumber(at);
    expectPrinted(answer, "iodbg: /dev/mtd0 reads back differently: byte " + place +
                              " of the file, at " + place + " in /dev/mtd0, is ");
    expectPrinted(answer, "; block 0 is bad; write again; blocks that do not take their data need "
                          "another partition\n");
    expectPrinted(iodbg(kBoardFailed, "mtd erase mtd0 --yes"),
                  "iodbg: cannot erase /dev/mtd0: BSP_E_ERASE");
}

void checkWornPartition() {
    const Chip chip({weakPage(0, 4, 1)});
    beginSection("iodbg: a page under a file wears out");
    expectPrinted(mtdWrite(kDone, patterned(kImageSize, 1)), kFileVerified);
    // The simulation programs before it fails; the library goes on with the same bytes behind it.
    expectPrinted(mtdWrite(kReadsBackDifferently, patterned(kImageSize, 2)),
                  "iodbg: /dev/mtd0 reads back differently: byte 0x2800 of the file, at 0x2800 in "
                  "/dev/mtd0, is ");
    beginSection("iodbg: a page under a boot loader wears out");
    iodbg(kDone, "image pack-boot /tmp/file /tmp/boot --force");
    expectPrinted(iodbg(kReadsBackDifferently, "upgrade boot /tmp/boot --yes"),
                  "; do not reset the board: repeat the upgrade until it is verified\n");
}

} // namespace

void checkIodbg() {
    checkGoodBanks();
    checkTrace();
    checkProgress();
    checkBanksWithBadBlocks();
    checkWeakPage();
    checkWornBlock();
    checkHeaderPages();
    checkLostPage();
    checkSmallBank();
    checkLostSettings();
    checkBadSettingsBlock();
    checkGoodPartition();
    checkBadPartition();
    checkWornPartition();
}
