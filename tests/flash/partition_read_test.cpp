// Copying a flash partition into a file.

#include "bsp.h"
#include "flash/partition.h"
#include "tests/support/fake_flash.h"

#include <gtest/gtest.h>

namespace {

constexpr char kFile[] = "/images/copy";
constexpr char kDevice[] = "/dev/mtd0";
constexpr uint32_t kSize = 5000; // the last page is not a whole one
constexpr uint32_t kBlock = 1000;

class PartitionReadTest : public testing::Test {
  protected:
    void SetUp() override {
        usePartition(2048);
        device().content = patterned(kSize);
    }

    void usePartition(uint32_t pageSize) { flash.addPartition(kDevice, kSize, kBlock, pageSize); }

    FakeFile &device() { return flash.files[kDevice]; }
    Bytes copy() { return flash.files.count(kFile) != 0 ? flash.files[kFile].content : Bytes{}; }

    /** The first bytes of the partition; the rest is the pattern. */
    void begin(const Bytes &bytes) {
        device().content = patterned(kSize);
        std::copy(bytes.begin(), bytes.end(), device().content.begin());
    }

    Answer read(int32_t hasHeader = 0) {
        return flash.run([&] { return bsp_mtd_read_to_file(kDevice, kFile, hasHeader); });
    }

    FakeFlash flash;
};

TEST_F(PartitionReadTest, CopiesThePartition) {
    EXPECT_EQ(read(), kSilentSuccess);
    EXPECT_EQ(flash.calls,
              joined({kLocking,
                      {"open /dev/mtd0 read-only sync", "geometry /dev/mtd0",
                       "open /images/copy read-write create 0644 sync", "malloc 2048",
                       "seek /dev/mtd0 0", "read /dev/mtd0 2048", "seek /images/copy end",
                       "write /images/copy 2048", "seek /dev/mtd0 2048", "read /dev/mtd0 2048",
                       "seek /images/copy end", "write /images/copy 2048", "seek /dev/mtd0 4096",
                       "read /dev/mtd0 904", "seek /images/copy end", "write /images/copy 904",
                       "free", "close /images/copy", "close /dev/mtd0"},
                      kUnlocking}));
    EXPECT_EQ(copy(), patterned(kSize));
}

TEST_F(PartitionReadTest, AppendsToAFileThatIsThere) {
    flash.files[kFile].content = bytesOf("old");
    EXPECT_EQ(read(), kSilentSuccess);
    EXPECT_EQ(copy(), joined({bytesOf("old"), patterned(kSize)}));
}

TEST_F(PartitionReadTest, PagesOfUnknownSizeAre2048) {
    usePartition(0);
    EXPECT_EQ(read(), kSilentSuccess);
    EXPECT_EQ(flash.callsOf("malloc"), (Calls{"malloc 2048"}));
    EXPECT_EQ(copy().size(), kSize);
}

TEST_F(PartitionReadTest, WithHeaderItCopiesTheStoredFile) {
    begin({0, 0, 0x0B, 0xB8, 0xA1, 0x02, 0xA3, 0x04});
    EXPECT_EQ(read(1), kSilentSuccess);
    EXPECT_EQ(
        flash.calls,
        joined({kLocking,
                {"open /dev/mtd0 read-only sync", "geometry /dev/mtd0", "read /dev/mtd0 8",
                 "open /images/copy read-write create 0644 sync", "malloc 2048", "seek /dev/mtd0 8",
                 "read /dev/mtd0 2048", "seek /images/copy end", "write /images/copy 2048",
                 "seek /dev/mtd0 2056", "read /dev/mtd0 952", "seek /images/copy end",
                 "write /images/copy 952", "free", "close /images/copy", "close /dev/mtd0"},
                kUnlocking}));
    const Bytes all = patterned(kSize);
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
        EXPECT_EQ(flash.files.count(kFile), 0u);
        EXPECT_EQ(flash.calls, joined({kLocking,
                                       {"open /dev/mtd0 read-only sync", "geometry /dev/mtd0",
                                        "read /dev/mtd0 8", "close /dev/mtd0"},
                                       kUnlocking}));
    }
}

TEST_F(PartitionReadTest, TheLargestStoredFileFillsThePartition) {
    begin({0, 0, 0x13, 0x80, 0xA1, 0x02, 0xA3, 0x04});
    EXPECT_EQ(read(1), kSilentSuccess);
    EXPECT_EQ(copy().size(), kSize - 8);
    begin({0, 0, 0, 1, 0xA1, 0x02, 0xA3, 0x04});
    flash.files.erase(kFile);
    EXPECT_EQ(read(1), kSilentSuccess);
    EXPECT_EQ(copy(), (Bytes{8}));
}

TEST_F(PartitionReadTest, ReadsBackWhatWasWrittenWithHeader) {
    for (const size_t size : {size_t{1}, size_t{2040}, size_t{2041}, size_t{4000}})
        for (const uint32_t page : {1u, 2048u}) {
            usePartition(page);
            flash.files["/images/file"].content = patterned(size);
            flash.files.erase(kFile);
            EXPECT_EQ(flash.run([] { return bsp_mtd_write_from_file("/images/file", kDevice, 1); }),
                      kSilentSuccess);
            EXPECT_EQ(read(1), kSilentSuccess);
            EXPECT_EQ(copy(), patterned(size));
        }
}

TEST_F(PartitionReadTest, NothingIsDoneWithoutTheLock) {
    flash.failAlways("lock");
    EXPECT_EQ(read(), (Answer{BSP_E_LOCK, "bsp_flash_lock_set failed: type=1, retry_times=100 \n"
                                          "bsp_mtd_read_to_file-# \r\n"}));
    EXPECT_EQ(flash.calls, joined({{kLocking[0]}, hundredTimes(kLocking[1]), kUnlocking}));
}

TEST_F(PartitionReadTest, WorksWithoutALockFile) {
    flash.fail("open /tmp");
    EXPECT_EQ(read(), kSilentSuccess);
    EXPECT_EQ(copy(), patterned(kSize));
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
        {"geometry", 1, -1, {BSP_E_ERASE, "get /dev/mtd0(fd=1001) info error, ret = 1013 \n"}, 0},
        {"read /dev/mtd0 8", 1, 7, {BSP_E_SHORT_READ}, 0},
        {"read /dev/mtd0 8", 1, -1, {BSP_E_SHORT_READ}, 0},
        {"open /images/copy", 1, -1, {BSP_E_OPEN, "\nopen /images/copy fail.\n"}, 0},
        {"malloc 2048", 1, -1, {BSP_E_NO_MEMORY, "malloc error "}, 0},
        {"seek /dev/mtd0", 1, -1, {BSP_E_WRITE}, 0},
        {"seek /dev/mtd0", 2, 2055, {BSP_E_WRITE}, 2048},
        {"read /dev/mtd0", 2, -1, {BSP_E_SHORT_READ}, 0},
        {"read /dev/mtd0", 3, 951, {BSP_E_SHORT_READ}, 2048},
        {"write /images/copy", 1, -1, {BSP_OK}, 952}, // not noticed
        {"write /images/copy", 2, 100, {BSP_OK}, 2148},
    };
    for (const Case &row : cases) {
        SCOPED_TRACE(row.call);
        begin({0, 0, 0x0B, 0xB8, 0xA1, 0x02, 0xA3, 0x04});
        flash.files.erase(kFile);
        flash.clearFailures();
        flash.fail(row.call, row.nth, row.result);
        EXPECT_EQ(read(1), row.answer);
        EXPECT_TRUE(flash.allFailed());
        EXPECT_EQ(copy().size(), row.copied);
        EXPECT_EQ(Calls(flash.calls.end() - 2, flash.calls.end()), kUnlocking);
    }
}

TEST_F(PartitionReadTest, NeedsBothNames) {
    EXPECT_EQ(flash.run([] { return bsp_mtd_read_to_file(nullptr, kFile, 0); }),
              (Answer{BSP_E_NULL}));
    EXPECT_EQ(flash.run([] { return bsp_mtd_read_to_file(kDevice, nullptr, 0); }),
              (Answer{BSP_E_NULL}));
    EXPECT_EQ(flash.calls, (Calls{}));
}

TEST_F(PartitionReadTest, PlacesThatNoFileHasAreNotSought) {
    EXPECT_EQ(flash.run([] { return bsp::seekTo(1000, UINT64_MAX) ? 1 : 0; }), (Answer{0}));
    EXPECT_EQ(flash.calls, (Calls{}));
}

} // namespace
