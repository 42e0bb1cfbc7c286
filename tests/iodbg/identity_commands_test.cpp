// iodbg identity.

#include "tests/iodbg/iodbg_test.h"
#include "tests/support/patterns.h"

#include <cerrno>
#include <cstring>

namespace {

using vb::FaultDevice;
using vb::FaultOp;
using IdentityCommandsTest = IodbgTest;

constexpr size_t kRecordSize = 128;

Words with(Words words, const Words &more) {
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

std::string copyOf(const uint8_t *bytes, size_t size) {
    return {reinterpret_cast<const char *>(bytes), size};
}

TEST_F(IdentityCommandsTest, GetsSingleItems) {
    EXPECT_EQ(iodbg({"identity", "get", "serial"}).out, "Serial number  VB00000001\n");
    EXPECT_EQ(iodbg({"identity", "get", "mac"}).out,
              "Base MAC (stored)                02:00:5E:10:00:00\n"
              "Board MAC (base, last byte + 1)  02:00:5E:10:00:01\n");
    EXPECT_EQ(iodbg({"identity", "get", "serial", "--index", "supply2"}).out,
              "Serial number  PSU0000002\n");
}

TEST_F(IdentityCommandsTest, GetsEverythingForPrograms) {
    const std::string answer = json({"identity", "get"});
    EXPECT_EQ(jsonKeys(answer, ""),
              (Words{"serial_number", "base_mac", "board_mac", "record", "failures"}));
    EXPECT_EQ(jsonKeys(answer, "/record"),
              (Words{"magic_ok", "crc_ok", "crc_stored", "crc_computed", "magic", "product_name",
                     "serial_number", "base_mac", "supply_count", "supply_types_hex",
                     "product_data_1_hex", "product_data_2_hex", "product_data_3_hex",
                     "reserved_1_hex", "reserved_2_hex", "crc_hex"}));
    EXPECT_EQ(jsonAt(answer, "/record/product_name"), "\"SWITCH-0709\"");
    EXPECT_EQ(jsonAt(answer, "/record/supply_count"), "2");
    EXPECT_EQ(jsonAt(answer, "/record/crc_hex"), "\"2F346F7C\"");
    EXPECT_EQ(jsonKeys(json({"identity", "get", "--index", "supply1"}), "/record"),
              (Words{"product_name", "serial_number", "product_data_1_hex", "product_data_2_hex",
                     "product_data_3_hex"}));
}

TEST_F(IdentityCommandsTest, TheBoardsMacDoesNotCarry) {
    EXPECT_EQ(iodbg({"identity", "set", "mac", "00:11:22:33:44:ff"}).exitCode, 0);
    const std::string answer = json({"identity", "get", "mac"});
    EXPECT_EQ(jsonAt(answer, "/base_mac"), "\"00:11:22:33:44:FF\"");
    EXPECT_EQ(jsonAt(answer, "/board_mac"), "\"00:11:22:33:44:00\"");
}

TEST_F(IdentityCommandsTest, SetsTheSerialNumber) {
    const std::string answer = json({"identity", "set", "serial", "NEW-42"});
    EXPECT_EQ(jsonAt(answer, "/dry_run"), "false");
    EXPECT_EQ(jsonAt(answer, "/changed"), "true");
    EXPECT_EQ(jsonAt(answer, "/changes/0"),
              "{\"item\":\"serial_number\",\"before\":\"VB00000001\",\"after\":\"NEW-42\"}");
    EXPECT_EQ(copyOf(record() + 64, 32), std::string("NEW-42") + std::string(26, '\0'));
    EXPECT_EQ(jsonAt(json({"identity", "get"}), "/record/crc_ok"), "true");
}

TEST_F(IdentityCommandsTest, ADryRunShowsTheChangeAndMakesNone) {
    const std::string file = makeFile("record", copyOf(record(), kRecordSize));
    EXPECT_EQ(iodbg({"identity", "set", "serial", "OTHER"}).exitCode, 0);
    const BoardContent before = content();
    for (const Words &command : {Words{"identity", "set", "serial", "X"},
                                 Words{"identity", "set", "mac", "00:11:22:33:44:55"},
                                 Words{"identity", "set", "record", "--file", file}}) {
        Words words = command;
        words.emplace_back("--dry-run");
        const ProcessResult result = iodbg(words);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_NE(result.out.find("the record of the board: dry run, nothing was changed\n"),
                  std::string::npos);
        EXPECT_NE(result.out.find("\ncrc_hex"), std::string::npos);
        EXPECT_EQ(jsonAt(json(words), "/changed"), "false");
        EXPECT_TRUE(content() == before);
    }
}

TEST_F(IdentityCommandsTest, WhatIsStoredAlreadyIsNotWrittenAgain) {
    addFault(refuse(FaultDevice::I2c, FaultOp::Write, -EIO));
    const ProcessResult result = iodbg({"identity", "set", "serial", "VB00000001"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "the record of the board: nothing to change\n");
}

TEST_F(IdentityCommandsTest, ARecordTravelsThroughAFile) {
    const std::string stored = copyOf(record(), kRecordSize);
    const std::string file = hostFile("record");
    EXPECT_EQ(iodbg({"identity", "get", "record", "--output", file}).exitCode, 0);
    EXPECT_EQ(readFile(file), stored);

    std::memset(record(), 0xFF, kRecordSize);
    const ProcessResult result = iodbg({"identity", "set", "record", "--file", file});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(copyOf(record(), kRecordSize), stored);
}

TEST_F(IdentityCommandsTest, ASuppliesRecordTravelsThroughAFile) {
    const std::string stored = copyOf(supplyRecord(2), 80);
    const std::string file = hostFile("record");
    const Words get = {"identity", "get", "record", "--index", "supply2", "--output", file};
    EXPECT_EQ(iodbg(get).exitCode, 0);
    EXPECT_EQ(readFile(file).size(), kRecordSize);

    std::memset(supplyRecord(2), 0xFF, 80);
    const Words set = {"identity", "set", "record", "--index", "supply2", "--file", file};
    const std::string answer = json(set);
    EXPECT_EQ(copyOf(supplyRecord(2), 80), stored);
    EXPECT_NE(answer.find("\"item\": \"unused_hex\""), std::string::npos)
        << "the bytes that a write clears are not shown";
}

TEST_F(IdentityCommandsTest, ADamagedRecordCanOnlyBeReplaced) {
    record()[100] ^= 0x01;
    const BoardContent before = content();
    for (const Words &command : {Words{"identity", "set", "serial", "X"},
                                 Words{"identity", "set", "mac", "00:11:22:33:44:55"}})
        expectFailure(command, 1, {"BSP_E_INVALID (1002)", "identity set record --file"});
    EXPECT_TRUE(content() == before);

    const std::string file = hostFile("damaged");
    EXPECT_EQ(iodbg({"identity", "get", "record", "--output", file}).exitCode, 1);
    EXPECT_EQ(readFile(file), copyOf(record(), kRecordSize)) << "the evidence must be savable";

    record()[3] = 'x';
    expectFailure({"identity", "set", "serial", "X"}, 1, {"BSP_E_NO_RECORD (1017)"});
}

TEST_F(IdentityCommandsTest, ASpoiledWriteIsDetectedAndCanBeRepaired) {
    const std::string file = makeFile("record", copyOf(record(), kRecordSize));
    EXPECT_EQ(iodbg({"identity", "set", "serial", "OLD"}).exitCode, 0);
    const std::string stored = copyOf(record(), kRecordSize);
    for (const Words &command : {Words{"identity", "set", "serial", "NEW-1"},
                                 Words{"identity", "set", "mac", "00:11:22:33:44:55"},
                                 Words{"identity", "set", "record", "--file", file}}) {
        // In the fifth page lies the serial number, in the first one the magic.
        for (const uint32_t page : {5u, 1u}) {
            clearFaults();
            std::memcpy(record(), stored.data(), stored.size());
            addFault(corrupt(FaultDevice::I2c, FaultOp::Write, 2, page));
            const ProcessResult result = iodbg(command);
            EXPECT_EQ(result.exitCode, 3) << result.err;
            const std::string mark = "iodbg eeprom write 256 ";
            const size_t at = result.err.find(mark);
            ASSERT_NE(at, std::string::npos) << result.err;
            const std::string bytes = result.err.substr(at + mark.size(), 2 * kRecordSize);
            EXPECT_EQ(iodbg({"eeprom", "write", "256", bytes}).exitCode, 0);
            EXPECT_EQ(jsonAt(json({"identity", "get"}), "/record/crc_ok"), "true");
        }
    }
}

TEST_F(IdentityCommandsTest, ASpoiledWriteToASupplyIsDetected) {
    const std::string file = hostFile("record");
    EXPECT_EQ(iodbg({"identity", "get", "record", "--index", "supply1", "--output", file}).exitCode,
              0);
    supplyRecord(1)[0] = 'X';
    addFault(corrupt(FaultDevice::I2c, FaultOp::Write, 0, 4));
    expectFailure({"identity", "set", "record", "--index", "supply1", "--file", file}, 3,
                  {"the record of supply 1 reads back differently", "run the command again"});
}

TEST_F(IdentityCommandsTest, FailuresOfTheBoardAreExplained) {
    addFault(refuse(FaultDevice::I2c, FaultOp::Write, -EIO, 3));
    expectFailure({"identity", "set", "serial", "X"}, 1,
                  {"cannot write the record of the board: BSP_E_FAILED (-1)",
                   "half written: store the whole record with: iodbg eeprom write 256 44455649"});
}

TEST_F(IdentityCommandsTest, AReadBackThatFailsIsReported) {
    // Eight reads by iodbg, eight by the setter, then those that verify.
    addFault(refuse(FaultDevice::I2c, FaultOp::Read, -EIO, 17));
    expectFailure({"identity", "set", "serial", "X"}, 1,
                  {"cannot read back the record of the board: BSP_E_FAILED (-1)"});
}

TEST_F(IdentityCommandsTest, AnUnreadableRecordIsReported) {
    addFault(silence(FaultDevice::I2c, FaultOp::Read));
    expectFailure({"identity", "get", "record"}, 1, {"BSP_E_FAILED (-1)"});
    expectFailure({"identity", "set", "serial", "X"}, 1, {"BSP_E_FAILED (-1)"});
    EXPECT_EQ(jsonAt(json({"identity", "get", "serial"}, 1), "/serial_number"), "null");
}

TEST_F(IdentityCommandsTest, AModelWithoutSupplyRecordsSaysSo) {
    useModel(0x0309);
    expectFailure({"identity", "get", "--index", "supply1"}, 1, {"BSP_E_NOT_SUPPORTED (1000)"});
    const std::string file = makeFile("zeros", std::string(kRecordSize, '\0'));
    expectFailure({"identity", "set", "record", "--index", "supply1", "--file", file}, 1,
                  {"BSP_E_NOT_SUPPORTED (1000)"});
}

TEST_F(IdentityCommandsTest, RefusesWrongWords) {
    const Words longest = {"identity", "set", "serial", std::string(32, 'A')};
    expectRefusal(longest, 2, "1 to 31 printable");
    expectRefusal({"identity", "set", "serial", ""}, 2, "1 to 31 printable");
    expectRefusal({"identity", "set", "serial", "caf\xC3\xA9"}, 2, "1 to 31 printable");
    expectRefusal({"identity", "set", "serial"}, 2, "TEXT is required");
    for (const char *mac : {"00:11:22:33:44", "00:11:22:33:44:5", "00:11:22:33:44:5G",
                            "00-11-22-33-44-55", "001122334455", "00:11:22:33:44:55:66", ""})
        expectRefusal({"identity", "set", "mac", mac}, 2, "is not a MAC address");
    expectRefusal({"identity", "get", "colour"}, 2, "none of serial|mac|record");
    expectRefusal({"identity", "get", "--index", "supply3"}, 2, "none of board|supply1|supply2");
    expectRefusal({"identity", "get", "mac", "--index", "supply1"}, 2, "has no MAC address");
    expectRefusal({"identity", "get", "serial", "--output", "x"}, 2, "--output saves a record");
    expectRefusal({"identity", "set", "record"}, 2, "--file is required");
    expectRefusal({"identity", "set"}, 2, "a command is missing: give one of serial|mac|record");
}

TEST_F(IdentityCommandsTest, TheLongestSerialNumberFits) {
    const std::string longest(31, 'A');
    EXPECT_EQ(iodbg({"identity", "set", "serial", longest}).exitCode, 0);
    EXPECT_EQ(iodbg({"identity", "get", "serial"}).out, "Serial number  " + longest + "\n");
}

TEST_F(IdentityCommandsTest, RefusesWrongFiles) {
    const std::string good = copyOf(record(), kRecordSize);
    const auto refused = [&](const std::string &bytes, const std::string &text) {
        expectRefusal({"identity", "set", "record", "--file", makeFile("file", bytes)}, 4, text);
    };
    refused(good.substr(0, 127), "has 127 bytes; a record has 128");
    refused(good + "x", "has 129 bytes; a record has 128");
    refused("", "has 0 bytes");
    refused(std::string(kRecordSize, '\0'), "does not begin with DEVINFO");
    std::string edited = good;
    edited[64] = 'X';
    refused(edited, "does not match its own CRC");
    expectRefusal({"identity", "set", "record", "--file", hostFile("none")}, 4,
                  "cannot open " + hostFile("none") + ": No such file");
    expectRefusal({"identity", "set", "record", "--file", "/"}, 4, "cannot read /: ");
    expectRefusal(
        {"identity", "set", "record", "--index", "supply1", "--file", makeFile("file", good)}, 4,
        "has data at byte 0, where a supply's record has none");

    const Words renewed = {"identity",    "set",    "record",
                           "--renew-crc", "--file", makeFile("file", edited)};
    EXPECT_EQ(iodbg(renewed).exitCode, 0);
    EXPECT_EQ(iodbg({"identity", "get", "serial"}).out, "Serial number  XB00000001\n");
}

/** An EEPROM as it comes from its maker. */
void blank(vb::Eeprom &eeprom) {
    std::memset(eeprom.bytes, 0xFF, sizeof(eeprom.bytes));
}

TEST_F(IdentityCommandsTest, ABlankUnitGetsItsRecord) {
    blank(devices().eeprom);
    const Words make = {"identity",       "new",      "--serial",
                        "SN-0042",        "--mac",    "02:00:5E:10:00:40",
                        "--product-name", "SWITCH 48"};
    const Words store = with(make, {"--store"});
    EXPECT_EQ(jsonAt(json(with(store, {"--dry-run"})), "/changed"), "false");
    EXPECT_EQ(record()[0], 0xFF);
    const ProcessResult stored = iodbg(store);
    EXPECT_EQ(stored.exitCode, 0) << stored.err;
    EXPECT_EQ(replaced(stored.out, "  +", "|").substr(0, 198),
              "the record of the board: written and read back\n"
              "ITEM|BEFORE|AFTER\n"
              "magic|erased|DEVINFO\n"
              "product_name|erased|SWITCH 48\n"
              "serial_number|erased|SN-0042\n"
              "base_mac|erased|02:00:5E:10:00:40\n"
              "supply_count|255|2\n");
    const std::string answer = json({"identity", "get"});
    EXPECT_EQ(jsonAt(answer, "/serial_number"), "\"SN-0042\"");
    EXPECT_EQ(jsonAt(answer, "/board_mac"), "\"02:00:5E:10:00:41\"");
    EXPECT_EQ(jsonAt(answer, "/record/crc_ok"), "true");
    EXPECT_EQ(jsonAt(answer, "/record/product_name"), "\"SWITCH 48\"");
    EXPECT_EQ(jsonAt(answer, "/record/supply_count"), "2");
    EXPECT_EQ(jsonAt(answer, "/record/supply_types_hex"), "\"010100000000\"");
    EXPECT_EQ(jsonAt(answer, "/record/product_data_1_hex"), "\"" + std::string(32, '0') + "\"");
    expectRefusal(store, 2, "the board has a record, which would be lost");
    EXPECT_EQ(iodbg(with(store, {"--force"})).out, "the record of the board: nothing to change\n");
}

TEST_F(IdentityCommandsTest, ADamagedRecordIsNotTakenForNone) {
    const Words store = {"identity",          "new",    "--serial", "SN-0042", "--mac",
                         "02:00:5E:10:00:40", "--store"};
    record()[100] ^= 0x01;
    const BoardContent before = content();
    expectRefusal(store, 2, "the board has a damaged record, which would be lost");
    record()[3] = 'x';
    expectRefusal(store, 2, "the board has a damaged record, which would be lost");
    record()[3] = 'I';
    EXPECT_TRUE(content() == before);
    EXPECT_EQ(iodbg(with(store, {"--force"})).exitCode, 0);
}

TEST_F(IdentityCommandsTest, EveryFieldOfANewRecordCanBeGiven) {
    blank(devices().eeprom);
    const std::string file = hostFile("new.rec");
    ASSERT_EQ(iodbg({"identity",
                     "new",
                     "--serial",
                     "S",
                     "--mac",
                     "02:00:5E:10:00:40",
                     "--supply-count",
                     "1",
                     "--supply-types",
                     "02",
                     "--product-data-1",
                     "0A0B",
                     "--product-data-3",
                     "11223344",
                     "--reserved-1",
                     "5566",
                     "--reserved-2",
                     "77",
                     "--output",
                     file})
                  .exitCode,
              0);
    std::string bytes(128, '\0');
    bytes.replace(0, 7, "DEVINFO");
    bytes.replace(8, 2, "\x55\x66");
    bytes.replace(10, 6, std::string("\x02\x00\x5E\x10\x00\x40", 6));
    bytes.replace(16, 2, "\x0A\x0B");
    bytes.replace(64, 1, "S");
    bytes.replace(96, 2, "\x01\x02");
    bytes.replace(103, 5, "\x11\x22\x33\x44\x77");
    EXPECT_EQ(readFile(file).substr(0, 124), bytes.substr(0, 124));
    EXPECT_EQ(iodbg({"identity", "set", "record", "--file", file}).exitCode, 0)
        << "its CRC is right";
    const Words supply = {"identity", "new", "--index", "supply1", "--serial", "PS-1", "--store"};
    expectRefusal(supply, 2, "supply 1 has a record, which would be lost");
    EXPECT_EQ(iodbg(with(supply, {"--force"})).exitCode, 0);
    EXPECT_EQ(iodbg({"identity", "get", "serial", "--index", "supply1"}).out,
              "Serial number  PS-1\n");
}

TEST_F(IdentityCommandsTest, ANewRecordIsChecked) {
    const Words make = {"identity", "new", "--output", hostFile("none")};
    const struct {
        Words words;
        const char *text;
    } cases[] = {
        {{"--serial", "S"}, "--mac is required: every unit has its own"},
        {{"--mac", "02:00:5E:10:00:40"}, "--serial is required"},
        {{"--serial", "S", "--mac", "01:00:5E:10:00:40"}, "is a group's address"},
        {{"--serial", "S", "--mac", "00:00:00:00:00:00"}, "the MAC address is all zeros"},
        {{"--serial", "A B", "--mac", "02:00:5E:10:00:40"}, "without spaces"},
        {{"--serial", "", "--mac", "02:00:5E:10:00:40"}, "without spaces"},
        {{"--serial", std::string(32, 'S'), "--mac", "02:00:5E:10:00:40"},
         "the serial number has more than 31 characters"},
        {{"--serial", "S", "--index", "supply1", "--mac", "02:00:5E:10:00:40"},
         "--mac: the record of supply 1 has no such field"},
        {{"--serial", std::string(25, 'S'), "--index", "supply1"},
         "is not up to 24 printable ASCII characters"},
        {{"--serial", "S", "--store"}, "say where the record goes"},
        {{"--serial", "S", "--dry-run"}, "--dry-run goes with --store"},
    };
    for (const auto &[words, text] : cases)
        expectRefusal(with(make, words), 2, text);
    expectRefusal({"identity", "new", "--serial", "S"}, 2, "say where the record goes");
    expectRefusal({"identity", "new", "--serial", "S", "--store", "--format", "json"}, 2,
                  "--format is that of a file");
}

TEST_F(IdentityCommandsTest, ARecordGoesRoundAsJson) {
    const std::string file = hostFile("board.json");
    ASSERT_EQ(iodbg({"identity", "get", "record", "--output", file, "--format", "json"}).exitCode,
              0);
    const std::string text = readFile(file);
    EXPECT_EQ(jsonKeys(text, ""),
              (Words{"format", "version", "of", "product_name", "serial_number", "base_mac",
                     "supply_count", "supply_types_hex", "product_data_1_hex", "product_data_3_hex",
                     "reserved_1_hex", "reserved_2_hex", "crc_hex"}));
    const Words set = {"identity", "set", "record", "--file"};
    EXPECT_EQ(iodbg(with(set, {file})).out, "the record of the board: nothing to change\n");
    const std::string edited = replaced(text, "VB00000001", "EDITED-1");
    expectFailure(with(set, {makeFile("edited", edited)}), 4, {"does not match its own CRC"});
    const std::string bare = replaced(edited, ",\n  \"crc_hex\": \"[0-9A-F]*\"", "");
    EXPECT_EQ(iodbg(with(set, {makeFile("bare", bare)})).exitCode, 0) << "no CRC: the right one";
    EXPECT_EQ(iodbg({"identity", "get", "serial"}).out, "Serial number  EDITED-1\n");
    record()[64] = 0x80; // no text any more
    record()[96] = 0xFF; // supplies that no unit has
    record()[33] = 0x01;
    const std::string odd =
        iodbg({"identity", "get", "record", "--output", "-", "--format", "json"}).out;
    EXPECT_EQ(jsonAt(odd, "/serial_number_hex").substr(0, 5), "\"8044");
    EXPECT_EQ(jsonKeys(odd, "").at(3), "product_data_2_hex");
    const std::string before(reinterpret_cast<const char *>(record()), 128);
    record()[70] = 0;
    EXPECT_EQ(iodbg(with(set, {"-", "--renew-crc"}), odd).exitCode, 0);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(record()), 124), before.substr(0, 124));
}

TEST_F(IdentityCommandsTest, ASpoiledJsonRecordIsRefused) {
    const std::string text =
        iodbg({"identity", "get", "record", "--output", "-", "--format", "json"}).out;
    const struct {
        const char *pattern, *with, *message;
    } cases[] = {
        {"\\}", "", "is no JSON; give a file of"},
        {"product-record", "other", "\"format\" is not \"product-record\""},
        {"\"version\": 1", "\"version\": 2", "\"version\" is not 1; take the iodbg that made it"},
        {"\"board\"", "\"supply1\"", "\"of\" is not \"board\"; see --index"},
        {"serial_number", "colour", "'colour' is no field of the record of the board"},
        {"\"supply_count\": 2", "\"supply_count\": 256",
         "supply_count: '256' is not a number from 0 to 255"},
        {"\"supply_count\": 2", "\"supply_count\": true", "is neither a text nor a number"},
        {"\"supply_count\": 2,", "", "there is no supply_count"},
        {"\"supply_count\": 2", "\"serial_number_hex\": \"41\"", "are given twice"},
        {"\"02:00", "\"02", "is not a MAC address"},
    };
    for (const auto &[pattern, with, message] : cases)
        expectRefusal({"identity", "set", "record", "--file",
                       makeFile("spoiled", replaced(text, pattern, with))},
                      4, message);
}

} // namespace
