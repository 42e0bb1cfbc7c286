// iodbg eeprom.

#include "tests/iodbg/iodbg_test.h"

#include <cerrno>
#include <filesystem>

namespace {

using vb::FaultDevice;
using vb::FaultOp;
using EepromCommandsTest = IodbgTest;

TEST_F(EepromCommandsTest, DumpsForPeople) {
    const ProcessResult result = iodbg({"eeprom", "dump", "--offset", "0x13E", "--length", "18"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out,
              "0x013E  00 00 56 42 30 30 30 30 30 30 30 31 00 00 00 00  |..VB00000001....|\n"
              "0x014E  00 00                                            |..|\n");
}

TEST_F(EepromCommandsTest, DumpsForPrograms) {
    const std::string answer =
        json({"eeprom", "dump", "--device", "supply1", "--offset", "0xB0", "--length", "2"});
    EXPECT_EQ(jsonAt(answer, ""), "{\"device\":\"supply1\",\"offset_bytes\":176,"
                                  "\"length_bytes\":2,\"data_hex\":\"4143\",\"failures\":[]}");
}

TEST_F(EepromCommandsTest, DumpsUpToTheEnd) {
    EXPECT_EQ(jsonAt(json({"eeprom", "dump"}), "/length_bytes"), "1024");
    EXPECT_EQ(jsonAt(json({"eeprom", "dump", "--offset", "1000"}), "/length_bytes"), "24");
    EXPECT_EQ(jsonAt(json({"eeprom", "dump", "--device", "supply2"}), "/length_bytes"), "256");
}

TEST_F(EepromCommandsTest, SavesADumpInAFile) {
    const std::string file = makeFile("dump", "what was there before");
    const std::string answer = json({"eeprom", "dump", "--output", file, "--force"});
    EXPECT_EQ(jsonAt(answer, "/output"), "\"" + file + "\"");
    const auto *bytes = reinterpret_cast<const char *>(devices().eeprom.bytes);
    EXPECT_EQ(readFile(file), std::string(bytes, 1024));
    EXPECT_EQ(std::filesystem::status(file).permissions() & std::filesystem::perms(0444),
              std::filesystem::perms(0444));
}

TEST_F(EepromCommandsTest, AFileThatCannotBeWrittenWholeStaysAsItWas) {
    const std::string file = makeFile("dump", "what was there before");
    {
        const FileSizeLimit limit = limitFiles(512);
        expectFailure({"eeprom", "dump", "--output", file, "--force"}, 4,
                      {"cannot write " + file, "File too large"});
    }
    EXPECT_EQ(readFile(file), "what was there before");
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1)
        << "a temporary file stayed behind";

    expectRefusal({"eeprom", "dump", "--output", hostFile("none/dump")}, 4,
                  "cannot write " + hostFile("none/dump") + ": No such file");
    expectRefusal({"eeprom", "dump", "--output", "/dev/null"}, 4, "is not a regular file");
}

TEST_F(EepromCommandsTest, AFailedReadGivesNoFile) {
    addFault(refuse(FaultDevice::I2c, FaultOp::Read, -EIO, 20));
    expectFailure({"eeprom", "dump", "--output", hostFile("dump")}, 1,
                  {"cannot read the EEPROM of the board: BSP_E_FAILED (-1)"});
    EXPECT_FALSE(std::filesystem::exists(hostFile("dump")));
}

TEST_F(EepromCommandsTest, AnUnpluggedSupplyFails) {
    devices().supply[0].isPresent = 0;
    expectFailure({"eeprom", "dump", "--device", "supply1"}, 1, {"the EEPROM of supply 1"});
    EXPECT_EQ(jsonAt(json({"eeprom", "dump", "--device", "supply1"}, 1), "/error/status_name"),
              "\"BSP_E_FAILED\"");
}

TEST_F(EepromCommandsTest, WritesAndReadsBack) {
    const ProcessResult result = iodbg({"eeprom", "write", "14", "01 02"});
    EXPECT_EQ(result.exitCode, 2) << "bytes are given in one word";
    EXPECT_EQ(iodbg({"eeprom", "write", "14", "0x01020304"}).out,
              "the EEPROM of the board: written and read back\n"
              "ITEM    BEFORE    AFTER\n"
              "0x000E  FFFFFFFF  01020304\n");
    const uint8_t *bytes = devices().eeprom.bytes + 14;
    EXPECT_EQ(std::vector<uint8_t>(bytes, bytes + 5),
              (std::vector<uint8_t>{0x01, 0x02, 0x03, 0x04, 0xFF}));
}

TEST_F(EepromCommandsTest, WritesAFileToASupply) {
    const std::string file = makeFile("bytes", "hello");
    EXPECT_EQ(iodbg({"eeprom", "write", "--device", "supply2", "3", "--file", file}).exitCode, 0);
    const auto *bytes = reinterpret_cast<const char *>(devices().supply[1].eeprom.bytes);
    EXPECT_EQ(std::string(bytes + 3, 5), "hello");
}

TEST_F(EepromCommandsTest, ADryRunChangesNothing) {
    const BoardContent before = content();
    const ProcessResult result = iodbg({"eeprom", "write", "0", "AA", "--dry-run"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.out.find("0x0000  FF      AA\n"), std::string::npos) << result.out;
    EXPECT_TRUE(content() == before);
}

TEST_F(EepromCommandsTest, ASpoiledWriteIsDetected) {
    addFault(corrupt(FaultDevice::I2c, FaultOp::Write, 1));
    expectFailure({"eeprom", "write", "0", "101112"}, 3,
                  {"byte 1 of what was written is 0x10 instead of 0x11"});
}

TEST_F(EepromCommandsTest, AFailedWriteIsReported) {
    addFault(refuse(FaultDevice::I2c, FaultOp::Write, -EIO));
    expectFailure({"eeprom", "write", "0", "10"}, 1,
                  {"cannot write the EEPROM of the board", "half written"});
}

TEST_F(EepromCommandsTest, RefusesWrongWords) {
    expectRefusal({"eeprom", "dump", "--offset", "1024"}, 2, "choose a smaller span");
    expectRefusal({"eeprom", "dump", "--offset", "1", "--length", "1024"}, 2, "smaller span");
    expectRefusal({"eeprom", "dump", "--offset", "0xFFFFFFFF", "--length", "2"}, 2, "smaller span");
    expectRefusal({"eeprom", "dump", "--length", "0"}, 2, "smaller span");
    expectRefusal({"eeprom", "dump", "--device", "supply1", "--offset", "256"}, 2, "smaller span");
    expectRefusal({"eeprom", "dump", "--offset", "-1"}, 2, "is not a number");
    expectRefusal({"eeprom", "dump", "--length", "ten"}, 2, "is not a number");
    expectRefusal({"eeprom", "dump", "--device", "flash"}, 2, "none of board|supply1|supply2");
    expectRefusal({"eeprom", "dump", "--output", ""}, 2, "is not the name of a file");
    expectRefusal({"eeprom", "write", "0", "--file", ""}, 2, "is not the name of a file");
    expectRefusal({"eeprom", "write", "0x", "10"}, 2, "is not a number");
    expectRefusal({"eeprom", "write", "0", "101"}, 2, "two hexadecimal digits for each");
    expectRefusal({"eeprom", "write", "0", "1g"}, 2, "other characters");
    expectRefusal({"eeprom", "write", "0"}, 2, "either as HEX or with --file");
    expectRefusal({"eeprom", "write", "0", "10", "--file", "x"}, 2, "either as HEX");
    expectRefusal({"eeprom", "write", "1023", "1011"}, 2, "smaller span");
    expectRefusal({"eeprom", "write", "1024", "10"}, 2, "smaller span");
}

TEST_F(EepromCommandsTest, RefusesWrongFiles) {
    const auto refused = [&](const std::string &path, const std::string &text) {
        expectRefusal({"eeprom", "write", "0", "--file", path}, 4, text);
    };
    refused(makeFile("file", ""), "is empty");
    refused(makeFile("file", std::string(1025, 'x')), "is longer than 1024 bytes");
    refused(hostFile("none"), "No such file");
}

} // namespace
