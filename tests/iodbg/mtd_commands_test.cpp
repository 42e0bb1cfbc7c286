// iodbg mtd.

#include "tests/iodbg/flash_commands_test.h"

#include <cerrno>

namespace {

class MtdCommandsTest : public FlashCommandsTest {
  protected:
    std::string copyOf(const std::string &device, const Words &options = {}) const {
        Words words = {"mtd", "read", device, hostFile("copy"), "--force"};
        words.insert(words.end(), options.begin(), options.end());
        const ProcessResult result = iodbg(words);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return readFile(hostFile("copy"));
    }
    ProcessResult write(const std::string &device, const std::string &file,
                        const Words &options = {}) const {
        Words words = {"mtd", "write", device, file, "--yes"};
        words.insert(words.end(), options.begin(), options.end());
        return iodbg(words);
    }
};

TEST_F(MtdCommandsTest, WritesAFileAndReadsThePartition) {
    const std::string file = makeImage(1000, "data");
    const ProcessResult result = write("mtd4", file);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "Device       /dev/mtd4\n"
                          "File         " +
                              file +
                              "\n"
                              "Size, bytes  1000\n"
                              "Dry run      no\n"
                              "Verified     read back, all bytes are the file's\n");
    EXPECT_EQ(linesOf(result.err), (Words{"mtd write: step 1 of 3, erase the partition",
                                          "mtd write: step 2 of 3, write the file",
                                          "mtd write: step 3 of 3, read back and compare"}));
    const std::string copy = copyOf("mtd4");
    ASSERT_EQ(copy.size(), 262144u);
    EXPECT_EQ(copy.substr(0, 1024), imageBytes(1000) + std::string(24, '\0'));
    EXPECT_EQ(copy.substr(1024), std::string(262144 - 1024, '\xFF'));
    EXPECT_EQ(copyOf("/dev/mtd4"), copy);
}

TEST_F(MtdCommandsTest, ListsThePartitions) {
    markBad(12, 3);
    markBad(12, 4);
    EXPECT_EQ(iodbg({"mtd", "list"}).out,
              "DEVICE      HOLDS                     SIZE      BLOCK   PAGE  BLOCKS  BAD\n"
              "/dev/mtd0   boot loader               1048576   65536   256   16      none\n"
              "/dev/mtd4   boot settings             262144    65536   256   4       none\n"
              "/dev/mtd12  operating system, bank 0  42467328  131072  2048  324     3-4\n"
              "/dev/mtd14  operating system, bank 1  42467328  131072  2048  324     none\n");
    addFault(openFails("/dev/mtd4", ENODEV));
    const std::string answer = json({"mtd", "list"}, 1);
    EXPECT_EQ(jsonKeys(answer, "/partitions/1"),
              (Words{"device", "holds", "size_bytes", "block_bytes", "page_bytes", "blocks",
                     "bad_blocks"}));
    EXPECT_EQ(jsonAt(answer, "/partitions/1/size_bytes"), "null");
    EXPECT_EQ(jsonAt(answer, "/partitions/2/bad_blocks"), "[3,4]");
    EXPECT_EQ(jsonAt(answer, "/failures/0/item"), "\"mtd4\"");
}

TEST_F(MtdCommandsTest, TellsWhatADriverKnowsOfAPartition) {
    markBad(12, 323);
    EXPECT_EQ(iodbg({"mtd", "info", "mtd12"}).out,
              "Device                       /dev/mtd12\n"
              "Holds                        operating system, bank 0\n"
              "Kind of flash                NAND\n"
              "Size, bytes                  42467328\n"
              "Erase block, bytes           131072\n"
              "Page, bytes                  2048\n"
              "Spare area of a page, bytes  64\n"
              "Blocks                       324\n"
              "Bad blocks                   323\n"
              "First block                  erased\n");
    store(4, 0, "data");
    const std::string answer = json({"mtd", "info", "/dev/mtd4"});
    EXPECT_EQ(jsonKeys(answer, ""),
              (Words{"device", "holds", "type", "size_bytes", "block_bytes", "page_bytes",
                     "spare_bytes", "blocks", "bad_blocks", "starts_erased", "failures"}));
    EXPECT_EQ(jsonAt(answer, "/type"), "\"NOR\"");
    EXPECT_EQ(jsonAt(answer, "/starts_erased"), "false");
    expectFailure({"mtd", "info", "/dev/null"}, 1, {"cannot ask /dev/null for its sizes"});
}

TEST_F(MtdCommandsTest, StreamsAPartitionUnderTheLibrarysLock) {
    EXPECT_EQ(write("mtd4", makeImage(5000, "data"), {"--header"}).exitCode, 0);
    const ProcessResult file = iodbg({"mtd", "read", "mtd4", "-", "--header"});
    EXPECT_EQ(file.exitCode, 0) << file.err;
    EXPECT_EQ(file.out, imageBytes(5000));
    EXPECT_NE(file.err.find("Read by      iodbg itself, under the library's flash lock; twice"),
              std::string::npos)
        << file.err;
    EXPECT_EQ(iodbg({"mtd", "read", "mtd4", "-"}).out, stored(4, 0, 262144));
    spoil("mtd4", "read", "corrupt=3:0x10", "0", "1", "once");
    const ProcessResult torn = iodbg({"mtd", "read", "mtd4", "-"});
    EXPECT_EQ(torn.exitCode, 3);
    EXPECT_NE(torn.err.find("what was given of /dev/mtd4 differs from a second reading"),
              std::string::npos)
        << torn.err;
}

TEST_F(MtdCommandsTest, AStreamNeedsNoRoomForACopy) {
    Environment environment = boardEnvironment(boardFolder());
    environment.emplace_back("TMPDIR=/nowhere");
    const ProcessResult result =
        run({builtProgram("iodbg"), "mtd", "read", "mtd4", "-"}, environment);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(result.out == std::string(262144, '\xFF'));
}

TEST_F(MtdCommandsTest, WritesAndReadsBehindALengthHeader) {
    EXPECT_EQ(write("mtd14", makeImage(5000, "data"), {"--header"}).exitCode, 0);
    EXPECT_EQ(stored(14, 0, 8), std::string("\0\0\x13\x88\xA1\x02\xA3\x04", 8));
    EXPECT_EQ(copyOf("mtd14", {"--header"}), imageBytes(5000));
    expectRefusal({"mtd", "read", "mtd4", hostFile("none"), "--header"}, 1,
                  "/dev/mtd4 holds no file with a length header");
    EXPECT_EQ(readFile(hostFile("none")), "");
}

TEST_F(MtdCommandsTest, AFileMayFillItsPartition) {
    const std::string exact = makeImage(262144, "exact");
    EXPECT_EQ(write("mtd4", exact).exitCode, 0);
    EXPECT_EQ(copyOf("mtd4"), imageBytes(262144));
    expectRefusal({"mtd", "write", "mtd4", exact, "--yes", "--header"}, 2,
                  "has 262144 bytes, 8 more with the length header; /dev/mtd4 holds 262144");
    expectRefusal({"mtd", "write", "mtd4", makeImage(262145, "large"), "--yes"}, 2,
                  "has 262145 bytes; /dev/mtd4 holds 262144");
    EXPECT_EQ(write("mtd4", makeImage(262136, "fits"), {"--header"}).exitCode, 0);
    EXPECT_EQ(copyOf("mtd4", {"--header"}), imageBytes(262136));
}

TEST_F(MtdCommandsTest, AnswersProgramsInLines) {
    const std::string file = makeImage(100000, "data");
    const Words lines = linesOf(write("mtd0", file, {"--json"}).out);
    ASSERT_GT(lines.size(), 3u);
    EXPECT_EQ(jsonKeys(lines[0], ""),
              (Words{"event", "task", "step", "steps", "name", "percent", "seconds_left"}));
    EXPECT_EQ(jsonAt(lines[0], "/task"), "\"mtd write\"");
    EXPECT_EQ(jsonAt(lines[lines.size() - 2], "/step"), "3");
    EXPECT_EQ(jsonAt(lines[lines.size() - 2], "/percent"), "100");
    // Of the steps in between, the writes are told page by page, as far as the percentage moves.
    int writes = 0;
    for (size_t i = 0; i + 1 < lines.size(); ++i)
        writes += jsonAt(lines[i], "/step") == "2" ? 1 : 0;
    EXPECT_GT(writes, 5);
    EXPECT_EQ(jsonKeys(lines.back(), ""),
              (Words{"event", "device", "file", "size_bytes", "dry_run", "verified", "failures"}));
    EXPECT_EQ(write("mtd4", file, {"--header"}).exitCode, 0);
    EXPECT_EQ(jsonKeys(json({"mtd", "read", "mtd4", hostFile("copy"), "--header"}), ""),
              (Words{"device", "output", "size_bytes", "failures"}));
    EXPECT_EQ(jsonAt(json({"mtd", "erase", "mtd0", "--yes"}), ""),
              "{\"device\":\"/dev/mtd0\",\"erased_bytes\":65536,\"failures\":[]}");
}

TEST_F(MtdCommandsTest, ABadBlockUnderASecondFileIsFound) {
    markBad(12, 1);
    // The driver takes what goes into a bad block but cannot erase it, so the first file is good.
    EXPECT_EQ(write("mtd12", makeFile("zeros", std::string(300000, '\0'))).exitCode, 0);
    const std::string file = makeImage(300000, "data");
    const ProcessResult result = write("mtd12", file);
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("iodbg: /dev/mtd12 reads back differently: byte 0x20000 of the file, "
                              "at 0x20000 in /dev/mtd12, is 0x00 instead of 0x"),
              std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("; block 1 is bad; write again; blocks that do not take their data "
                              "need another partition"),
              std::string::npos)
        << result.err;
    EXPECT_EQ(write("mtd12", file, {"--header"}).exitCode, 3);
}

TEST_F(MtdCommandsTest, AWornPageIsFound) {
    spoil("mtd4", "program", "fails=EIO", "512");
    expectFailure({"mtd", "write", "mtd4", makeImage(2000, "data"), "--yes"}, 3,
                  {"byte 0x200 of the file, at 0x200 in /dev/mtd4, is 0xFF instead of"});
    clearFaults();
    spoil("mtd4", "erase", "fails=EIO");
    store(4, 256, std::string(256, '\0'));
    expectFailure({"mtd", "write", "mtd4", makeImage(2000, "data"), "--yes"}, 3,
                  {"byte 0x100 of the file, at 0x100 in /dev/mtd4, is 0x00 instead of 0x07"});
    expectFailure({"mtd", "erase", "mtd4", "--yes"}, 1, {"cannot erase /dev/mtd4: BSP_E_ERASE"});
}

TEST_F(MtdCommandsTest, AWornHeaderIsFound) {
    spoil("mtd14", "program", "fails=EIO", "0");
    expectFailure({"mtd", "write", "mtd14", makeImage(5000, "data"), "--yes", "--header"}, 3,
                  {"byte 0x0 of the header, at 0x0 in /dev/mtd14, is 0xFF instead of 0x00",
                   "2040 of 5008 bytes differ"});
}

TEST_F(MtdCommandsTest, APartitionThatEndsTooEarlyIsAFailure) {
    spoil("mtd4", "program", "fails=EIO");
    expectFailure({"mtd", "write", "mtd4", makeImage(2000, "data"), "--yes"}, 1,
                  {"cannot write all of ", "the library answered -1; byte 0x0 of the file",
                   "block 0 reads as erased"});
    clearFaults();
    spoil("mtd4", "program", "fails=EIO", "0", "1", "once");
    const std::string exact = makeImage(262144, "exact");
    expectFailure({"mtd", "write", "mtd4", exact, "--yes"}, 1, {"the library answered 256"});
}

TEST_F(MtdCommandsTest, DriverFailuresAreTold) {
    const std::string file = makeImage(2000, "data");
    addFault(openFails("/dev/mtd4", ENODEV));
    for (const Words &words :
         {Words{"mtd", "read", "mtd4", hostFile("x")}, Words{"mtd", "write", "mtd4", file, "--yes"},
          Words{"mtd", "erase", "mtd4", "--yes"}})
        expectFailure(words, 1, {"cannot open /dev/mtd4: No such device"});
    clearFaults();
    spoil("mtd4", "info", "fails=EIO");
    expectFailure({"mtd", "erase", "mtd4", "--yes"}, 1, {"cannot ask /dev/mtd4 for its sizes"});
    clearFaults();
    spoil("mtd4", "read", "fails=EIO", "1024");
    expectFailure({"mtd", "read", "mtd4", hostFile("x")}, 1, {"BSP_E_SHORT_READ"});
    expectFailure({"mtd", "write", "mtd4", file, "--yes"}, 1,
                  {"cannot read /dev/mtd4 at 0x0: Input/output error"});
}

TEST_F(MtdCommandsTest, AReadThatDiffersFromAnotherIsFound) {
    spoil("mtd4", "read", "corrupt=3:0x10", "0", "1", "once");
    expectFailure({"mtd", "read", "mtd4", hostFile("x")}, 3,
                  {"the copy differs from a second reading: byte 0x3 of the file, at 0x3 in "
                   "/dev/mtd4, is 0xFF instead of 0xEF, and 1 of 262144 bytes differ"});
}

TEST_F(MtdCommandsTest, AFullFileSystemIsNoticed) {
    const FileSizeLimit limit = limitFiles(100000);
    expectFailure({"mtd", "read", "mtd4", hostFile("x")}, 4, {" took 100000 of 262144 bytes"});
}

TEST_F(MtdCommandsTest, ReadKeepsFilesUnlessForced) {
    const std::string old = makeFile("old", "kept");
    expectRefusal({"mtd", "read", "mtd4", old}, 4, "exists; choose another name, or replace it");
    EXPECT_EQ(readFile(old), "kept");
    EXPECT_EQ(iodbg({"mtd", "read", "mtd4", old, "--force"}).exitCode, 0);
    EXPECT_EQ(readFile(old), std::string(262144, '\xFF'));
    expectRefusal({"mtd", "read", "mtd4", hostFile(""), "--force"}, 4, "is not a regular file");
}

TEST_F(MtdCommandsTest, EraseAndWriteAsk) {
    store(4, 0, "old");
    store(4, 65536, "next");
    const ProcessResult refused = iodbg({"mtd", "erase", "mtd4"}, "n\n");
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_EQ(refused.err, "The first block of /dev/mtd4, 65536 bytes, will be lost.\n"
                           "Erase it now? [y/N] \niodbg: not confirmed, nothing was done\n");
    EXPECT_EQ(stored(4, 0, 3), "old");
    const std::string file = makeFile("new", "new");
    const ProcessResult kept = iodbg({"mtd", "write", "mtd4", file});
    EXPECT_EQ(kept.exitCode, 2);
    EXPECT_EQ(kept.err.find("/dev/mtd4, 262144 bytes\n"
                            "  now  data, which will be lost\n"
                            "  new  " +
                            file + ", 3 bytes\nWrite it now? [y/N] "),
              0u)
        << kept.err;
    EXPECT_EQ(iodbg({"mtd", "write", "mtd4", file, "--dry-run"}).out.find("Device "), 0u);
    EXPECT_EQ(stored(4, 0, 3), "old");
    EXPECT_EQ(iodbg({"mtd", "erase", "mtd4"}, "y\n").out, "Device         /dev/mtd4\n"
                                                          "Erased, bytes  65536\n");
    EXPECT_EQ(stored(4, 0, 3), "\xFF\xFF\xFF");
    EXPECT_EQ(stored(4, 65536, 4), "next");
    EXPECT_EQ(iodbg({"mtd", "write", "mtd4", file}, "yes\n").exitCode, 0);
    EXPECT_EQ(stored(4, 0, 4), std::string("new\0", 4));
    EXPECT_EQ(stored(4, 65536, 4), "\xFF\xFF\xFF\xFF");
}

TEST_F(MtdCommandsTest, RefusesWordsThatAreNotRight) {
    const std::pair<const char *, const char *> cases[] = {
        {"mtd",
         "a command is missing: give one of list|info|read|write|erase; see 'iodbg mtd --help'"},
        {"mtd read", "DEVICE is required"},
        {"mtd read mtd4", "FILE is required"},
        {"mtd write mtd4", "FILE is required"},
        {"mtd erase", "DEVICE is required"},
        {"mtd erase mtd5 --yes", "'mtd5' is none of mtd0|mtd4|mtd12|mtd14, and no path"},
        {"mtd read mtd99 x", "'mtd99' is none of mtd0|mtd4|mtd12|mtd14"},
        {"mtd write mtd-1 x", "'mtd-1' is none of mtd0|mtd4|mtd12|mtd14"},
        {"mtd read mtd4 x y", "The following argument was not expected: y"},
        {"mtd read 4 x", "'4' is none of mtd0|mtd4|mtd12|mtd14"},
        {"mtd erase mtd4 --header", "not expected"},
    };
    for (const auto &[line, text] : cases)
        expectRefusal(wordsOf(line), 2, text);
    expectRefusal({"mtd", "write", "mtd4", hostFile("none"), "--yes"}, 4,
                  "No such file or directory");
    expectRefusal({"mtd", "write", "mtd4", makeFile("empty", ""), "--yes"}, 4, "is empty");
    expectRefusal({"mtd", "write", "mtd4", "/tmp", "--yes"}, 4, "is not a regular file");
    expectRefusal({"mtd", "write", "mtd4", "/dev/null", "--yes"}, 4, "is not a regular file");
    expectRefusal({"mtd", "write", "mtd4", "", "--yes"}, 2, "FILE: '' is not the name of a file");
    expectUnreadable({"mtd", "write", "mtd4", kUnreadable, "--yes"});
    expectRefusal({"mtd", "write", "/dev/mtd13", makeFile("x", "x"), "--yes"}, 1,
                  "cannot open /dev/mtd13");
    expectRefusal({"mtd", "read", "mtd4", ""}, 2, "FILE: '' is not the name of a file");
    expectRefusal({"mtd", "read", "mtd4", "/none/x"}, 4,
                  "cannot write /none/x: No such file or directory; choose a folder that can be "
                  "written and has space");
    expectRefusal({"mtd", "read", "/dev/mtd13", hostFile("x")}, 1, "cannot open /dev/mtd13");
    expectRefusal({"mtd", "read", makeFile("plain", "x"), hostFile("x")}, 1, "for its sizes");
    expectRefusal({"mtd", "read", "", hostFile("x")}, 2, "'' is none of mtd0|mtd4|mtd12|mtd14");
    expectRefusal({"mtd", "erase", "/dev/none", "--yes"}, 1, "cannot open /dev/none");
    expectRefusal({"mtd", "erase", makeFile("plain", "x"), "--yes"}, 1, "for its sizes");
}

} // namespace
