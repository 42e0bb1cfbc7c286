// Copying a flash partition into a file.

#include "bsp.h"
#include "flash/partition.h"
#include "tests/support/flash_board_test.h"

namespace {

constexpr char kReadFile[] = "/tmp/bsp/copy";
constexpr uint32_t kCopySize = 5000; // the last page is not a whole one
constexpr uint32_t kCopyBlock = 1000;

class PartitionReadTest : public FlashCallsTest {
  protected:
    void SetUp() override {
        FlashCallsTest::SetUp();
        usePages(2048);
        store(0, 0, patterned(kCopySize));
    }

    void usePages(uint32_t pageSize) {
        usePartition(0, {vb::FlashType::Nor, kCopySize, kCopyBlock, pageSize, 0});
    }

    Bytes copy() const { return contentOf(kReadFile); }

    /** The first bytes of the partition; the rest is the pattern. */
    void begin(const Bytes &bytes) const {
        store(0, 0, patterned(kCopySize));
        store(0, 0, bytes);
    }

    Answer read(int32_t hasHeader = 0) {
        return withoutNumber(
            recorder.run([&] { return bsp_mtd_read_to_file(kFirstDevice, kReadFile, hasHeader); }),
            kFirstDevice);
    }
};

TEST_F(PartitionReadTest, CopiesThePartition) {
    EXPECT_EQ(read(), kSilentSuccess);
    EXPECT_EQ(recorder.work(),
              joined({kLocking,
                      {"open /dev/mtd0 read-only sync", "geometry /dev/mtd0",
                       "open /tmp/bsp/copy read-write create 0644 sync", "malloc 2048",
                       "seek /dev/mtd0 0", "read /dev/mtd0 2048", "seek /tmp/bsp/copy end",
                       "write /tmp/bsp/copy 2048", "seek /dev/mtd0 2048", "read /dev/mtd0 2048",
                       "seek /tmp/bsp/copy end", "write /tmp/bsp/copy 2048", "seek /dev/mtd0 4096",
                       "read /dev/mtd0 904", "seek /tmp/bsp/copy end", "write /tmp/bsp/copy 904"},
                      kUnlocking}));
    EXPECT_EQ(copy(), patterned(kCopySize));
}

TEST_F(PartitionReadTest, AppendsToAFileThatIsThere) {
    useFile(kReadFile, charactersOf("old"));
    EXPECT_EQ(read(), kSilentSuccess);
    EXPECT_EQ(copy(), joined({charactersOf("old"), patterned(kCopySize)}));
}

TEST_F(PartitionReadTest, PagesOfUnknownSizeAre2048) {
    pretendGeometry(kCopySize, kCopyBlock, 0);
    EXPECT_EQ(read(), kSilentSuccess);
    EXPECT_EQ(recorder.callsOf("malloc"), (Calls{"malloc 2048"}));
    EXPECT_EQ(copy().size(), kCopySize);
}

TEST_F(PartitionReadTest, WithHeaderItCopiesTheStoredFile) {
    begin({0, 0, 0x0B, 0xB8, 0xA1, 0x02, 0xA3, 0x04});
    EXPECT_EQ(read(1), kSilentSuccess);
    EXPECT_EQ(recorder.work(),
              joined({kLocking,
                      {"open /dev/mtd0 read-only sync", "geometry /dev/mtd0", "read /dev/mtd0 8",
                       "open /tmp/bsp/copy read-write create 0644 sync", "malloc 2048",
                       "seek /dev/mtd0 8", "read /dev/mtd0 2048", "seek /tmp/bsp/copy end",
                       "write /tmp/bsp/copy 2048", "seek /dev/mtd0 2056", "read /dev/mtd0 952",
                       "seek /tmp/bsp/copy end", "write /tmp/bsp/copy 952"},
                      kUnlocking}));
    const Bytes all = patterned(kCopySize);
    EXPECT_EQ(copy(), Bytes(all.begin() + 8, all.begin() + 3008));
}

TEST_F(PartitionReadTest, WithoutAValidHeaderNoFileIsMade) {
    const Bytes headers[] = {
        Bytes(8, 0xFF),
        {0xFF, 0xFF, 0xFF, 0xFF, 0xA1, 0x02, 0xA3, 0x04},
        {0, 0, 0, 0, 0xA1, 0x02, 0xA3, 0x04},
        {0, 0, 0x13, 0x81, 0xA1, 0x02, 0xA3, 0x04}, // 4993, one more than there is room for
        {0xFF, 0xFF, 0xFF, 0xFE, 0xA1, 0x02, 0xA3, 0x04},
        {0, 0, 1, 0, 0xA0, 0x02, 0xA3, 0x04},
        {0, 0, 1, 0, 0xA1, 0x02, 0xA3, 0x05},
        {0, 0, 1, 0, 0x04, 0xA3, 0x02, 0xA1},
    };
    for (const Bytes &header : headers) {
        begin(header);
        EXPECT_EQ(read(1), kSilentSuccess);
        EXPECT_FALSE(exists(kReadFile));
        EXPECT_EQ(recorder.work(), joined({kLocking,
                                           {"open /dev/mtd0 read-only sync", "geometry /dev/mtd0",
                                            "read /dev/mtd0 8"},
                                           kUnlocking}));
    }
}

TEST_F(PartitionReadTest, TheLargestStoredFileFillsThePartition) {
    begin({0, 0, 0x13, 0x80, 0xA1, 0x02, 0xA3, 0x04});
    EXPECT_EQ(read(1), kSilentSuccess);
    EXPECT_EQ(copy().size(), kCopySize - 8);
    begin({0, 0, 0, 1, 0xA1, 0x02, 0xA3, 0x04});
    removeFile(kReadFile);
    EXPECT_EQ(read(1), kSilentSuccess);
    EXPECT_EQ(copy(), (Bytes{8}));
}

TEST_F(PartitionReadTest, ReadsBackWhatWasWrittenWithHeader) {
    const struct {
        size_t size;
        uint32_t page;
    } cases[] = {{1, 2048}, {2040, 2048}, {2041, 2048}, {4000, 2048}, {1, 1}, {40, 1}, {40, 3}};
    for (const auto &row : cases) {
        usePages(row.page);
        useFile("/tmp/bsp/file", patterned(row.size));
        removeFile(kReadFile);
        EXPECT_EQ(
            recorder.run([] { return bsp_mtd_write_from_file("/tmp/bsp/file", kFirstDevice, 1); }),
            kSilentSuccess);
        EXPECT_EQ(read(1), kSilentSuccess);
        EXPECT_EQ(copy(), patterned(row.size));
    }
}

TEST_F(PartitionReadTest, NothingIsDoneWithoutTheLock) {
    recorder.failAlways("lock");
    EXPECT_EQ(read(), (Answer{BSP_E_LOCK, "bsp_flash_lock_set failed: type=1, retry_times=100 \n"
                                          "bsp_mtd_read_to_file-# \r\n"}));
    EXPECT_EQ(recorder.work(), joined({{kLocking[0]}, hundredTimes(kLocking[1]), kUnlocking}));
}

TEST_F(PartitionReadTest, WorksWithoutALockFile) {
    recorder.fail("open /tmp");
    EXPECT_EQ(read(), kSilentSuccess);
    EXPECT_EQ(copy(), patterned(kCopySize));
}

TEST_F(PartitionReadTest, EveryFailureHasItsAnswer) {
    struct Case {
        const char *call;
        int nth;
        int64_t result;
        Answer answer;
        size_t copied;
    };
    const Case cases[] = {
        {"open /dev/mtd0", 1, -1, {BSP_E_OPEN, "\nopen /dev/mtd0 fail.\n"}, 0},
        {"geometry", 1, -1, {BSP_E_ERASE, "get /dev/mtd0(fd=#) info error, ret = 1013 \n"}, 0},
        {"read /dev/mtd0 8", 1, 7, {BSP_E_SHORT_READ}, 0},
        {"read /dev/mtd0 8", 1, -1, {BSP_E_SHORT_READ}, 0},
        {"open /tmp/bsp/copy", 1, -1, {BSP_E_OPEN, "\nopen /tmp/bsp/copy fail.\n"}, 0},
        {"malloc 2048", 1, -1, {BSP_E_NO_MEMORY, "malloc error "}, 0},
        {"seek /dev/mtd0", 1, -1, {BSP_E_WRITE}, 0},
        {"seek /dev/mtd0", 2, 2055, {BSP_E_WRITE}, 2048},
        {"read /dev/mtd0", 2, -1, {BSP_E_SHORT_READ}, 0},
        {"read /dev/mtd0", 3, 951, {BSP_E_SHORT_READ}, 2048},
        {"write /tmp/bsp/copy", 1, -1, {BSP_OK}, 952}, // not noticed
        {"write /tmp/bsp/copy", 2, 100, {BSP_OK}, 2148},
    };
    for (const Case &row : cases) {
        SCOPED_TRACE(row.call);
        begin({0, 0, 0x0B, 0xB8, 0xA1, 0x02, 0xA3, 0x04});
        removeFile(kReadFile);
        recorder.clearFailures();
        recorder.fail(row.call, row.nth, row.result);
        EXPECT_EQ(read(1), row.answer);
        EXPECT_TRUE(recorder.allFailed());
        EXPECT_EQ(copy().size(), row.copied);
        EXPECT_EQ(recorder.work().back(), kUnlocking[0]);
    }
}

TEST_F(PartitionReadTest, NeedsBothNames) {
    EXPECT_EQ(recorder.run([] { return bsp_mtd_read_to_file(nullptr, kReadFile, 0); }),
              (Answer{BSP_E_NULL}));
    EXPECT_EQ(recorder.run([] { return bsp_mtd_read_to_file(kFirstDevice, nullptr, 0); }),
              (Answer{BSP_E_NULL}));
    EXPECT_EQ(recorder.work(), (Calls{}));
}

TEST_F(PartitionReadTest, PlacesThatNoFileHasAreNotSought) {
    EXPECT_EQ(recorder.run([] { return bsp::seekTo(-1, UINT64_MAX) ? 1 : 0; }), (Answer{0}));
    EXPECT_EQ(recorder.work(), (Calls{}));
}

} // namespace
