// Flash partitions through the calls that programs make: what each answers, and what is stored.

#include "tests/virtual_board/flash_test.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

// What builds with source fortification call.
extern "C" ssize_t __read_chk(int fd, void *data, size_t length, size_t size);
extern "C" ssize_t __pread_chk(int fd, void *data, size_t length, off_t offset, size_t size);
extern "C" ssize_t __pread64_chk(int fd, void *data, size_t length, off64_t offset, size_t size);

namespace {

class FlashTest : public FlashBoardTest {};

TEST_F(FlashTest, InfoTellsTheGeometry) {
    const struct {
        const char *path;
        uint8_t type;
        uint32_t flags, size, eraseSize, writeSize, spareSize;
    } cases[] = {
        {"/dev/mtd0", MTD_NORFLASH, MTD_CAP_NORFLASH, 0x100000, 0x10000, 256, 0},
        {"/dev/mtd4", MTD_NORFLASH, MTD_CAP_NORFLASH, 0x40000, 0x10000, 256, 0},
        {"/dev/mtd12", MTD_NANDFLASH, MTD_CAP_NANDFLASH, kNandSize, 0x20000, 2048, 64},
        {"/dev/mtd14", MTD_NANDFLASH, MTD_CAP_NANDFLASH, kNandSize, 0x20000, 2048, 64},
    };
    for (const auto &expected : cases) {
        const Node node(expected.path, O_RDONLY);
        mtd_info_user info;
        std::memset(&info, 0x55, sizeof(info));
        EXPECT_EQ(ioctl(node.fd(), MEMGETINFO, &info), 0);
        EXPECT_EQ(info.type, expected.type) << expected.path;
        EXPECT_EQ(info.flags, expected.flags);
        EXPECT_EQ(info.size, expected.size);
        EXPECT_EQ(info.erasesize, expected.eraseSize);
        EXPECT_EQ(info.writesize, expected.writeSize);
        EXPECT_EQ(info.oobsize, expected.spareSize);
        EXPECT_EQ(info.padding, 0u);
    }
    EXPECT_GT(kNandSize, 0x2700000u + 512); // the largest image, and its header's copy
}

TEST_F(FlashTest, ANewPartitionIsErasedAndTakesNoSpace) {
    const Node node(kNand, O_RDONLY);
    EXPECT_EQ(node.read(0, 5000), erased(5000));
    EXPECT_EQ(node.read(kNandSize - 100, 100), erased(100));
    struct stat info = {};
    ASSERT_EQ(stat((boardFolder() + "/flash/mtd12").c_str(), &info), 0);
    EXPECT_EQ(info.st_size, static_cast<off_t>(kNandSize));
    EXPECT_EQ(info.st_blocks, 0);
}

TEST_F(FlashTest, NorTakesBytesAnywhereAndOnlyClearsBits) {
    const Node node(kNor);
    EXPECT_EQ(node.write(0xFFFD, "\x0F\xF0\xAA\x55\x33"), 0); // across two blocks
    EXPECT_EQ(node.read(0xFFFC, 7), "\xFF\x0F\xF0\xAA\x55\x33\xFF");
    EXPECT_EQ(node.write(0xFFFD, "\xFC\x3F"), 0);
    EXPECT_EQ(node.read(0xFFFC, 4), "\xFF\x0C\x30\xAA");
    EXPECT_EQ(node.erase(0, kNorBlock), 0);
    EXPECT_EQ(node.read(0xFFFC, 7), "\xFF\xFF\xFF\xFF\x55\x33\xFF");
    EXPECT_EQ(flash(4).erases[0], 1u);
    EXPECT_EQ(flash(4).erases[1], 0u);
}

TEST_F(FlashTest, NandTakesPagesAndQuartersOfThemOnly) {
    const Node node(kNand);
    const std::string page(kPage, 'p');
    for (const auto &[offset, length] : {std::pair(0u, kPage - 1),
                                         {0u, kPage + 1},
                                         {1u, kPage},
                                         {256u, kPage},
                                         {0u, 256u},
                                         {256u, 256u},
                                         {0u, 511u},
                                         {512u, 513u},
                                         {511u, 512u}})
        EXPECT_EQ(node.write(offset, std::string(length, 'x')), EINVAL) << offset << ' ' << length;
    EXPECT_EQ(node.read(0, 2 * kPage), erased(2 * kPage));
    EXPECT_EQ(node.write(3 * kPage + 512, std::string(512, 'q')), 0);
    EXPECT_EQ(node.read(3 * kPage, kPage),
              erased(512) + std::string(512, 'q') + erased(kPage - 1024));
    EXPECT_EQ(node.write(4 * kPage - 512, std::string(1024, 'r')), 0); // into the next page
    EXPECT_EQ(node.read(4 * kPage - 1024, 2048),
              erased(512) + std::string(1024, 'r') + erased(512));
    EXPECT_EQ(node.erase(0, kNandBlock), 0);
    EXPECT_EQ(node.write(kPage, page + page), 0);
    EXPECT_EQ(node.read(0, 4 * kPage), erased(kPage) + page + page + erased(kPage));
    EXPECT_EQ(node.write(kPage, std::string(kPage, '\x0F')), 0);
    EXPECT_EQ(node.read(kPage, kPage + 1), std::string(kPage, 'p' & 0x0F) + "p");
}

TEST_F(FlashTest, WritingNothingSucceedsInsideThePartition) {
    const Node nand(kNand);
    const Node nor(kNor);
    addRule("mtd12", "program", "fails=EIO");
    for (const uint32_t offset : {0u, 1u, 256u, kNandSize - 1})
        EXPECT_EQ(pwrite(nand.fd(), "", 0, static_cast<off_t>(offset)), 0) << offset;
    EXPECT_EQ(pwrite(nor.fd(), "", 0, 1), 0);
    flash(12).isWriteProtected = 1;
    EXPECT_EQ(pwrite(nand.fd(), "", 0, 0), 0);
    for (const uint32_t offset : {kNandSize, kNandSize + 1}) {
        EXPECT_EQ(pwrite(nand.fd(), "", 0, static_cast<off_t>(offset)), -1) << offset;
        EXPECT_EQ(errno, ENOSPC);
    }
    EXPECT_EQ(board().faults.rule[0].matched, 0u);
}

TEST_F(FlashTest, TransfersEndWithThePartition) {
    const Node node(kNor);
    const uint32_t size = 0x40000;
    EXPECT_EQ(node.read(size - 3, 10), erased(3));
    EXPECT_EQ(node.read(size, 10), "");
    EXPECT_EQ(node.read(size + 100, 10), "");
    EXPECT_EQ(pwrite(node.fd(), "abcdef", 6, size - 3), 3);
    EXPECT_EQ(node.read(size - 4, 10), "\xFF"
                                       "abc");
    EXPECT_EQ(node.write(size, "a"), ENOSPC);
    EXPECT_EQ(node.write(size + 1, "a"), ENOSPC);
    char byte = 0;
    EXPECT_EQ(pread(node.fd(), &byte, 1, -1), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(pwrite(node.fd(), "a", 1, -1), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST_F(FlashTest, WhatIsMissingInAPartitionsFileIsNotErasedFlash) {
    const Node node(kNor);
    std::filesystem::resize_file(boardFolder() + "/flash/mtd4", 0x30000);
    char bytes[2] = {'o', 'k'};
    errno = 0;
    EXPECT_EQ(pread(node.fd(), bytes, 1, 0x2FFFF), 1);
    EXPECT_EQ(bytes[0], '\xFF');
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(pread(node.fd(), bytes, 2, 0x2FFFF), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(pread(node.fd(), bytes, 1, 0x30000), -1);
    EXPECT_EQ(errno, EIO);
}

TEST_F(FlashTest, ThePositionIsTheDescriptors) {
    const Node node(kNor);
    EXPECT_EQ(write(node.fd(), "0123456789", 10), 10);
    EXPECT_EQ(lseek(node.fd(), 0, SEEK_CUR), 10);
    EXPECT_EQ(lseek(node.fd(), -8, SEEK_CUR), 2);
    const int copy = dup(node.fd());
    char text[4] = {};
    EXPECT_EQ(read(copy, text, 3), 3);
    EXPECT_STREQ(text, "234");
    EXPECT_EQ(lseek(node.fd(), 0, SEEK_CUR), 5);
    close(copy);
    EXPECT_EQ(pread(node.fd(), text, 3, 7), 3);
    EXPECT_EQ(lseek(node.fd(), 0, SEEK_CUR), 5); // pread leaves it
    const Node other(kNor, O_RDONLY);
    EXPECT_EQ(lseek(other.fd(), 0, SEEK_CUR), 0);
}

TEST_F(FlashTest, SeeksStayInsideThePartition) {
    const Node node(kNor);
    EXPECT_EQ(lseek(node.fd(), 0, SEEK_END), 0x40000);
    EXPECT_EQ(lseek(node.fd(), 0x40000, SEEK_SET), 0x40000);
    const struct {
        off_t offset;
        int whence;
    } cases[] = {{0x40001, SEEK_SET},  {1, SEEK_END},  {1, SEEK_CUR},  {-1, SEEK_SET},
                 {-0x40001, SEEK_END}, {0, SEEK_DATA}, {0, SEEK_HOLE}, {0, 77}};
    for (const auto &[offset, whence] : cases) {
        EXPECT_EQ(lseek(node.fd(), offset, whence), -1) << offset << ' ' << whence;
        EXPECT_EQ(errno, EINVAL);
        EXPECT_EQ(lseek64(node.fd(), offset, whence), -1);
        EXPECT_EQ(lseek(node.fd(), 0, SEEK_CUR), 0x40000);
    }
    char byte = 0;
    EXPECT_EQ(read(node.fd(), &byte, 1), 0);
    EXPECT_EQ(write(node.fd(), "a", 1), -1);
    EXPECT_EQ(errno, ENOSPC);
}

TEST_F(FlashTest, ErasesWholeBlocks) {
    const Node node(kNand);
    const std::string page(kPage, '\0');
    for (uint32_t block = 0; block < 4; ++block)
        ASSERT_EQ(node.write(block * kNandBlock, page), 0);
    EXPECT_EQ(node.erase(1, kNandBlock), EINVAL);
    EXPECT_EQ(node.erase(0, kPage), EINVAL);
    EXPECT_EQ(node.erase(kNandSize, kNandBlock), EINVAL);
    EXPECT_EQ(node.erase(kNandSize - kNandBlock, 2 * kNandBlock), EINVAL);
    EXPECT_EQ(node.erase(0, 0), 0);
    EXPECT_EQ(flash(12).erases[0], 0u);
    EXPECT_EQ(node.erase(kNandBlock, 2 * kNandBlock), 0);
    EXPECT_EQ(node.read(0, kPage), page);
    EXPECT_EQ(node.read(kNandBlock, kPage), erased(kPage));
    EXPECT_EQ(node.read(2 * kNandBlock, kPage), erased(kPage));
    EXPECT_EQ(node.read(3 * kNandBlock, kPage), page);
    erase_info_user64 wide = {3 * kNandBlock, kNandBlock};
    EXPECT_EQ(ioctl(node.fd(), MEMERASE64, &wide), 0);
    EXPECT_EQ(node.read(3 * kNandBlock, kPage), erased(kPage));
    wide.start = uint64_t{1} << 32;
    EXPECT_EQ(ioctl(node.fd(), MEMERASE64, &wide), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(std::vector<uint32_t>(flash(12).erases, flash(12).erases + 5),
              (std::vector<uint32_t>{0, 1, 1, 1, 0}));
}

TEST_F(FlashTest, BadBlocksAreReadAndProgrammedButNotErased) {
    const Node node(kNand);
    const std::string page(kPage, 'p');
    ASSERT_EQ(node.write(kNandBlock, page), 0);
    __kernel_loff_t offset = kNandBlock + 5 * kPage;
    EXPECT_EQ(ioctl(node.fd(), MEMGETBADBLOCK, &offset), 0);
    EXPECT_EQ(ioctl(node.fd(), MEMSETBADBLOCK, &offset), 0);
    EXPECT_EQ(ioctl(node.fd(), MEMSETBADBLOCK, &offset), 0); // again
    EXPECT_EQ(ioctl(node.fd(), MEMGETBADBLOCK, &offset), 1);
    EXPECT_EQ(flash(12).isBad[1], 1);
    EXPECT_EQ(node.read(kNandBlock, kPage), page);
    EXPECT_EQ(node.write(kNandBlock + kPage, page), 0);
    EXPECT_EQ(node.read(kNandBlock + kPage, kPage), page);
    EXPECT_EQ(node.write(kNandBlock + kPage, std::string(kPage, '\x0F')), 0);
    EXPECT_EQ(node.read(kNandBlock + kPage, kPage), std::string(kPage, 'p' & 0x0F));
    EXPECT_EQ(node.erase(kNandBlock, kNandBlock), EIO);
    EXPECT_EQ(node.read(kNandBlock, kPage), page);
    EXPECT_EQ(node.write(kNandBlock - kPage, page + page), 0); // a good page and one in it
    EXPECT_EQ(node.read(kNandBlock - kPage, 2 * kPage), page + page);
    // What lies before it is erased.
    EXPECT_EQ(node.erase(0, 2 * kNandBlock), EIO);
    EXPECT_EQ(node.read(kNandBlock, kPage), page);
    EXPECT_EQ(node.read(kNandBlock - kPage, kPage), erased(kPage));
    for (offset = -1; offset < kNandSize + 2; offset += kNandSize + 1) {
        EXPECT_EQ(ioctl(node.fd(), MEMGETBADBLOCK, &offset), -1);
        EXPECT_EQ(errno, EINVAL);
        EXPECT_EQ(ioctl(node.fd(), MEMSETBADBLOCK, &offset), -1);
        EXPECT_EQ(errno, EINVAL);
    }
}

TEST_F(FlashTest, NorHasNoBadBlocks) {
    const Node node(kNor);
    __kernel_loff_t offset = 0;
    EXPECT_EQ(ioctl(node.fd(), MEMGETBADBLOCK, &offset), 0);
    EXPECT_EQ(ioctl(node.fd(), MEMSETBADBLOCK, &offset), -1);
    EXPECT_EQ(errno, EOPNOTSUPP);
}

TEST_F(FlashTest, ADescriptorDoesWhatItWasOpenedFor) {
    const Node reader(kNand, O_RDONLY);
    EXPECT_EQ(reader.write(0, std::string(kPage, 'x')), EBADF);
    EXPECT_EQ(write(reader.fd(), "x", 1), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(reader.erase(0, kNandBlock), EPERM);
    __kernel_loff_t offset = 0;
    EXPECT_EQ(ioctl(reader.fd(), MEMSETBADBLOCK, &offset), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(ioctl(reader.fd(), MEMGETBADBLOCK, &offset), 0);
    const Node writer(kNand, O_WRONLY);
    EXPECT_EQ(writer.write(0, std::string(kPage, 'x')), 0);
    char byte = 0;
    EXPECT_EQ(read(writer.fd(), &byte, 1), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(pread(writer.fd(), &byte, 1, 0), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST_F(FlashTest, AWriteProtectedPartitionIsOnlyRead) {
    const Node before(kNand);
    flash(12).isWriteProtected = 1;
    for (const int flags : {O_RDWR, O_WRONLY}) {
        EXPECT_EQ(open(kNand, flags), -1);
        EXPECT_EQ(errno, EACCES);
    }
    const Node reader(kNand, O_RDONLY);
    EXPECT_EQ(reader.read(0, 3), erased(3));
    EXPECT_EQ(before.write(0, std::string(kPage, 'x')), EROFS);
    EXPECT_EQ(before.erase(0, kNandBlock), EROFS);
    __kernel_loff_t offset = 0;
    EXPECT_EQ(ioctl(before.fd(), MEMSETBADBLOCK, &offset), -1);
    EXPECT_EQ(errno, EROFS);
    mtd_info_user info = {};
    EXPECT_EQ(ioctl(reader.fd(), MEMGETINFO, &info), 0);
    EXPECT_EQ(info.flags & MTD_WRITEABLE, 0u);
    EXPECT_EQ(before.read(0, 3), erased(3));
    const Node other("/dev/mtd14"); // which is not protected
}

TEST_F(FlashTest, StatisticsCountTheBadBlocks) {
    const auto statistics = [](const char *path) {
        const Node node(path, O_RDONLY);
        mtd_ecc_stats stats = {7, 7, 7, 7};
        EXPECT_EQ(ioctl(node.fd(), ECCGETSTATS, &stats), 0) << path;
        return listed({stats.corrected, stats.failed, stats.badblocks, stats.bbtblocks});
    };
    EXPECT_EQ(statistics(kNand), "0 0 0 0");
    flash(12).isBad[3] = flash(12).isBad[kNandSize / kNandBlock - 1] = 1;
    EXPECT_EQ(statistics(kNand), "0 0 2 0");
    EXPECT_EQ(statistics("/dev/mtd14"), "0 0 0 0");
    EXPECT_EQ(statistics(kNor), "0 0 0 0");
    addRule("mtd12", "any", "fails=EIO");
    const Node node(kNand);
    mtd_ecc_stats stats = {};
    EXPECT_EQ(ioctl(node.fd(), ECCGETSTATS, &stats), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(stats.badblocks, 0u);
}

TEST_F(FlashTest, OtherRequestsAreUnknown) {
    const Node node(kNand);
    region_info_user region = {};
    EXPECT_EQ(ioctl(node.fd(), MEMGETREGIONINFO, &region), -1);
    EXPECT_EQ(errno, ENOTTY);
    EXPECT_EQ(ioctl(node.fd(), MEMGETINFO, nullptr), -1);
    EXPECT_EQ(errno, EFAULT);
}

TEST_F(FlashTest, NodesThatAreNotThereAreNotTheHosts) {
    for (const char *path : {"/dev/mtd1", "/dev/mtd13", "/dev/mtdblock12", "/dev/mtd12ro"}) {
        EXPECT_EQ(open(path, O_RDONLY), -1);
        EXPECT_EQ(errno, ENOENT) << path;
    }
    ASSERT_TRUE(std::filesystem::remove(boardFile(kNor)));
    EXPECT_EQ(open(kNor, O_RDWR), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(FlashTest, FlagsOfOpenDoNotChangeWhatIsStored) {
    Node(kNor).write(0, "kept");
    for (const int flags :
         {O_RDWR | O_TRUNC, O_RDWR | O_APPEND, O_RDWR | O_SYNC, O_RDWR | O_DSYNC}) {
        const Node node(kNor, flags);
        EXPECT_EQ(node.read(0, 5), "kept\xFF");
    }
    const int fd = creat(kNor, 0600);
    EXPECT_GE(fd, 0);
    close(fd);
    EXPECT_EQ(Node(kNor).read(0, 5), "kept\xFF");
    const Node appending(kNor, O_RDWR | O_APPEND);
    EXPECT_EQ(write(appending.fd(), "KEPT", 4), 4); // at the position, as on a device
    EXPECT_EQ(appending.read(0, 5), "KEPT\xFF" /* 'k' and 'K' share the bits of 'K' */);
}

TEST_F(FlashTest, StreamsCannotBeOpenedOnPartitions) {
    EXPECT_EQ(fopen(kNor, "r"), nullptr);
    EXPECT_EQ(errno, ENOTSUP);
    EXPECT_EQ(fopen(kNor, "w"), nullptr);
}

TEST_F(FlashTest, StreamsAreClosedThatCannotBeReopenedOnPartitions) {
    static FILE *stream = nullptr; // nobody may use it any more, not even to free it
    stream = fopen("/dev/null", "r");
    const int fd = fileno(stream);
    EXPECT_EQ(freopen(kNor, "r", stream), nullptr);
    EXPECT_EQ(errno, ENOTSUP);
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
}

TEST_F(FlashTest, EveryNameOfACallReachesThePartition) {
    const Node node(kNor);
    char text[8] = {};
    EXPECT_EQ(pwrite64(node.fd(), "abcdef", 6, 0), 6);
    EXPECT_EQ(lseek64(node.fd(), 1, SEEK_SET), 1);
    EXPECT_EQ(__read_chk(node.fd(), text, 2, sizeof(text)), 2);
    EXPECT_STREQ(text, "bc");
    EXPECT_EQ(__pread_chk(node.fd(), text, 2, 2, sizeof(text)), 2);
    EXPECT_STREQ(text, "cd");
    EXPECT_EQ(__pread64_chk(node.fd(), text, 2, 3, sizeof(text)), 2);
    EXPECT_STREQ(text, "de");
    EXPECT_EQ(pread64(node.fd(), text, 2, 4), 2);
    EXPECT_STREQ(text, "ef");
}

TEST_F(FlashTest, PartitionsAreApart) {
    Node("/dev/mtd12").write(0, std::string(kPage, '\x12'));
    Node("/dev/mtd14").write(0, std::string(kPage, '\x14'));
    Node("/dev/mtd0").write(0, "zero");
    EXPECT_EQ(Node("/dev/mtd12").read(0, 1), "\x12");
    EXPECT_EQ(Node("/dev/mtd14").read(0, 1), "\x14");
    EXPECT_EQ(Node("/dev/mtd0").read(0, 4), "zero");
    EXPECT_EQ(Node("/dev/mtd4").read(0, 1), "\xFF");
}

TEST_F(FlashTest, UsesAreRecorded) {
    flash(12).isBad[2] = 1;
    trace();
    const Node node(kNand);
    mtd_info_user info = {};
    ioctl(node.fd(), MEMGETINFO, &info);
    __kernel_loff_t offset = 2 * kNandBlock;
    ioctl(node.fd(), MEMGETBADBLOCK, &offset);
    node.erase(0, kNandBlock);
    node.write(kPage, std::string(kPage, 'p'));
    node.read(kNandSize - 16, 32);
    node.write(0, "x");
    offset = 3 * kNandBlock;
    ioctl(node.fd(), MEMSETBADBLOCK, &offset);
    ioctl(node.fd(), 0x1234, &offset);
    EXPECT_EQ(trace(), (Lines{"open /dev/mtd12", "MTD info mtd12", "MTD is-bad mtd12 0x40000 = 1",
                              "MTD erase mtd12 0x0+0x20000", "MTD write mtd12 0x800+0x800",
                              "MTD read mtd12 0x287fff0+0x20 -> 0x10",
                              "MTD write mtd12 0x0+0x1 -> fails, errno 22 (Invalid argument)",
                              "MTD mark-bad mtd12 0x60000",
                              "MTD request 0x1234 mtd12 -> fails, errno " + std::to_string(ENOTTY) +
                                  " (Inappropriate ioctl for device)"}));
}

TEST_F(FlashTest, ADamagedFolderIsRefused) {
    const auto refusal = [&] {
        vb::BoardFolder folder;
        vb::FolderError error = {};
        return folder.open(boardFolder().c_str(), error) ? "" : std::string(error.text);
    };
    EXPECT_EQ(refusal(), "");
    const std::string content = boardFolder() + "/flash/mtd14";
    std::filesystem::resize_file(content, kNandSize - 1);
    EXPECT_NE(refusal().find("flash/mtd14 is not of the size " + std::to_string(kNandSize)),
              std::string::npos);
    std::filesystem::remove(content);
    EXPECT_NE(refusal().find("flash/mtd14 is missing"), std::string::npos);
    flash(4).geometry.eraseSize = 0;
    EXPECT_NE(refusal().find("impossible values"), std::string::npos);
}

} // namespace
