// The boot loader's upgrade file, and its way into flash.

#include "flash/boot_loader.h"

#include "bsp.h"
#include "tests/support/boot_loader_file.h"
#include "tests/support/flash_board_test.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

constexpr char kBootFile[] = "/tmp/bsp/boot.bin";
using boot_loader_file::crcOf;
using boot_loader_file::kTrailer;
using boot_loader_file::put;
using boot_loader_file::seal;

/** A valid upgrade file of so many bytes. */
Bytes upgradeFile(size_t size) {
    return boot_loader_file::of(patterned(size - kTrailer));
}

class BootLoaderTest : public FlashCallsTest {
  protected:
    void SetUp() override {
        FlashCallsTest::SetUp();
        usePartition(0, {vb::FlashType::Nor, 0x100000, 0x10000, 2048, 0});
        useFile(kBootFile, upgradeFile(5000));
    }

    Answer check(const Bytes &file) {
        return recorder.run(
            [&] { return bsp_bios_file_check(file.data(), static_cast<uint32_t>(file.size())); });
    }

    Answer upgrade() {
        return withoutNumber(
            recorder.run([] { return bspImageUpgrade(BSP_IMAGE_BOOT, kBootFile, 1); }),
            "/dev/mtd0");
    }
};

constexpr char kError0[] = "Bios file header error(0).\n";
constexpr char kError1[] = "Bios file header error(1).\n";
constexpr char kError2[] = "Bios file header error(2).\n";
constexpr char kDataError[] = "Bios file data error.\n";

TEST_F(BootLoaderTest, AGoodFilePasses) {
    for (const size_t size : {size_t{80}, size_t{81}, size_t{5000}})
        EXPECT_EQ(check(upgradeFile(size)), kSilentSuccess);
}

TEST_F(BootLoaderTest, EveryByteIsChecked) {
    const Bytes good = upgradeFile(100);
    for (size_t i = 0; i < good.size(); ++i) {
        SCOPED_TRACE(i);
        Bytes bad = good;
        bad[i] ^= 0x40;
        const size_t field = i - 20; // offset in the trailer
        const bool isMagicOrName = field < 4 || (field >= 32 && field < 47);
        const char *message = i < 20                     ? kDataError
                              : isMagicOrName            ? kError0
                              : field >= 8 && field < 12 ? kError1
                                                         : kError2;
        EXPECT_EQ(check(bad), (Answer{-1, message}));
    }
}

TEST_F(BootLoaderTest, TheFirstWrongFieldIsTold) {
    Bytes file = upgradeFile(100);
    file[0] ^= 1;
    EXPECT_EQ(check(file), (Answer{-1, kDataError}));
    file[20 + 16] ^= 1;
    EXPECT_EQ(check(file), (Answer{-1, kError2}));
    put(file, 20 + 8, 81);
    EXPECT_EQ(check(file), (Answer{-1, kError1}));
    file[20 + 32] = 'z';
    EXPECT_EQ(check(file), (Answer{-1, kError0}));
}

TEST_F(BootLoaderTest, FieldsAreJudgedBehindTheirOwnCrc) {
    const auto sealed = [](size_t offset, uint8_t value) {
        Bytes file = upgradeFile(100);
        file[20 + offset] = value;
        seal(file);
        return file;
    };
    EXPECT_EQ(check(sealed(4, 0xFF)), kSilentSuccess);  // not interpreted
    EXPECT_EQ(check(sealed(16, 0xFF)), kSilentSuccess); // not interpreted
    EXPECT_EQ(check(sealed(24, 0xFF)), kSilentSuccess); // not interpreted
    EXPECT_EQ(check(sealed(31, 0xFF)), kSilentSuccess); // not interpreted
    EXPECT_EQ(check(sealed(47, 'x')), kSilentSuccess);  // behind the name's end
    EXPECT_EQ(check(sealed(79, 'x')), kSilentSuccess);
    EXPECT_EQ(check(sealed(46, '2')), (Answer{-1, kError0})); // a longer name
    EXPECT_EQ(check(sealed(45, 0)), (Answer{-1, kError0}));   // a shorter one
    EXPECT_EQ(check(sealed(0, 'b')), (Answer{-1, kError0}));
    EXPECT_EQ(check(sealed(11, 81)), (Answer{-1, kError1}));
    EXPECT_EQ(check(sealed(8, 1)), (Answer{-1, kError1}));
    EXPECT_EQ(check(sealed(20, 0)), (Answer{-1, kDataError}));
}

TEST_F(BootLoaderTest, AFileWithoutATrailerHasAWrongOne) {
    const Bytes file = upgradeFile(80);
    for (size_t size = 1; size < 80; ++size)
        EXPECT_EQ(check(Bytes(file.begin() + static_cast<ptrdiff_t>(80 - size), file.end())),
                  (Answer{-1, kError0}));
    EXPECT_EQ(recorder.run([&] { return bsp_bios_file_check(file.data(), 0); }),
              (Answer{-1, kError0}));
    EXPECT_EQ(recorder.run([] { return bsp_bios_file_check(nullptr, 100); }), (Answer{BSP_E_NULL}));
}

const Calls kReading = {"stat /tmp/bsp/boot.bin", "malloc 1048576", "fopen /tmp/bsp/boot.bin rb",
                        "fread /tmp/bsp/boot.bin 1 x 5000"};

TEST_F(BootLoaderTest, IsCheckedAndWrittenWhole) {
    EXPECT_EQ(upgrade(), kSilentSuccess);
    Calls begin = recorder.work();
    begin.resize(kReading.size() + 5);
    EXPECT_EQ(begin, joined({kReading,
                             kLocking,
                             {"stat /tmp/bsp/boot.bin", "open /tmp/bsp/boot.bin read-only sync",
                              "open /dev/mtd0 read-write sync"}}));
    EXPECT_EQ(recorder.callsOf("erase").size(), 0x10u) << "the whole partition";
    EXPECT_EQ(recorder.callsOf("write").size(), 3u);
    EXPECT_EQ(stored(0, 0, 5000), upgradeFile(5000)) << "without a length header";
}

TEST_F(BootLoaderTest, TheLargestFileHas1MiB) {
    useFile(kBootFile, upgradeFile(1048576));
    EXPECT_EQ(upgrade(), kSilentSuccess);
    useFile(kBootFile, upgradeFile(1048577));
    EXPECT_EQ(upgrade(), (Answer{-1, "Bios file size error.\r\n"}));
    EXPECT_EQ(recorder.work(), (Calls{"stat /tmp/bsp/boot.bin"}));
}

TEST_F(BootLoaderTest, AFileThatFailsTheCheckIsNotWritten) {
    Bytes file = upgradeFile(5000);
    file[7] ^= 1;
    useFile(kBootFile, file);
    EXPECT_EQ(upgrade(), (Answer{-1, "Bios file data error.\nBios file is invalid. \r\n"}));
    EXPECT_EQ(recorder.work(), kReading);
    useFile(kBootFile, {});
    EXPECT_EQ(upgrade(), (Answer{-1, "Bios file header error(0).\nBios file is invalid. \r\n"}));
}

TEST_F(BootLoaderTest, FailuresBeforeTheCheck) {
    struct Case {
        const char *call;
        int64_t result;
        Answer answer;
        size_t calls;
    };
    const Case cases[] = {
        {"stat", -1, {BSP_E_SHORT_READ}, 1},
        {"malloc 1048576", -1, {BSP_E_NO_MEMORY}, 2},
        {"fopen", -1, {BSP_E_OPEN}, 3},
        {"fread", 4999, {BSP_E_SHORT_READ, "Reading Bios filesize 4999 failed.\r\n"}, 4},
        {"fread", 0, {BSP_E_SHORT_READ, "Reading Bios filesize 0 failed.\r\n"}, 4},
    };
    for (const Case &row : cases) {
        recorder.clearFailures();
        recorder.fail(row.call, 1, row.result);
        EXPECT_EQ(upgrade(), row.answer);
        EXPECT_TRUE(recorder.allFailed());
        EXPECT_EQ(recorder.work().size(), row.calls) << "nothing else is done";
    }
    EXPECT_EQ(recorder.run([] { return bspImageUpgrade(BSP_IMAGE_BOOT, nullptr, 0); }),
              (Answer{BSP_E_NULL}));
    EXPECT_EQ(recorder.work(), (Calls{}));
}

TEST_F(BootLoaderTest, AFailedWriteIsPrintedAndAnsweredWithSuccess) {
    struct Case {
        const char *call;
        int64_t result;
        const char *printed;
    };
    const Case cases[] = {
        {"open /dev/mtd0", -1,
         "\nopen /dev/mtd0 fail.\n"
         "Update bios file error(-1), you'd better try again...\r\n"},
        {"geometry", -7,
         "get /dev/mtd0(fd=#) info error, ret = -7 \n"
         "Update bios file error(-7), you'd better try again...\r\n"},
        {"seek /dev/mtd0", -1, "Update bios file error(1014), you'd better try again...\r\n"},
        {"read /tmp/bsp/", 3, "Update bios file error(1011), you'd better try again...\r\n"},
        {"malloc 2048", -1, "malloc error "},
    };
    for (const Case &row : cases) {
        recorder.clearFailures();
        recorder.fail(row.call, 1, row.result);
        EXPECT_EQ(upgrade(), (Answer{BSP_OK, row.printed}));
        EXPECT_TRUE(recorder.allFailed());
    }
}

TEST_F(BootLoaderTest, ATooSmallPartitionIsToldByTheMessageAlone) {
    usePartition(0, {vb::FlashType::Nor, 4096, 4096, 2048, 0});
    EXPECT_EQ(upgrade(), (Answer{BSP_OK, "Error, file size 5000 is big than mtd size 4096. \n"}));
}

} // namespace
