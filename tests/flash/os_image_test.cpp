// Operating-system images in their banks.

#include "flash/os_image.h"

#include "bsp.h"
#include "tests/support/flash_board_test.h"

#include <filesystem>
#include <fstream>

namespace {

constexpr char kOsFile[] = "/tmp/bsp/os.bin";
constexpr char kCopy[] = "/tmp/bsp/copy";
constexpr char kHeaderFile[] = "/tmp/bsp/osHeader.bin";
constexpr size_t kLargest = 0x2700000;

const std::string kErase = "system flash_erase -q /dev/mtd12 0 0";
const std::string kWrite = "system nandwrite -q -p /dev/mtd12 /tmp/bsp/os.bin";
const std::string kWriteHeader =
    "system nandwrite -q -p -s 0x2700000 /dev/mtd12 /tmp/bsp/osHeader.bin";
const std::string kRemove = "system rm -f /tmp/bsp/osHeader.bin";

class OsImageTest : public FlashCallsTest {
  protected:
    void SetUp() override {
        FlashCallsTest::SetUp();
        useFile(kOsFile, patterned(3000));
        dump({});
        std::filesystem::current_path(here_.path());
    }
    void TearDown() override {
        std::filesystem::current_path("/");
        FlashCallsTest::TearDown();
    }

    /** An image in the working folder. */
    static void useHere(const std::string &name) {
        std::ofstream(name, std::ios::binary) << std::string(600, 'i');
    }

    Answer write(const char *file = kOsFile, int32_t bank = 0) {
        return recorder.run([&] { return bspImageUpgrade(BSP_IMAGE_OS, file, bank); });
    }

    /** A shell whose tools do nothing, but that nanddump leaves these bytes. */
    void dump(const Bytes &header) {
        recorder.before = [this, header](const SystemCall &call) -> std::optional<int64_t> {
            if (!call.is("system"))
                return std::nullopt;
            if (call.text().starts_with("system nanddump"))
                useFile(kHeaderFile, header);
            return 0;
        };
    }

    Answer readHeader(int32_t bank = 0) {
        buffer.assign(BSP_OS_HEADER_SIZE + 1, 0xA5);
        return recorder.run([&] { return bspOsImageInfoGet(buffer.data(), bank); });
    }

    Bytes buffer;
    const Bytes untouched = Bytes(BSP_OS_HEADER_SIZE + 1, 0xA5);

  private:
    TemporaryFolder here_;
};

Bytes lastOf(const Bytes &bytes) {
    return {bytes.end() - 512, bytes.end()};
}

const Calls kCopyingTheHeader = {
    "stat /tmp/bsp/os.bin",
    "malloc 512",
    "open /tmp/bsp/os.bin read-only",
    "seek /tmp/bsp/os.bin 2488",
    "read /tmp/bsp/os.bin 512",
    "open /tmp/bsp/osHeader.bin read-write create 0644 no-link",
    "write /tmp/bsp/osHeader.bin 512",
};

TEST_F(OsImageTest, IsErasedWrittenAndFollowedByItsHeader) {
    EXPECT_EQ(write(), kSilentSuccess);
    EXPECT_EQ(recorder.work(), joined({{"stat /tmp/bsp/os.bin"},
                                       kLocking,
                                       {kErase, kWrite},
                                       kCopyingTheHeader,
                                       {kWriteHeader, kRemove},
                                       kUnlocking}));
    EXPECT_EQ(contentOf(kHeaderFile), lastOf(patterned(3000)));
}

TEST_F(OsImageTest, TheOtherBankIsAnyOtherNumber) {
    for (const int32_t bank : {1, 7, -1}) {
        EXPECT_EQ(write(kOsFile, bank), kSilentSuccess);
        EXPECT_EQ(recorder.callsOf("system"),
                  (Calls{"system flash_erase -q /dev/mtd14 0 0",
                         "system nandwrite -q -p /dev/mtd14 /tmp/bsp/os.bin",
                         "system nandwrite -q -p -s 0x2700000 /dev/mtd14 /tmp/bsp/osHeader.bin",
                         kRemove}));
    }
}

TEST_F(OsImageTest, AnOldHeaderFileIsOverwrittenNotCut) {
    useFile(kHeaderFile, Bytes(600, 0xEE));
    EXPECT_EQ(write(), kSilentSuccess);
    EXPECT_EQ(contentOf(kHeaderFile), joined({lastOf(patterned(3000)), Bytes(88, 0xEE)}));
}

TEST_F(OsImageTest, TheLargestImageHas39MiB) {
    std::filesystem::resize_file(boardFile(kOsFile), kLargest);
    EXPECT_EQ(write(), kSilentSuccess);
    EXPECT_EQ(recorder.callsOf("seek"), (Calls{"seek /tmp/bsp/os.bin 40893952"}));
    std::filesystem::resize_file(boardFile(kOsFile), kLargest + 1);
    EXPECT_EQ(write(),
              (Answer{-1, "bsp_os_image_write-#: OS file size 40894465 > max 40894464\r\n"}));
    EXPECT_EQ(recorder.work(), (Calls{"stat /tmp/bsp/os.bin"})) << "refused before the lock";
}

TEST_F(OsImageTest, AnImageWithoutAHeaderIsNoticedWhenItIsWritten) {
    for (const size_t size : {size_t{0}, size_t{1}, size_t{510}, size_t{511}}) {
        useFile(kOsFile, patterned(size));
        EXPECT_EQ(write(),
                  (Answer{BSP_E_WRITE, "bsp_os_image_write-#: get OS file header failed.\r\n"}));
        EXPECT_EQ(recorder.callsOf("system"), (Calls{kErase, kWrite}));
    }
    useFile(kOsFile, patterned(512));
    EXPECT_EQ(write(), kSilentSuccess);
    EXPECT_EQ(contentOf(kHeaderFile), patterned(512));
}

TEST_F(OsImageTest, NeedsFileAndDevice) {
    EXPECT_EQ(write(nullptr), (Answer{BSP_E_NULL}));
    EXPECT_EQ(recorder.run([] { return bsp_os_image_write(nullptr, kOsFile); }),
              (Answer{BSP_E_NULL}));
    EXPECT_EQ(recorder.work(), (Calls{}));
}

TEST_F(OsImageTest, NothingIsErasedWithoutTheLock) {
    recorder.failAlways("lock");
    EXPECT_EQ(write(), (Answer{BSP_E_LOCK, "bsp_flash_lock_set failed: type=1, retry_times=100 \n"
                                           "bsp_os_image_write-#: flash lock failed\r\n"}));
    EXPECT_EQ(
        recorder.work(),
        joined({{"stat /tmp/bsp/os.bin", kLocking[0]}, hundredTimes(kLocking[1]), kUnlocking}));
}

TEST_F(OsImageTest, WorksWithoutALockFile) {
    recorder.fail("open /tmp/bspFlashLockFile");
    EXPECT_EQ(write(), kSilentSuccess);
    EXPECT_EQ(recorder.callsOf("system").size(), 4u);
}

TEST_F(OsImageTest, EveryFailureEndsIt) {
    struct Case {
        std::string call;
        int nth;
        int64_t result;
        Answer answer;
        size_t commands;
    };
    const std::string headerFailed = "bsp_os_image_write-#: get OS file header failed.\r\n";
    const Case cases[] = {
        {"stat",
         1,
         -1,
         {BSP_E_SHORT_READ, "bsp_os_image_write-#: OS file state get failed\r\n"},
         0},
        {kErase, 1, 256, {-1, "bsp_os_image_write-#: erase /dev/mtd12 error, ret = 256\n"}, 1},
        {kWrite, 1, -1, {-1, "bsp_os_image_write-#: write /dev/mtd12 error, ret = -1\n"}, 2},
        {"stat",
         2,
         -1,
         {BSP_E_SHORT_READ,
          "bsp_os_file_header_to_file-#: OS file state get failed\r\n" + headerFailed},
         2},
        {"malloc 512",
         1,
         -1,
         {BSP_E_NO_MEMORY, "bsp_os_file_header_to_file-#: malloc fail.\r\n" + headerFailed},
         2},
        {"open /tmp/bsp/os.bin",
         1,
         -1,
         {BSP_E_OPEN,
          "bsp_os_file_header_to_file-#: open /tmp/bsp/os.bin fail.\r\n" + headerFailed},
         2},
        {"seek", 1, -1, {BSP_E_WRITE, headerFailed}, 2},
        {"seek", 1, 2487, {BSP_E_WRITE, headerFailed}, 2},
        {"read /tmp/bsp/os.bin", 1, 511, {BSP_E_SHORT_READ, headerFailed}, 2},
        {"open /tmp/bsp/osHeader",
         1,
         -1,
         {BSP_E_OPEN,
          "bsp_os_file_header_to_file-#: open /tmp/bsp/osHeader.bin fail.\r\n" + headerFailed},
         2},
        {"write /tmp/bsp/osHeader", 1, -1, {BSP_OK}, 4}, // not noticed
        {kWriteHeader,
         1,
         512,
         {-1, "bsp_os_image_write-#: write /dev/mtd12 error, ret = 512\n"},
         3},
        {kRemove, 1, 256, {256}, 4},
        {kRemove, 1, -1, {-1}, 4},
    };
    for (const Case &row : cases) {
        SCOPED_TRACE(row.call);
        recorder.clearFailures();
        recorder.fail(row.call, row.nth, row.result);
        EXPECT_EQ(write(), row.answer);
        EXPECT_TRUE(recorder.allFailed());
        EXPECT_EQ(recorder.callsOf("system").size(), row.commands);
    }
}

TEST_F(OsImageTest, NamesThatMeanSomethingToTheShellAreQuoted) {
    const struct {
        const char *name, *word;
    } cases[] = {
        {"os-1.2_3+a,b:c=d@e%f", "os-1.2_3+a,b:c=d@e%f"},
        {"r\xC3\xA9seau", "r\xC3\xA9seau"},
        {"my image", "'my image'"},
        {"a;reboot", "'a;reboot'"},
        {"$HOME", "'$HOME'"},
        {"a'b", "'a'\\''b'"},
        {"~a", "'~a'"},
        {"#a", "'#a'"},
        {"a\nb", "'a\nb'"},
        {"a\\b", "'a\\b'"},
        {"a*", "'a*'"},
        // What the tool would take for an option is a file of this folder.
        {"--help", "./--help"},
        {"-", "./-"},
        {"-my image", "'./-my image'"},
        {"-'", "'./-'\\'''"},
        {"./-a", "./-a"},
        {"a-", "a-"},
    };
    for (const auto &row : cases) {
        useHere(row.name);
        EXPECT_EQ(write(row.name), kSilentSuccess);
        const Calls commands = recorder.callsOf("system");
        ASSERT_EQ(commands.size(), 4u);
        EXPECT_EQ(commands[1], std::string("system nandwrite -q -p /dev/mtd12 ") + row.word);
        EXPECT_EQ(recorder.callsOf("stat"), Calls(2, std::string("stat ") + row.name));
    }
}

TEST_F(OsImageTest, MessagesNameAFileAsTheCallerDoes) {
    useHere("--help");
    recorder.fail("open --help");
    EXPECT_EQ(write("--help"),
              (Answer{BSP_E_OPEN, "bsp_os_file_header_to_file-#: open --help fail.\r\n"
                                  "bsp_os_image_write-#: get OS file header failed.\r\n"}));
}

TEST_F(OsImageTest, TheLongestCommandLineHas127Characters) {
    const size_t room = 127 - std::string("nandwrite -q -p /dev/mtd12 ").size();
    const auto named = [&](const std::string &name) {
        useHere(name);
        return write(name.c_str());
    };
    EXPECT_EQ(named(std::string(room, 'a')), kSilentSuccess);
    EXPECT_EQ(recorder.callsOf("system")[1].size(), std::string("system ").size() + 127);
    EXPECT_EQ(named(std::string(room - 2, ' ')), kSilentSuccess) << "quotes count";
    EXPECT_EQ(named("-" + std::string(room - 3, 'a')), kSilentSuccess) << "so does ./";
    // As long as a path can be.
    std::filesystem::create_directory("'");
    std::string plain = "f", quotes = "f";
    for (int i = 0; i < 790; ++i) {
        plain.insert(0, "././/");
        quotes.insert(0, "'/../");
    }
    for (const std::string &name :
         {std::string(room + 1, 'a'), std::string(room - 1, ' '), std::string(room, '\''),
          "-" + std::string(room - 2, 'a'), "-" + std::string(room - 4, ' '),
          std::string(126, '\''), std::string(127, 'a'), std::string(128, 'a'), quotes, plain}) {
        EXPECT_EQ(named(name), (Answer{-1}));
        EXPECT_EQ(recorder.work(), (Calls{"stat " + name})) << "nothing is erased";
    }
}

TEST_F(OsImageTest, EachCommandLineIsMeasured) {
    useHere("f");
    // The longest of partition names: for all commands, for the image alone, for not even the
    // erase.
    constexpr size_t kForAll = 127 - 51, kForErase = 127 - 19;
    for (const size_t length : {kForAll, kForAll + 1, kForErase, kForErase + 1}) {
        const std::string device(length, 'd');
        const Answer answer = recorder.run([&] { return bsp_os_image_write(device.c_str(), "f"); });
        EXPECT_EQ(answer, (length == kForAll ? kSilentSuccess : Answer{-1})) << length;
        EXPECT_EQ(recorder.callsOf("system").empty(), length != kForAll) << length;
    }
}

// The header block

TEST_F(OsImageTest, TheHeaderIsDumpedUnderTheLockAndReadBehindIt) {
    dump(patterned(512));
    EXPECT_EQ(readHeader(), kSilentSuccess);
    EXPECT_EQ(recorder.work(), joined({kLocking,
                                       {"system nanddump -q -s 0x2700000 -l 0x200 /dev/mtd12 -f "
                                        "/tmp/bsp/osHeader.bin"},
                                       kUnlocking,
                                       {"open /tmp/bsp/osHeader.bin read-only no-link",
                                        "read /tmp/bsp/osHeader.bin 512", kRemove}}));
    EXPECT_EQ(buffer, joined({patterned(512), Bytes{0xA5}}));
}

TEST_F(OsImageTest, TheHeaderOfTheOtherBank) {
    for (const int32_t bank : {1, 7, -1}) {
        dump(Bytes(512, 0xFF));
        EXPECT_EQ(readHeader(bank), kSilentSuccess);
        EXPECT_EQ(
            recorder.callsOf("system nanddump"),
            (Calls{
                "system nanddump -q -s 0x2700000 -l 0x200 /dev/mtd14 -f /tmp/bsp/osHeader.bin"}));
    }
}

TEST_F(OsImageTest, HeaderFailuresLeaveTheBufferAlone) {
    struct Case {
        const char *call;
        int64_t result;
        Answer answer;
    };
    const std::string headerFailed = "bspOsImageInfoGet-#: get OS header file failed.\r\n";
    const Case cases[] = {
        {"system nanddump", 256, {-1, "bspOsImageInfoGet-#: dump /dev/mtd14 error, ret = 256\nn"}},
        {"system nanddump", -1, {-1, "bspOsImageInfoGet-#: dump /dev/mtd14 error, ret = -1\nn"}},
        {"open /tmp/bsp/osHeader",
         -1,
         {BSP_E_OPEN,
          "bsp_os_header_file_to_buffer-#: open /tmp/bsp/osHeader.bin fail.\r\n" + headerFailed}},
        {"read /tmp/bsp/osHeader", -1, {BSP_E_SHORT_READ, headerFailed}},
        {"read /tmp/bsp/osHeader", 511, {BSP_E_SHORT_READ, headerFailed}},
    };
    for (const Case &row : cases) {
        SCOPED_TRACE(row.call);
        dump(patterned(512));
        recorder.clearFailures();
        recorder.fail(row.call, 1, row.result);
        EXPECT_EQ(readHeader(1), row.answer);
        EXPECT_TRUE(recorder.allFailed());
        EXPECT_EQ(buffer, untouched);
    }
    recorder.clearFailures();
    recorder.failAlways("lock");
    EXPECT_EQ(readHeader(),
              (Answer{BSP_E_LOCK, "bsp_flash_lock_set failed: type=1, retry_times=100 \n"
                                  "bspOsImageInfoGet-#: flash lock failed\r\n"}));
    EXPECT_EQ(recorder.work(), joined({{kLocking[0]}, hundredTimes(kLocking[1]), kUnlocking}));
    EXPECT_EQ(buffer, untouched);
    EXPECT_EQ(recorder.run([] { return bspOsImageInfoGet(nullptr, 0); }), (Answer{BSP_E_NULL}));
    EXPECT_EQ(recorder.work(), (Calls{}));
}

TEST_F(OsImageTest, AHeaderThatWasReadIsStoredWhateverTheRemovalAnswers) {
    for (const int32_t result : {256, -1}) {
        dump(patterned(512));
        recorder.clearFailures();
        recorder.fail(kRemove, 1, result);
        EXPECT_EQ(readHeader(), (Answer{result}));
        EXPECT_TRUE(recorder.allFailed());
        EXPECT_EQ(buffer, joined({patterned(512), Bytes{0xA5}}));
    }
}

// The steps by themselves

TEST_F(OsImageTest, TheHeaderCopyJudgesTheImageItself) {
    const auto copy = [&](const char *image, const char *header) {
        return recorder.run([&] { return bsp_os_file_header_to_file(image, header); });
    };
    EXPECT_EQ(copy(kOsFile, kCopy), kSilentSuccess);
    EXPECT_EQ(contentOf(kCopy), lastOf(patterned(3000)));
    EXPECT_EQ(copy(nullptr, kCopy), (Answer{BSP_E_NULL}));
    EXPECT_EQ(copy(kOsFile, nullptr), (Answer{BSP_E_NULL}));
    std::filesystem::resize_file(boardFile(kOsFile), kLargest + 1);
    EXPECT_EQ(
        copy(kOsFile, kCopy),
        (Answer{-1, "bsp_os_file_header_to_file-#: OS file size 40894465 > max 40894464\r\n"}));
    EXPECT_EQ(recorder.work(), (Calls{"stat /tmp/bsp/os.bin"}));
}

TEST_F(OsImageTest, TheHeaderFileHas512BytesOrMore) {
    const auto read = [&](const char *header, uint8_t *bytes) {
        return recorder.run([&] { return bsp_os_header_file_to_buffer(header, bytes); });
    };
    useFile(kCopy, patterned(600));
    buffer = untouched;
    EXPECT_EQ(read(kCopy, buffer.data()), kSilentSuccess);
    EXPECT_EQ(buffer, joined({patterned(512), Bytes{0xA5}}));
    useFile(kCopy, patterned(511));
    buffer = untouched;
    EXPECT_EQ(read(kCopy, buffer.data()), (Answer{BSP_E_SHORT_READ}));
    EXPECT_EQ(buffer, untouched);
    EXPECT_EQ(read(nullptr, buffer.data()), (Answer{BSP_E_NULL}));
    EXPECT_EQ(read(kCopy, nullptr), (Answer{BSP_E_NULL}));
}

} // namespace
