// Writing a file into a flash partition, and erasing one.

#include "bsp.h"
#include "flash/flash_lock.h"
#include "tests/support/flash_board_test.h"

namespace {

constexpr char kFile[] = "/tmp/bsp/file";
constexpr uint32_t kPage = 2048;
constexpr uint32_t kBlock = 4 * kPage;
constexpr uint32_t kSize = 4 * kBlock;

class PartitionWriteTest : public FlashCallsTest {
  protected:
    void SetUp() override {
        FlashCallsTest::SetUp();
        renew();
    }

    /** A partition full of zeros, all of whose pages are good. */
    void renew() {
        clearFaults();
        usePages(kPage);
        store(0, 0, Bytes(kSize, 0x00));
    }

    void usePages(uint32_t pageSize) {
        usePartition(0, {vb::FlashType::Nor, kSize, kBlock, pageSize, 0});
    }

    Answer write(size_t fileSize, int32_t hasHeader = 0) {
        useFile(kFile, patterned(fileSize));
        return writeAgain(hasHeader);
    }

    Answer writeAgain(int32_t hasHeader = 0) {
        return withoutNumber(
            recorder.run([&] { return bsp_mtd_write_from_file(kFile, kFirstDevice, hasHeader); }),
            kFirstDevice);
    }

    Bytes stored(size_t offset, size_t size) const {
        return FlashCallsTest::stored(0, static_cast<uint32_t>(offset),
                                      static_cast<uint32_t>(size));
    }

    /** The pages that the last call wrote, all of them whole. */
    void expectPages(size_t count, uint32_t pageSize = kPage) const {
        EXPECT_EQ(recorder.callsOf("write"),
                  Calls(count, "write /dev/mtd0 " + std::to_string(pageSize)));
    }
};

const Calls kOpening = {"stat /tmp/bsp/file", "open /tmp/bsp/file read-only sync",
                        "open /dev/mtd0 read-write sync", "geometry /dev/mtd0", "malloc 2048"};
const Calls kErasing = {"erase /dev/mtd0 0+8192", "erase /dev/mtd0 8192+8192",
                        "erase /dev/mtd0 16384+8192", "erase /dev/mtd0 24576+8192"};

TEST_F(PartitionWriteTest, ErasesAllAndWritesWholePages) {
    EXPECT_EQ(write(2500), kSilentSuccess);
    EXPECT_EQ(recorder.work(),
              joined({kLocking,
                      kOpening,
                      kErasing,
                      {"seek /tmp/bsp/file 0", "read /tmp/bsp/file 2048", "seek /dev/mtd0 0",
                       "write /dev/mtd0 2048", "seek /tmp/bsp/file 2048", "read /tmp/bsp/file 452",
                       "seek /dev/mtd0 2048", "write /dev/mtd0 2048"},
                      kUnlocking}));
    EXPECT_EQ(stored(0, 2500), patterned(2500));
    EXPECT_EQ(stored(2500, 4096 - 2500), Bytes(4096 - 2500, 0)) << "the last page is padded";
    EXPECT_EQ(stored(4096, kSize - 4096), Bytes(kSize - 4096, 0xFF));
}

TEST_F(PartitionWriteTest, WholePagesOnly) {
    for (const size_t size : {size_t{1}, size_t{kPage - 1}, size_t{kPage}, size_t{kPage + 1},
                              size_t{kSize - 1}, size_t{kSize}}) {
        SCOPED_TRACE(size);
        renew();
        EXPECT_EQ(write(size), kSilentSuccess);
        EXPECT_EQ(stored(0, size), patterned(size));
        const size_t pages = (size + kPage - 1) / kPage;
        expectPages(pages);
        const size_t padding = pages * kPage - size;
        EXPECT_EQ(stored(size, padding), Bytes(padding, 0));
    }
}

TEST_F(PartitionWriteTest, AnEmptyFileErases) {
    EXPECT_EQ(write(0), kSilentSuccess);
    EXPECT_EQ(recorder.work(), joined({kLocking, kOpening, kErasing, kUnlocking}));
    EXPECT_EQ(stored(0, kSize), Bytes(kSize, 0xFF));
}

TEST_F(PartitionWriteTest, ALargerFileIsRefusedWithSuccess) {
    EXPECT_EQ(write(kSize + 1),
              (Answer{BSP_OK, "Error, file size 32769 is big than mtd size 32768. \n"}));
    EXPECT_EQ(recorder.work(),
              joined({kLocking, Calls(kOpening.begin(), kOpening.end() - 1), kUnlocking}));
    EXPECT_EQ(stored(0, kSize), Bytes(kSize, 0x00));
    EXPECT_EQ(write(kSize + 1, 1).status, BSP_OK);
    EXPECT_EQ(stored(0, kSize), Bytes(kSize, 0x00));
}

TEST_F(PartitionWriteTest, WithoutMemoryNothingIsTouchedAndSuccessAnswered) {
    recorder.fail("malloc 2048");
    EXPECT_EQ(write(10), (Answer{BSP_OK, "malloc error "}));
    EXPECT_EQ(stored(0, kSize), Bytes(kSize, 0x00));
}

TEST_F(PartitionWriteTest, PagesOfUnknownSizeAre2048) {
    pretendGeometry(kSize, kBlock, 0);
    EXPECT_EQ(write(2049), kSilentSuccess);
    EXPECT_EQ(recorder.callsOf("malloc"), (Calls{"malloc 2048"}));
    EXPECT_EQ(recorder.callsOf("write").size(), 2u);
    EXPECT_EQ(stored(0, 2049), patterned(2049));
}

TEST_F(PartitionWriteTest, OtherPageSizes) {
    for (const uint32_t page : {1u, 512u, 4096u}) {
        usePages(page);
        EXPECT_EQ(write(513), kSilentSuccess);
        expectPages((513 + page - 1) / page, page);
        EXPECT_EQ(stored(0, 513), patterned(513));
    }
}

TEST_F(PartitionWriteTest, WithHeaderTheLengthAndAMarkerComeFirst) {
    EXPECT_EQ(write(3000, 1), kSilentSuccess);
    EXPECT_EQ(recorder.work(),
              joined({kLocking,
                      kOpening,
                      {"erase /dev/mtd0 0+8192", "erase /dev/mtd0 8192+8192"},
                      {"read /tmp/bsp/file 2040", "write /dev/mtd0 2048", "seek /tmp/bsp/file 2040",
                       "read /tmp/bsp/file 960", "seek /dev/mtd0 2048", "write /dev/mtd0 2048"},
                      kUnlocking}));
    EXPECT_EQ(stored(0, 8), (Bytes{0, 0, 0x0B, 0xB8, 0xA1, 0x02, 0xA3, 0x04}));
    EXPECT_EQ(stored(8, 3000), patterned(3000));
    EXPECT_EQ(stored(3008, 4096 - 3008), Bytes(4096 - 3008, 0));
    EXPECT_EQ(stored(4096, 12288), Bytes(12288, 0xFF));
    EXPECT_EQ(stored(16384, 16384), Bytes(16384, 0)) << "blocks behind the file stay as they are";
}

TEST_F(PartitionWriteTest, AShortFileFillsTheHeaderPageOnly) {
    for (const size_t size : {size_t{0}, size_t{5}, size_t{2040}}) {
        renew();
        EXPECT_EQ(write(size, -1), kSilentSuccess);
        expectPages(1);
        EXPECT_EQ(stored(0, 8), (Bytes{0, 0, static_cast<uint8_t>(size >> 8),
                                       static_cast<uint8_t>(size), 0xA1, 0x02, 0xA3, 0x04}));
        EXPECT_EQ(stored(8, size), patterned(size));
        EXPECT_EQ(stored(8 + size, kPage - 8 - size), Bytes(kPage - 8 - size, 0));
    }
}

TEST_F(PartitionWriteTest, WithHeaderTheEraseGoesOneGoodBlockBeyondTheFile) {
    struct Case {
        size_t fileSize;
        int failing; // erase
        size_t erases;
    };
    constexpr Case kCases[] = {
        {0, 0, 2},     // offset 0 does not exceed a size of 0
        {8191, 0, 2},  // offset 8192 does
        {8192, 0, 3},  // its end does not exceed it
        {100, 2, 3},   // a block that fails does not end it
        {16384, 0, 4}, // up to the end
    };
    for (const Case &row : kCases) {
        renew();
        recorder.clearFailures();
        if (row.failing != 0)
            recorder.fail("erase", row.failing);
        EXPECT_EQ(write(row.fileSize, 1), kSilentSuccess);
        EXPECT_EQ(recorder.callsOf("erase"),
                  Calls(kErasing.begin(), kErasing.begin() + static_cast<ptrdiff_t>(row.erases)));
    }
}

TEST_F(PartitionWriteTest, HeaderOnPagesThatAreSmallerThanIt) {
    struct Case {
        uint32_t page, joined;
    };
    for (const auto &[page, joined] : {Case{1, 8}, {3, 9}, {4, 8}, {8, 8}}) {
        SCOPED_TRACE(page);
        usePages(page);
        EXPECT_EQ(write(300, 1), kSilentSuccess);
        EXPECT_EQ(recorder.callsOf("write").at(0), "write /dev/mtd0 " + std::to_string(joined));
        EXPECT_EQ(stored(0, 8), (Bytes{0, 0, 1, 44, 0xA1, 0x02, 0xA3, 0x04}));
        EXPECT_EQ(stored(8, 300), patterned(300));
    }
}

TEST_F(PartitionWriteTest, EraseFailuresAreNotNoticed) {
    recorder.failAlways("erase");
    store(0, 0, Bytes(kSize, 0xFF));
    EXPECT_EQ(write(2500), kSilentSuccess);
    EXPECT_EQ(recorder.callsOf("erase"), kErasing);
    EXPECT_EQ(stored(0, 2500), patterned(2500));
}

TEST_F(PartitionWriteTest, APartitionWithoutEraseBlocksIsNotErased) {
    pretendGeometry(kSize, 0, 1); // as memory that needs none
    for (const int32_t hasHeader : {0, 1}) {
        EXPECT_EQ(write(100, hasHeader), kSilentSuccess);
        EXPECT_EQ(recorder.callsOf("erase"), (Calls{}));
    }
}

struct BadPages {
    const char *name;
    std::set<uint32_t> pages;
    std::vector<uint32_t> usedPages; // where the file's pages end up
};

TEST_F(PartitionWriteTest, BadPagesAreSkipped) {
    const BadPages cases[] = {
        {"at the start", {0}, {1, 2, 3}},
        {"in the middle", {1}, {0, 2, 3}},
        {"two in a row", {1, 2}, {0, 3, 4}},
        {"at several places", {0, 2, 4}, {1, 3, 5}},
        {"all but the last three", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, {13, 14, 15}},
    };
    const Bytes file = patterned(2 * kPage + 10);
    Bytes padded = file;
    padded.resize(3 * kPage);
    for (const BadPages &row : cases) {
        SCOPED_TRACE(row.name);
        renew();
        std::set<uint32_t> offsets;
        for (const uint32_t page : row.pages)
            offsets.insert(page * kPage);
        wearOut(0, offsets);
        EXPECT_EQ(write(file.size()), kSilentSuccess);
        for (size_t i = 0; i < 3; ++i)
            EXPECT_EQ(stored(row.usedPages[i] * kPage, kPage),
                      Bytes(padded.begin() + static_cast<ptrdiff_t>(i * kPage),
                            padded.begin() + static_cast<ptrdiff_t>((i + 1) * kPage)));
        EXPECT_EQ(recorder.callsOf("wait"), Calls(row.pages.size(), "wait 1000 us"));
    }
}

TEST_F(PartitionWriteTest, ABadPagesDataGoToTheNextPage) {
    wearOut(0, {0});
    EXPECT_EQ(write(100), kSilentSuccess);
    EXPECT_EQ(recorder.work(),
              joined({kLocking,
                      kOpening,
                      kErasing,
                      {"seek /tmp/bsp/file 0", "read /tmp/bsp/file 100", "seek /dev/mtd0 0",
                       "write /dev/mtd0 2048", "wait 1000 us", "seek /tmp/bsp/file 0",
                       "read /tmp/bsp/file 100", "seek /dev/mtd0 2048", "write /dev/mtd0 2048"},
                      kUnlocking}));
}

TEST_F(PartitionWriteTest, AShortWriteIsABadPage) {
    recorder.fail("write", 2, 2047);
    EXPECT_EQ(write(2 * kPage), kSilentSuccess);
    EXPECT_EQ(stored(0, kPage), Bytes(patterned(kPage)));
    const Bytes all = patterned(2 * kPage);
    EXPECT_EQ(stored(2 * kPage, kPage), Bytes(all.begin() + kPage, all.end()));
}

TEST_F(PartitionWriteTest, WhenPagesRunOutTheLastWriteIsTheAnswer) {
    const auto message = [](uint32_t size, uint32_t remaining) {
        return "write file to flash /dev/mtd0 failed, filesize=" + std::to_string(size) +
               ", remaining=" + std::to_string(remaining) + "\r\n";
    };
    // The last page takes its data, but one page before it did not: the answer is a page's size.
    wearOut(0, {5 * kPage});
    EXPECT_EQ(write(kSize), (Answer{kPage, message(kSize, kPage)}));

    renew();
    wearOut(0, {15 * kPage});
    EXPECT_EQ(write(kSize - 5), (Answer{-1, message(kSize - 5, kPage - 5)}));

    renew();
    for (uint32_t page = 0; page < kSize; page += kPage)
        wearOut(0, {page});
    EXPECT_EQ(write(10), (Answer{-1, message(10, 10)}));
    EXPECT_EQ(recorder.callsOf("write").size(), 16u);

    renew();
    recorder.fail("write", 16, 7);
    EXPECT_EQ(write(kSize), (Answer{7, message(kSize, kPage)}));
}

TEST_F(PartitionWriteTest, TheHeaderNeedsItsRoomToo) {
    EXPECT_EQ(write(kSize - 8, 1), kSilentSuccess);
    EXPECT_EQ(stored(8, kSize - 8), patterned(kSize - 8));
    EXPECT_EQ(
        write(kSize, 1),
        (Answer{kPage, "write file to flash /dev/mtd0 failed, filesize=32768, remaining=8\r\n"}));
}

TEST_F(PartitionWriteTest, TheHeaderPagesResultDoesNotCount) {
    wearOut(0, {0});
    EXPECT_EQ(write(3000, 1), kSilentSuccess) << "a header page that fails is not noticed";
    EXPECT_EQ(stored(0, kPage), Bytes(kPage, 0xFF));
    EXPECT_EQ(recorder.callsOf("wait"), (Calls{}));

    usePartition(0, {vb::FlashType::Nor, kPage, kPage, kPage, 0});
    EXPECT_EQ(write(kPage, 1),
              (Answer{0, "write file to flash /dev/mtd0 failed, filesize=2048, remaining=8\r\n"}));
}

TEST_F(PartitionWriteTest, AMissingFileIsReleasedTwice) {
    removeFile(kFile);
    EXPECT_EQ(writeAgain(), (Answer{-1, "bsp_mtd_write_from_file-# \r\n"
                                        "bsp_flash_lock_set failed: type=2, retry_times=100 \n"}));
    EXPECT_EQ(
        recorder.work(),
        joined(
            {kLocking, {"stat /tmp/bsp/file"}, kUnlocking, hundredTimes("unlock no descriptor")}))
        << "the closed file's number may be somebody else's by now";
    EXPECT_EQ(recorder.complaints, "");
}

TEST_F(PartitionWriteTest, AMissingFileWithoutALockFileIsJustMissing) {
    removeFile(kFile);
    recorder.fail("open /tmp");
    EXPECT_EQ(writeAgain(), (Answer{-1, "bsp_mtd_write_from_file-# \r\n"}));
}

TEST_F(PartitionWriteTest, NothingIsDoneWithoutTheLock) {
    recorder.failAlways("lock");
    EXPECT_EQ(write(10), (Answer{-1, "bsp_flash_lock_set failed: type=1, retry_times=100 \n"
                                     "bsp_mtd_write_from_file-# \r\n"}));
    EXPECT_EQ(recorder.work(), joined({{kLocking[0]}, hundredTimes(kLocking[1]), kUnlocking}));
}

TEST_F(PartitionWriteTest, WorksWithoutALockFile) {
    recorder.fail("open /tmp");
    EXPECT_EQ(write(10), kSilentSuccess);
    EXPECT_EQ(stored(0, 10), patterned(10));
    EXPECT_EQ(recorder.callsOf("unlock"), (Calls{}));
}

TEST_F(PartitionWriteTest, EveryFailureHasItsAnswer) {
    struct Case {
        const char *call;
        int nth;
        int64_t result;
        Answer answer;
    };
    const Case cases[] = {
        {"open /tmp/bsp/file", 1, -1, {-1, "\nopen /tmp/bsp/file fail.\n"}},
        {"open /dev/mtd0", 1, -1, {-1, "\nopen /dev/mtd0 fail.\n"}},
        {"geometry", 1, -1, {-1, "get /dev/mtd0(fd=#) info error, ret = -1 \n"}},
        {"geometry", 1, -25, {-25, "get /dev/mtd0(fd=#) info error, ret = -25 \n"}},
        {"seek /tmp/bsp/file", 1, -1, {BSP_E_WRITE}},
        {"seek /tmp/bsp/file 2048", 1, 2047, {BSP_E_WRITE}},
        {"seek /dev/mtd0", 1, -1, {BSP_E_WRITE}},
        {"seek /dev/mtd0 2048", 1, 0, {BSP_E_WRITE}},
        {"read /tmp/bsp/file", 1, -1, {BSP_E_SHORT_READ}},
        {"read /tmp/bsp/file", 2, 451, {BSP_E_SHORT_READ}},
        {"read /tmp/bsp/file", 2, 0, {BSP_E_SHORT_READ}},
    };
    for (const Case &row : cases) {
        SCOPED_TRACE(row.call);
        recorder.clearFailures();
        recorder.fail(row.call, row.nth, row.result);
        EXPECT_EQ(write(2500), row.answer);
        EXPECT_TRUE(recorder.allFailed());
        EXPECT_EQ(recorder.work().back(), kUnlocking[0]);
    }
    recorder.clearFailures();
    recorder.fail("read /tmp/bsp/file 2040", 1, 2039);
    EXPECT_EQ(write(2500, 1), (Answer{BSP_E_SHORT_READ}));
    EXPECT_EQ(recorder.callsOf("write"), (Calls{})) << "a header is not written without its data";
}

TEST_F(PartitionWriteTest, NeedsBothNames) {
    EXPECT_EQ(recorder.run([] { return bsp_mtd_write_from_file(nullptr, kFirstDevice, 0); }),
              (Answer{BSP_E_NULL}));
    EXPECT_EQ(recorder.run([] { return bsp_mtd_write_from_file(kFile, nullptr, 0); }),
              (Answer{BSP_E_NULL}));
    EXPECT_EQ(recorder.work(), (Calls{}));
}

// Erasing

TEST_F(PartitionWriteTest, EraseClearsTheFirstBlockAlone) {
    EXPECT_EQ(recorder.run([] { return bsp_mtd_erase(kFirstDevice); }), kSilentSuccess);
    EXPECT_EQ(recorder.work(), (Calls{"open /dev/mtd0 read-write sync", "geometry /dev/mtd0",
                                      "erase /dev/mtd0 0+8192"}));
    EXPECT_EQ(stored(0, kBlock), Bytes(kBlock, 0xFF));
    EXPECT_EQ(stored(kBlock, kSize - kBlock), Bytes(kSize - kBlock, 0x00));
}

TEST_F(PartitionWriteTest, EraseFailuresHaveTheirAnswers) {
    struct Case {
        const char *call;
        int64_t result;
        Answer answer;
    };
    const Case cases[] = {
        {"open", -1, {BSP_E_OPEN, "\nopen /dev/mtd0 fail.\n"}},
        {"geometry", -1, {BSP_E_ERASE, "get /dev/mtd0(fd=#) info error, ret = 1013 \n"}},
        {"erase", -1, {BSP_E_ERASE, "erase /dev/mtd0 error, addr 0, erasesize 0x2000, ret = -1\n"}},
    };
    for (const Case &row : cases) {
        recorder.clearFailures();
        recorder.fail(row.call, 1, row.result);
        EXPECT_EQ(
            withoutNumber(recorder.run([] { return bsp_mtd_erase(kFirstDevice); }), kFirstDevice),
            row.answer);
        EXPECT_TRUE(recorder.allFailed());
        EXPECT_EQ(stored(0, kSize), Bytes(kSize, 0x00));
    }
    EXPECT_EQ(recorder.run([] { return bsp_mtd_erase(nullptr); }), (Answer{BSP_E_NULL}));
}

} // namespace
