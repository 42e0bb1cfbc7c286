// What the kernel's NAND driver does with the requests that the library sends.

#include "tests/kernel_driver/chip.h"
#include "tests/kernel_driver/files.h"
#include "tests/kernel_driver/subjects.h"

#include <cerrno>
#include <fcntl.h>
#include <mtd/mtd-user.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

void checkGeometry(uint32_t partition, uint32_t blocks) {
    const std::string device = deviceOf(partition);
    const int fd = open(device.c_str(), O_RDONLY);
    mtd_info_user info = {};
    expectSame(device + " tells its geometry", 0, ioctl(fd, MEMGETINFO, &info));
    close(fd);
    expectSame("its size", blocks * kBlockSize, info.size);
    expectSame("its erase block", kBlockSize, info.erasesize);
    expectSame("its page", kPageSize, info.writesize);
    expectSame("its type", MTD_NANDFLASH, info.type);
}

void checkRequests() {
    const Chip chip;
    beginSection("the driver: geometry");
    checkGeometry(0, kBootBlocks);
    checkGeometry(4, kSettingsBlocks);
    checkGeometry(12, kBankBlocks);
    checkGeometry(14, kBankBlocks);

    beginSection("the driver: what it takes");
    const Bytes page = patterned(kPageSize);
    expectSame("a page can be written", 0, writeDevice(0, kPageSize, page));
    expectSame("256 bytes are refused", EINVAL, writeDevice(0, 0, Bytes(256)));
    expectSame("so is a page at an offset of 256", EINVAL, writeDevice(0, 256, page));
    // It takes quarters of a page, although it tells whole ones: the chip can program them one by
    // one.
    expectSame("512 bytes can be written", 0, writeDevice(0, 2 * kPageSize + 512, Bytes(512)));
    expectSame("they leave the page's rest erased",
               joined({erased(512), Bytes(512), erased(kPageSize - 1024)}),
               readCells(0, 2 * kPageSize, kPageSize));
    expectSame("what was refused was not written", joined({erased(kPageSize), page}),
               readCells(0, 0, 2 * kPageSize));
    expectSame("a write at the end is refused", ENOSPC,
               writeDevice(0, kBootBlocks * kBlockSize, page));
    expectSame("a block can be erased", 0, eraseBlock(0, 0));
    expectSame("it is erased then", erased(kBlockSize), readCells(0, 0, kBlockSize));
}

void checkFaultyChip() {
    const Chip chip({badBlock(0, 1), weakBlock(0, 2, 1), weakPage(0, 3, 1), lostPage(0, 4, 1)});
    const Bytes first = patterned(kPageSize, 1);
    const Bytes second = patterned(kPageSize, 2);

    beginSection("the driver: a bad block");
    expectSame("it cannot be erased", EIO, eraseBlock(0, 1));
    // The driver leaves it to its users to keep away from bad blocks.
    expectSame("it can be written", 0, writeDevice(0, kBlockSize, first));
    expectSame("and read", first, readCells(0, kBlockSize, kPageSize));
    expectSame("it can be written again", 0, writeDevice(0, kBlockSize, second));
    expectSame("and holds what both writes left of each other", bothProgrammed(first, second),
               readCells(0, kBlockSize, kPageSize));

    beginSection("the driver: a weak block");
    expectSame("it can be erased once", 0, eraseBlock(0, 2));
    expectSame("it can be written", 0, writeDevice(0, 2 * kBlockSize, first));
    expectSame("it cannot be erased again", EIO, eraseBlock(0, 2));
    // The simulation erases before it fails.
    expectSame("it is erased nevertheless", erased(kPageSize),
               readCells(0, 2 * kBlockSize, kPageSize));

    beginSection("the driver: a weak page");
    expectSame("it can be written once", 0, writeDevice(0, 3 * kPageSize, first));
    expectSame("its block can be erased", 0, eraseBlock(0, 0));
    expectSame("it cannot be written again", EIO, writeDevice(0, 3 * kPageSize, first));

    beginSection("the driver: a lost page");
    expectSame("it can be written", 0, writeDevice(0, 4 * kPageSize, first));
    expectSame("it can be read once", 0, errorsRead(0, 4 * kPageSize));
    // A read gives the wrong bytes all the same. Only who asks learns that they are wrong: each of
    // a page's parts of 256 bytes has its own checksum.
    expectSame("then a read succeeds with errors", kPageSize / 256, errorsRead(0, 4 * kPageSize));
}

} // namespace

void checkDriver() {
    checkRequests();
    checkFaultyChip();
}
