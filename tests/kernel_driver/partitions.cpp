// Files in partitions, with and without the length header.

#include "bsp.h"
#include "tests/kernel_driver/chip.h"
#include "tests/kernel_driver/files.h"
#include "tests/kernel_driver/subjects.h"

#include <cerrno>
#include <unistd.h>

namespace {

constexpr uint32_t kPartition = 0;
constexpr uint32_t kSize = kBootBlocks * kBlockSize;
constexpr char kDevice[] = "/dev/mtd0";
constexpr char kFile[] = "/tmp/file";
constexpr char kCopy[] = "/tmp/copy";
constexpr uint32_t kOddSize = 3 * kBlockSize + 5000; // ends within a page

Answer store(int32_t expected, const Bytes &content, int32_t hasHeader) {
    writeFile(kFile, content);
    return expectStatus("bsp_mtd_write_from_file(" + std::to_string(content.size()) + " bytes, " +
                            (hasHeader != 0 ? "header)" : "no header)"),
                        expected,
                        [&] { return bsp_mtd_write_from_file(kFile, kDevice, hasHeader); });
}

Answer load(int32_t expected, int32_t hasHeader) {
    unlink(kCopy);
    return expectStatus(std::string("bsp_mtd_read_to_file(") +
                            (hasHeader != 0 ? "header)" : "no header)"),
                        expected, [&] { return bsp_mtd_read_to_file(kDevice, kCopy, hasHeader); });
}

Bytes partition() {
    return readCells(kPartition, 0, kSize);
}

/** A content with erased flash behind it. */
Bytes filledUp(Bytes content) {
    content.resize(kSize, kErased);
    return content;
}

Bytes withHeader(const Bytes &content) {
    const auto size = static_cast<uint32_t>(content.size());
    return joined(
        {{static_cast<uint8_t>(size >> 24), static_cast<uint8_t>(size >> 16),
          static_cast<uint8_t>(size >> 8), static_cast<uint8_t>(size), 0xA1, 0x02, 0xA3, 0x04},
         content});
}

void checkWithoutHeader() {
    const Chip chip;
    beginSection("partition: a file without length header");
    fillPartition(kPartition, kBootBlocks);
    const Bytes content = patterned(kOddSize);
    store(BSP_OK, content, 0);
    expectSame("the partition holds it, zeros to its page's end, and is erased behind it",
               filledUp(paddedToPage(content)), partition());
    load(BSP_OK, 0);
    expectSame("the copy is the whole partition", filledUp(paddedToPage(content)), readFile(kCopy));
    expectStatus("a second copy", BSP_OK, [] { return bsp_mtd_read_to_file(kDevice, kCopy, 0); });
    expectSame("is appended to the first", 2 * kSize, static_cast<int64_t>(readFile(kCopy).size()));

    beginSection("partition: a file as large as the partition, and one byte more");
    const Bytes whole = patterned(kSize, 2);
    store(BSP_OK, whole, 0);
    expectSame("the partition holds the file", whole, partition());
    expectPrinted(store(BSP_OK, patterned(kSize + 1, 3), 0),
                  "Error, file size 1048577 is big than mtd size 1048576. ");
    expectSame("the larger one changed nothing", whole, partition());

    beginSection("partition: erasing");
    expectSilent("bsp_mtd_erase()", BSP_OK, [] { return bsp_mtd_erase(kDevice); });
    expectSame("the first block is erased, and only that",
               joined({erased(kBlockSize), part(whole, kBlockSize, kSize - kBlockSize)}),
               partition());
}

void checkWithHeader() {
    const Chip chip;
    beginSection("partition: a file with length header");
    load(BSP_OK, 1);
    expectSame("an erased partition gives no file", 0, exists(kCopy) ? 1 : 0);
    fillPartition(kPartition, kBootBlocks);
    const Bytes before = partition();
    const Bytes content = patterned(2 * kBlockSize - 100);
    store(BSP_OK, content, 1);
    // The first block behind the file is erased with it.
    const Bytes stored = paddedToPage(withHeader(content));
    constexpr uint32_t kBehind = 3 * kBlockSize;
    Bytes expected = stored;
    expected.resize(kBehind, kErased);
    expectSame("the partition holds header and file, and its old content further on",
               joined({expected, part(before, kBehind, kSize - kBehind)}), partition());
    load(BSP_OK, 1);
    expectSame("the copy is the file", content, readFile(kCopy));
}

void checkRefusals() {
    const Chip chip;
    beginSection("partition: devices that are none");
    writeFile(kFile, patterned(100));
    expectPrinted(expectStatus("writing to /dev/mtd77", BSP_E_FAILED,
                               [] { return bsp_mtd_write_from_file(kFile, "/dev/mtd77", 0); }),
                  "\nopen /dev/mtd77 fail.\n");
    expectPrinted(expectStatus("writing to the read-only device", BSP_E_FAILED,
                               [] { return bsp_mtd_write_from_file(kFile, "/dev/mtd0ro", 0); }),
                  "\nopen /dev/mtd0ro fail.\n");
    expectPrinted(expectStatus("writing to /dev/zero", -1,
                               [] { return bsp_mtd_write_from_file(kFile, "/dev/zero", 0); }),
                  "info error, ret = -1 \n");
    expectPrinted(expectStatus("reading from /dev/zero", BSP_E_ERASE,
                               [] { return bsp_mtd_read_to_file("/dev/zero", kCopy, 0); }),
                  "info error, ret = 1013 \n");
    expectPrinted(
        expectStatus("erasing /dev/zero", BSP_E_ERASE, [] { return bsp_mtd_erase("/dev/zero"); }),
        "info error, ret = 1013 \n");
}

void checkBadBlock() {
    const Chip chip({badBlock(kPartition, 0)});
    beginSection("partition: a bad block");
    const Bytes first = patterned(kSize, 1);
    const Bytes second = patterned(kSize, 2);
    store(BSP_OK, first, 0);
    expectSame("a first file is in it", first, partition());
    store(BSP_OK, second, 0);
    expectSame("a second file is wrong in it",
               joined({bothProgrammed(part(first, 0, kBlockSize), part(second, 0, kBlockSize)),
                       part(second, kBlockSize, kSize - kBlockSize)}),
               partition());
    load(BSP_OK, 0);
    expectSame("what can be read of it is neither file", 0,
               readFile(kCopy) == first || readFile(kCopy) == second ? 1 : 0);
    expectPrinted(
        expectStatus("bsp_mtd_erase()", BSP_E_ERASE, [] { return bsp_mtd_erase(kDevice); }),
        "erase /dev/mtd0 error, addr 0, erasesize 0x20000, ret = -1\n");
}

void checkWornBlock() {
    const Chip chip({weakBlock(kPartition, 1, 1)});
    beginSection("partition: a block that wears out");
    const Bytes first = patterned(kSize, 1);
    const Bytes second = patterned(kSize, 2);
    store(BSP_OK, first, 0);
    expectSame("a first file is in it", first, partition());
    store(BSP_OK, second, 0);
    // The simulation erases before it fails; what the library does not notice is the failure.
    expectSame("a second file is in it", second, partition());
    expectSilent("bsp_mtd_erase() of the good first block", BSP_OK,
                 [] { return bsp_mtd_erase(kDevice); });
}

void checkWeakPages() {
    beginSection("partition: pages that cannot be written");
    const Bytes content = patterned(10 * kPageSize);
    // The content of a page that failed is not known.
    const auto expectAround = [&](uint32_t firstBad, uint32_t count) {
        const uint32_t good = firstBad * kPageSize;
        const uint32_t behind = (firstBad + count) * kPageSize;
        const auto rest = static_cast<uint32_t>(content.size()) - good;
        expectSame("the file is there up to the page", part(content, 0, good),
                   readCells(kPartition, 0, good));
        expectSame("and goes on behind it", part(content, good, rest),
                   readCells(kPartition, behind, rest));
    };
    {
        const Chip chip({weakPage(kPartition, 4, 1)});
        fillPartition(kPartition, 1);
        store(BSP_OK, content, 0);
        expectAround(4, 1);
    }
    {
        const Chip chip({weakPage(kPartition, 0, 1), weakPage(kPartition, 1, 1)});
        fillPartition(kPartition, 1);
        store(BSP_OK, content, 0);
        expectAround(0, 2);
    }
    {
        const Chip chip({weakPage(kPartition, kSize / kPageSize - 1, 1)});
        fillPartition(kPartition, kBootBlocks);
        expectPrinted(store(-1, patterned(kSize), 0),
                      "write file to flash /dev/mtd0 failed, filesize=1048576, remaining=2048\r\n");
    }
}

void checkLostPage() {
    const Chip chip({lostPage(kPartition, 3, 1)});
    beginSection("partition: a page that cannot be read");
    const Bytes content = patterned(10 * kPageSize);
    store(BSP_OK, content, 0);
    load(BSP_OK, 0);
    const Bytes copy = readFile(kCopy);
    expectSame("a first copy is good", filledUp(content), copy);
    load(BSP_OK, 0);
    const Bytes second = readFile(kCopy);
    expectSame("a second copy is as long", kSize, static_cast<int64_t>(second.size()));
    expectSame("it is wrong in that page", 1,
               part(second, 3 * kPageSize, kPageSize) != part(copy, 3 * kPageSize, kPageSize));
    expectSame("and good behind it", part(copy, 4 * kPageSize, kSize - 4 * kPageSize),
               part(second, 4 * kPageSize, kSize - 4 * kPageSize));
}

} // namespace

void checkPartitions() {
    checkWithoutHeader();
    checkWithHeader();
    checkRefusals();
    checkBadBlock();
    checkWornBlock();
    checkWeakPages();
    checkLostPage();
}
