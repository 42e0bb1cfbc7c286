// Operating-system images: the library and the MTD tools that it runs.

#include "bsp.h"
#include "tests/kernel_driver/chip.h"
#include "tests/kernel_driver/files.h"
#include "tests/kernel_driver/subjects.h"

#include <unistd.h>

namespace {

constexpr char kImage[] = "/tmp/image";
constexpr char kHeaderFile[] = "/tmp/bsp/osHeader.bin";
constexpr uint32_t kHeaderBlock = kHeaderAt / kBlockSize;
constexpr uint32_t kHeaderSize = BSP_OS_HEADER_SIZE;
constexpr uint32_t kSmallSize = 3 * kBlockSize + 1000;

Bytes headerOf(const Bytes &image) {
    return part(image, image.size() - kHeaderSize, kHeaderSize);
}

/** A page as nandwrite pads it. */
Bytes storedImage(const Bytes &image) {
    return paddedToPage(image, kErased);
}

uint32_t partitionOf(int32_t bank) {
    return bank == 0 ? 12 : 14;
}

Answer upgrade(int32_t expected, const Bytes &image, int32_t bank) {
    writeFile(kImage, image);
    return expectStatus("bspImageUpgrade(" + std::to_string(image.size()) + " bytes, bank " +
                            std::to_string(bank) + ")",
                        expected, [&] { return bspImageUpgrade(BSP_IMAGE_OS, kImage, bank); });
}

void upgradeSilently(const Bytes &image, int32_t bank) {
    expectSame("it prints nothing", "", upgrade(BSP_OK, image, bank).printed);
    expectSame("the work file is gone", 0, exists(kHeaderFile) ? 1 : 0);
}

void expectHeader(const Bytes &expected, int32_t bank) {
    Bytes header(kHeaderSize, 0x55);
    expectSilent("bspOsImageInfoGet(bank " + std::to_string(bank) + ")", BSP_OK,
                 [&] { return bspOsImageInfoGet(header.data(), bank); });
    expectSame("it is the expected header", expected, header);
    expectSame("the work file is gone", 0, exists(kHeaderFile) ? 1 : 0);
}

void expectStored(const std::string &what, const Bytes &expected, uint32_t offset, int32_t bank) {
    expectSame(what, expected,
               readCells(partitionOf(bank), offset, static_cast<uint32_t>(expected.size())));
}

void checkGoodBanks() {
    const Chip chip;
    beginSection("image: empty banks");
    expectHeader(erased(kHeaderSize), 0);
    expectHeader(erased(kHeaderSize), 1);

    beginSection("image: the largest one");
    const Bytes largest = patterned(kHeaderAt, 1);
    upgradeSilently(largest, 0);
    expectStored(
        "image, header, and erased flash lie in the bank",
        joined({largest, headerOf(largest), erased(kBankSize - largest.size() - kHeaderSize)}), 0,
        0);
    expectHeader(headerOf(largest), 0);
    expectHeader(erased(kHeaderSize), 1);

    beginSection("image: one byte more");
    expectPrinted(upgrade(BSP_E_FAILED, Bytes(kHeaderAt + 1), 0),
                  "OS file size 40894465 > max 40894464\r\n");
    expectHeader(headerOf(largest), 0);

    beginSection("image: a small one over the large one, and one in the other bank");
    const Bytes small = patterned(kSmallSize, 2);
    const Bytes other = patterned(kSmallSize, 3);
    upgradeSilently(small, 0);
    upgradeSilently(other, 7);
    Bytes expected = small;
    expected.resize(kHeaderAt, kErased);
    expectStored("image, erased flash and header lie in the bank",
                 joined({expected, headerOf(small)}), 0, 0);
    expectHeader(headerOf(small), 0);
    expectHeader(headerOf(other), 7);

    beginSection("image: one without room for a header");
    expectPrinted(upgrade(BSP_E_WRITE, Bytes(kHeaderSize - 1), 0), "get OS file header failed.");
    expectHeader(erased(kHeaderSize), 0);
}

void checkNameLikeAnOption() {
    const Chip chip;
    beginSection("image: a name that nandwrite could take for an option");
    const Bytes image = patterned(kSmallSize, 2);
    expectSame("the file's folder is entered", 0, chdir("/tmp"));
    writeFile("--help", image);
    expectSilent("bspImageUpgrade(--help)", BSP_OK,
                 [] { return bspImageUpgrade(BSP_IMAGE_OS, "--help", 0); });
    expectStored("the image lies in the bank", image, 0, 0);
    expectHeader(headerOf(image), 0);
}

/** What flash_erase says of a bank with a bad block, and then does it block by block. */
constexpr char kNotInOneGo[] =
    "libmtd: error!: MEMERASE64 ioctl failed for eraseblock 0 (mtd12)\n"
    "        error 5 (Input/output error)\n"
    "flash_erase: error!: /dev/mtd12: MTD Erase entire chip failureTrying one by one each sector.\n"
    "             error 5 (Input/output error)\n";

void upgradeOverBadBlock(const Bytes &image) {
    expectSame("flash_erase tells why it goes block by block", kNotInOneGo,
               upgrade(BSP_OK, image, 0).printed);
}

void checkBadBlock() {
    const Chip chip({badBlock(12, 2)});
    const Bytes small = patterned(kSmallSize, 2);
    beginSection("image: a bad block below a small image");
    upgradeOverBadBlock(small);
    expectStored("the image goes on behind the block",
                 joined({part(small, 0, 2 * kBlockSize), erased(kBlockSize),
                         part(small, 2 * kBlockSize, small.size() - 2 * kBlockSize)}),
                 0, 0);
    expectHeader(headerOf(small), 0);

    beginSection("image: a bad block below the largest image");
    const Bytes largest = patterned(kHeaderAt, 1);
    upgradeOverBadBlock(largest);
    // The image's last block lies where the header is written afterwards.
    const Bytes last = part(largest, kHeaderAt - kBlockSize, kBlockSize);
    const Bytes header = headerOf(largest);
    expectStored("the header is written over the image's last block",
                 joined({bothProgrammed(part(last, 0, kHeaderSize), header),
                         part(last, kHeaderSize, kBlockSize - kHeaderSize)}),
                 kHeaderAt, 0);
    Bytes seen(kHeaderSize);
    expectPrinted(expectStatus("bspOsImageInfoGet(bank 0)", BSP_OK,
                               [&] { return bspOsImageInfoGet(seen.data(), 0); }),
                  "uncorrectable bitflip(s) at offset 0x02700000\n");
    expectSame("it is not the header", 1, seen != header);
}

void checkBadHeaderBlock() {
    const Chip chip({badBlock(12, kHeaderBlock)});
    beginSection("image: a bad block where the header belongs");
    const Bytes small = patterned(kSmallSize, 2);
    upgradeOverBadBlock(small);
    expectStored("the header is in the next block", headerOf(small), kHeaderAt + kBlockSize, 0);
    expectHeader(headerOf(small), 0); // nanddump passes over the block, too
}

void checkWornBlock() {
    const Chip chip({weakBlock(12, 1, 1)});
    beginSection("image: a block that wears out");
    const Bytes first = patterned(kSmallSize, 2);
    const Bytes second = patterned(kSmallSize, 3);
    upgradeSilently(first, 0);
    expectStored("the first image is in the bank", storedImage(first), 0, 0);
    const Answer answer = upgrade(BSP_OK, second, 0);
    expectSame("flash_erase tells what failed, and ends as if nothing had",
               std::string(kNotInOneGo) +
                   "libmtd: error!: MEMERASE64 ioctl failed for eraseblock 1 (mtd12)\n"
                   "        error 5 (Input/output error)\n"
                   "flash_erase: error!: /dev/mtd12: MTD Erase failure\n"
                   "             error 5 (Input/output error)\n",
               answer.printed);
    // The simulation erases before it fails.
    expectStored("the second image is in the bank", storedImage(second), 0, 0);
    expectHeader(headerOf(second), 0);
}

void checkWeakPage() {
    const Chip chip({weakPage(12, 70, 1)});
    beginSection("image: a page that wears out");
    const Bytes first = patterned(kSmallSize, 2);
    const Bytes second = patterned(kSmallSize, 3);
    upgradeSilently(first, 0);
    expectSame("nandwrite tells what failed, and ends as if nothing had",
               "libmtd: error!: cannot write 2048 bytes to mtd12 (eraseblock 1, offset 12288)\n"
               "        error 5 (Input/output error)\n"
               "Erasing failed write from 0x020000 to 0x03ffff\n",
               upgrade(BSP_OK, second, 0).printed);
    expectStored("the block is erased, and its data are in the next one",
                 joined({part(second, 0, kBlockSize), erased(kBlockSize),
                         part(second, kBlockSize, second.size() - kBlockSize)}),
                 0, 0);
    expectHeader(headerOf(second), 0);
}

void checkWeakHeaderPage() {
    const Chip chip({weakPage(12, kHeaderAt / kPageSize, 1)});
    beginSection("image: the header's page wears out");
    const Bytes first = patterned(kSmallSize, 2);
    const Bytes second = patterned(kSmallSize, 3);
    upgradeSilently(first, 0);
    expectHeader(headerOf(first), 0);
    expectSame("nandwrite tells what failed, and ends as if nothing had",
               "libmtd: error!: cannot write 2048 bytes to mtd12 (eraseblock 312, offset 0)\n"
               "        error 5 (Input/output error)\n"
               "Erasing failed write from 0x2700000 to 0x271ffff\n",
               upgrade(BSP_OK, second, 0).printed);
    expectStored("the header is in the next block", headerOf(second), kHeaderAt + kBlockSize, 0);
    expectHeader(erased(kHeaderSize), 0); // the bank looks empty
}

void checkLostHeader() {
    const Chip chip({lostPage(12, kHeaderAt / kPageSize, 1)});
    beginSection("image: a header that cannot be read any more");
    const Bytes small = patterned(kSmallSize, 2);
    upgradeSilently(small, 0);
    expectHeader(headerOf(small), 0);
    Bytes header(kHeaderSize);
    expectPrinted(expectStatus("bspOsImageInfoGet(bank 0)", BSP_OK,
                               [&] { return bspOsImageInfoGet(header.data(), 0); }),
                  "ECC: 8 uncorrectable bitflip(s) at offset 0x02700000\n");
    expectSame("it is not the header", 1, header != headerOf(small));
}

void checkSmallBank() {
    constexpr uint32_t kBlocks = 16;
    const Chip chip({badBlock(14, 15)}, kBlocks);
    const Bytes image = patterned(kBlocks * kBlockSize);

    beginSection("image: a bank that is too small");
    expectPrinted(upgrade(BSP_E_FAILED, patterned(kBlocks * kBlockSize + kPageSize), 1),
                  "Input file does not fit into device");
    expectStored("nothing is written", erased(kBlockSize), 0, 1);
    expectPrinted(upgrade(BSP_E_FAILED, image, 1), "Data was only partially written due to error");
    expectStored("the image is there up to the bad block", part(image, 0, 15 * kBlockSize), 0, 1);

    beginSection("image: a bank without a place for the header");
    const Answer answer = upgrade(BSP_E_FAILED, patterned(kSmallSize), 1);
    expectPrinted(answer, "Input file does not fit into device");
    expectPrinted(answer, "write /dev/mtd14 error, ret = 65280\n");
    Bytes header(kHeaderSize);
    expectPrinted(expectStatus("bspOsImageInfoGet(bank 1)", BSP_E_SHORT_READ,
                               [&] { return bspOsImageInfoGet(header.data(), 1); }),
                  "get OS header file failed.\r\n");
    expectSame("the caller's buffer is untouched", Bytes(kHeaderSize), header);
}

} // namespace

void checkImages() {
    checkGoodBanks();
    checkNameLikeAnOption();
    checkBadBlock();
    checkBadHeaderBlock();
    checkWornBlock();
    checkWeakPage();
    checkWeakHeaderPage();
    checkLostHeader();
    checkSmallBank();
}
