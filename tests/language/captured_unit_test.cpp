// The document of a captured unit: its table, what is written, what is read, what is refused.

#include "language/captured_unit.h"

#include "language/captured_properties.h"
#include "language/captured_unit_privacy.h"
#include "language/formats/product_record.h"
#include "language/property_names.h"
#include "language/property_values.h"
#include "language/refused.h"

#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace {

using namespace language;

// The table

TEST(CapturedPropertiesTest, EachRowIsWhole) {
    std::set<std::pair<std::string, uint32_t>> names;
    for (const CapturedProperty &row : capturedProperties()) {
        SCOPED_TRACE(row.name);
        EXPECT_TRUE(names.insert({row.name, row.firstNumber}).second);
        EXPECT_NE(std::string(row.sentence), "");
        EXPECT_NE(std::string(row.sentence).back(), '.');
        EXPECT_EQ(row.type == Type::Word, row.type == Type::Word && *row.words != '\0');
        const bool hasTolerance = row.tolerance != 0 || row.percent != 0;
        EXPECT_EQ(hasTolerance, row.compared == Compared::Measured);
        if (hasTolerance) {
            EXPECT_EQ(row.type, Type::Number);
        }
        EXPECT_LE(row.liveFrom, row.liveBehind);
    }
}

TEST(CapturedPropertiesTest, NamesThatBoardsHaveMeanTheSame) {
    size_t shared = 0;
    for (const CapturedProperty &row : capturedProperties()) {
        SCOPED_TRACE(row.name);
        std::string name = row.name;
        for (size_t place = name.find('#'); place != std::string::npos; place = name.find('#'))
            name.replace(place, 1, "1");
        const Property *property = rowOf(name);
        EXPECT_EQ(property != nullptr, row.isCommon);
        if (property == nullptr)
            continue;
        ++shared;
        EXPECT_STREQ(property->name, row.name);
        EXPECT_EQ(property->type, row.type);
        EXPECT_STREQ(property->unit, row.unit);
        EXPECT_STREQ(property->words, row.words);
        EXPECT_EQ(property->subject, row.subject);
    }
    EXPECT_GT(shared, 25U);
}

TEST(CapturedPropertiesTest, NamesAreFoundWithTheirNumbers) {
    const auto phy = capturedName("sfp.49.phy.27");
    ASSERT_TRUE(phy.has_value());
    EXPECT_STREQ(phy->row->name, "sfp.#.phy.#");
    EXPECT_EQ(phy->numbers, (std::vector<uint32_t>{49, 27}));
    EXPECT_EQ(capturedName(*phy->row, phy->numbers), "sfp.49.phy.27");
    EXPECT_EQ(capturedName("cpld.27")->row->compared, Compared::State);
    EXPECT_EQ(capturedName("cpld.28")->row->compared, Compared::Raw);
    EXPECT_EQ(capturedName("cpld.30")->row->compared, Compared::State);
    for (const char *name : {"", "fan", "fan.1", "fan.01.speed", "fan.0x1.speed", "fan.#.speed",
                             "fan.1.speed.", "fan.-1.speed", "eeprom.supply", "sfp.1.phy"})
        EXPECT_FALSE(capturedName(name).has_value()) << name;
}

// The document

CapturedUnit someUnit() {
    CapturedUnit unit;
    unit.capture = {"iodbg 1.1.0",
                    "1.1.0",
                    "Linux 6.1.0 mips",
                    "2026-11-22T22:40:00Z",
                    12345,
                    true,
                    false,
                    false,
                    {{"gpio.0", "the watchdog's"}}};
    unit.properties = {
        {"poe.10.limit", int64_t{90000}, Bytes{0x48, 9}},
        {"fan.1.speed", CapturedFailure{-6, "", "an answer of the kernel module"}},
        {"poe.2.limit", int64_t{30000}},
        {"model", "0x0709"},
        {"later.thing", "kept"},
        {"flash.4.content", CapturedRuns{{0, {1, 2}}, {256, {0xFF}}}},
        {"temperature.sensor", CapturedFailure{1011, "BSP_E_SHORT_READ", "said \"so\""}},
        {"boot.block", "00ff"},
    };
    unit.findings = {
        {"fan 1", "fault", "stands still", "replace it", "fan-stands-still", "fan", 1, {}},
        {"clock",
         "not-judged",
         "hangs on the bus",
         {},
         "not-judged",
         "clock",
         {},
         "i2c-bus-no-answer"}};
    return unit;
}

constexpr char kSomeDocument[] = R"({
  "format": "captured-unit",
  "version": 1,
  "revision": 0,
  "capture": {
    "tool": "iodbg 1.1.0",
    "library": "1.1.0",
    "kernel": "Linux 6.1.0 mips",
    "began": "2026-11-22T22:40:00Z",
    "seconds": 12.345,
    "with": ["secrets"],
    "anonymous": false,
    "left_out": [{"name":"gpio.0","reason":"the watchdog's"}]
  },
  "properties": {
    "model": {"value":"0x0709"},
    "fan.1.speed": {"status":-6,"name":null,"message":"an answer of the kernel module"},
    "temperature.sensor": {"status":1011,"name":"BSP_E_SHORT_READ","message":"said \"so\""},
    "poe.2.limit": {"value":30000,"unit":"mW"},
    "poe.10.limit": {"value":90000,"unit":"mW","raw":"4809"},
    "boot.block": {"value":"00ff"},
    "flash.4.content": {"value":[{"offset":0,"bytes":"0102"},{"offset":256,"bytes":"ff"}]},
    "later.thing": {"value":"kept"}
  },
  "findings": [
    {"subject":"fan 1","verdict":"fault","found":"stands still","advice":"replace it","code":"fan-stands-still","unit":"fan","index":1,"cause":null},
    {"subject":"clock","verdict":"not-judged","found":"hangs on the bus","advice":null,"code":"not-judged","unit":"clock","index":null,"cause":"i2c-bus-no-answer"}
  ]
}
)";

TEST(CapturedUnitTest, IsWrittenInTheOrderOfTheTable) {
    EXPECT_EQ(writtenCapture(someUnit()), kSomeDocument);
}

TEST(CapturedUnitTest, ReadsBackAsItWasWritten) {
    const CapturedUnit read = readCapture(kSomeDocument);
    EXPECT_EQ(read.capture, someUnit().capture);
    EXPECT_EQ(read.findings, someUnit().findings);
    ASSERT_EQ(read.properties.size(), someUnit().properties.size());
    for (const CapturedReading &reading : someUnit().properties) {
        ASSERT_NE(read.find(reading.name), nullptr) << reading.name;
        EXPECT_EQ(*read.find(reading.name), reading) << reading.name;
    }
    EXPECT_EQ(read.properties.front().name, "model");
    EXPECT_EQ(read.properties.back().name, "later.thing");
    EXPECT_EQ(read.find("fan.2.speed"), nullptr);
    EXPECT_EQ(writtenCapture(read), kSomeDocument);
}

TEST(CapturedUnitTest, TheExampleOfThePageIsOne) {
    std::stringstream page;
    page << std::ifstream(BSP_TEST_DOCUMENTS "/captured-unit.md").rdbuf();
    const std::string text = page.str();
    const size_t start = text.find("```json\n") + 8;
    const std::string example = text.substr(start, text.find("```\n", start) - start);
    EXPECT_EQ(writtenCapture(readCapture(example)), example);
}

TEST(CapturedUnitTest, AnEmptyOneIsADocument) {
    const CapturedUnit empty;
    EXPECT_EQ(readCapture(writtenCapture(empty)), empty);
}

TEST(CapturedUnitTest, AnOrderOfKeysAndWhatIsUnknownDoNotMatter) {
    std::string document = kSomeDocument;
    document.replace(document.find("\"revision\": 0,"), 14, "\"revision\": 7, \"more\": [{}],");
    document.replace(document.find("{\"value\":\"0x0709\"}"), 18,
                     "{\"more\": 1.5, \"value\":\"0x0709\"}");
    const CapturedUnit read = readCapture(document);
    EXPECT_EQ(read.revision, 7);
    EXPECT_EQ(*read.find("model")->text(), "0x0709");
    EXPECT_NE(writtenCapture(read).find("\"revision\": 7,\n"), std::string::npos);
}

TEST(CapturedUnitTest, WhatIsNoUtf8DoesNotSpoilADocument) {
    CapturedUnit unit;
    unit.properties = {{"cmdline", "\xff\x80 a\n\"\\"}};
    EXPECT_EQ(*readCapture(writtenCapture(unit)).find("cmdline")->text(),
              "\xef\xbf\xbd\xef\xbf\xbd a\n\"\\");
}

std::string refusalOfDocument(const std::string &document) {
    try {
        readCapture(document);
    } catch (const Refused &refusal) {
        return refusal.what();
    }
    return "";
}

/** The document with a part replaced. */
std::string documentWith(const std::string &part, const std::string &other) {
    std::string document = kSomeDocument;
    const size_t place = document.find(part);
    EXPECT_NE(place, std::string::npos) << part;
    return document.replace(place, part.size(), other);
}

struct WrongPart {
    const char *part, *other, *reason;
};

TEST(CapturedUnitTest, WrongDocumentsAreRefusedWithPlaceAndReason) {
    for (const WrongPart &wrong : std::initializer_list<WrongPart>{
             {"captured-unit", "other", "it is no captured unit; 'iodbg capture FILE' makes one"},
             {"\"version\": 1", "\"version\": 2",
              "version: 2 is of a later iodbg; take that one, or capture the unit with this one"},
             {"\"version\": 1", "\"version\": 0", "version: 0 has never been"},
             {"\"version\": 1", "\"version\": \"1\"", "version: is no whole number"},
             {"\"version\": 1,", "", "document: 'version' is missing"},
             {"\"revision\": 0", "\"revision\": -1",
              "revision: -1 is not a number from 0 to 2147483647"},
             {"\"tool\": \"iodbg 1.1.0\"", "\"tool\": 1", "capture.tool: is no text"},
             {"12.345", "-1", "capture.seconds: is no number of seconds"},
             {"12.345", "1e300", "capture.seconds: is no number of seconds"},
             {"false", "0", "capture.anonymous: is neither true nor false"},
             {"[\"secrets\"]", "[1]", "capture.with: is no text"},
             {"{\"name\":\"gpio.0\",", "{", "capture.left_out[0]: 'name' is missing"},
             {"{\"value\":\"0x0709\"}", "{}", "properties.model: has neither a value nor a status"},
             {"{\"value\":\"0x0709\"}", "7", "properties.model: is no object"},
             {"\"0x0709\"", "1801", "properties.model.value: is no text"},
             {"30000", "\"30000\"", "properties.poe.2.limit.value: is no whole number"},
             {"30000", "1.5", "properties.poe.2.limit.value: is no whole number"},
             {"30000", "18446744073709551615", "properties.poe.2.limit.value: is no whole number"},
             {"\"4809\"", "\"480\"", "properties.poe.10.limit.raw: '480' is not "},
             {"\"4809\"", "\"0x48\"", "properties.poe.10.limit.raw: has '0x' before the digits"},
             {"\"00ff\"", "\"0g\"", "properties.boot.block.value: '0g' has "},
             {"\"status\":-6", "\"status\":4294967296",
              "properties.fan.1.speed.status: 4294967296 is not a number from "},
             {"\"status\":-6", "\"status\":-6,\"value\":1",
              "properties.fan.1.speed: has both a value and a status"},
             {"\"offset\":256", "\"offset\":1",
              "properties.flash.4.content.value[1]: begins before the one before it ends"},
             {"\"offset\":256", "\"offset\":4294967296",
              "properties.flash.4.content.value[1].offset: 4294967296 is not a number from "},
             {"\"poe.2.limit\"", "\"poe.10.limit\"", "'poe.10.limit' stands there twice"},
             {"\"index\":1,", "\"index\":\"1\",", "findings[0].index: is no whole number"},
             {"\"cause\":\"i2c", "\"reason\":\"i2c", "findings[1]: 'cause' is missing"},
             {"\"findings\": [", "\"findings\": [[[[[[[[[", "it is more than 8 levels deep"},
             {"\"capture\": {", "\"capture\" {", "it is no JSON at line 5, column 13: "},
         })
        EXPECT_EQ(refusalOfDocument(documentWith(wrong.part, wrong.other))
                      .substr(0, std::string(wrong.reason).size()),
                  wrong.reason);
    for (const char *none : {"", " ", "{", "[]", "1", "null", "{}", "\xff\xfe", "{\"format\": 1}"})
        EXPECT_NE(refusalOfDocument(none), "") << none;
}

TEST(CapturedUnitTest, EachBeginningOfADocumentIsRefused) {
    const std::string document = kSomeDocument;
    for (size_t length = 0; length + 2 < document.size(); length += 7)
        EXPECT_NE(refusalOfDocument(document.substr(0, length)), "") << length;
}

TEST(CapturedUnitTest, TooManyKeysAreRefused) {
    std::string many;
    for (int i = 0; i <= 16384; ++i)
        many += "\"a" + std::to_string(i) + "\":0,";
    EXPECT_EQ(refusalOfDocument("{" + many + "\"b\":0}"), "an object has more than 16384 keys");
}

TEST(CapturedUnitTest, ManyPartsOfAPartitionAreRead) {
    std::string parts;
    constexpr int kParts = 20000;
    for (int i = 0; i < kParts; ++i)
        parts += (i > 0 ? "," : "") + std::string("{\"offset\":") + std::to_string(i * 2) +
                 ",\"bytes\":\"00\"}";
    const CapturedUnit unit = readCapture(
        documentWith(R"({"offset":0,"bytes":"0102"},{"offset":256,"bytes":"ff"})", parts));
    EXPECT_EQ(unit.find("flash.4.content")->runs()->size(), size_t{kParts});
}

// Privacy

/** A unit whose serial number, "SN00042", and addresses stand in several places. */
CapturedUnit unitOfSomebody() {
    Bytes eeprom(1024, 0xFF);
    uint8_t *record = eeprom.data() + 256;
    std::memset(record, 0, formats::kBoardRecordSize);
    std::memcpy(record, "DEVINFO", 8);
    const uint8_t mac[] = {0, 0x1B, 0x2C, 0x3D, 0x4E, 0xFF};
    std::memcpy(record + 10, mac, sizeof(mac));
    std::memcpy(record + 64, "SN00042", 7);
    formats::renewRecordCrc(record);
    std::memcpy(eeprom.data() + 700, "xSN00042x", 9);
    Bytes supply(256, 0);
    std::memcpy(supply.data() + 176 + 40, "P1", 2);
    Bytes page(256, 0);
    std::memcpy(page.data() + 68, "MOD12345        ", 16);
    for (size_t i = 64; i < 95; ++i)
        page[95] = static_cast<uint8_t>(page[95] + page[i]);
    CapturedUnit unit;
    unit.properties = {
        {"cmdline", "ethaddr=00:1b:2c:3d:4e:ff serial=SN00042 P1"},
        {"identity.serial", "SN00042"},
        {"identity.mac", "00:1b:2c:3d:4e:ff"},
        {"eeprom.board", hexText(eeprom)},
        {"eeprom.supply1", hexText(supply)},
        {"supply.1.serial", "P1"},
        {"sfp.49.id", hexText(page)},
        {"flash.12.crc32", "0x00000001"},
        {"flash.12.content", CapturedRuns{{0, {'S', 'N', '0', '0', '0', '4', '2'}}}},
        {"flash.14.crc32", "0x00000002"},
        {"flash.14.content", CapturedRuns{{0, {'S', 'N', '0'}}}},
        {"fan.1.speed", int64_t{2400}},
    };
    unit.findings = {
        {"serial number", "good", "SN00042", {}, "good", "serial-number", {}, {}},
        {"MAC address", "good", "00:1B:2C:3D:4E:00", {}, "good", "mac-address", {}, {}}};
    return unit;
}

Bytes bytesIn(const CapturedUnit &unit, const char *name) {
    return parseBytes(*unit.find(name)->text());
}

TEST(CapturedUnitPrivacyTest, NothingTellsWhichUnitItIs) {
    CapturedUnit unit = unitOfSomebody();
    makeAnonymous(unit);
    EXPECT_TRUE(unit.capture.isAnonymous);
    const std::string document = writtenCapture(unit);
    for (const std::string telling :
         {"SN00042", "1b:2c", "1B:2C", "1b2c3d4e", "MOD12345", "4d4f44", "534e3030303432", "5031"})
        EXPECT_EQ(document.find(telling), std::string::npos) << telling;
    EXPECT_EQ(*unit.find("identity.serial")->text(), "0000001");
    EXPECT_EQ(*unit.find("supply.1.serial")->text(), "02");
    EXPECT_EQ(*unit.find("identity.mac")->text(), "02:00:00:00:01:ff");
    EXPECT_EQ(*unit.find("cmdline")->text(), "ethaddr=02:00:00:00:01:ff serial=0000001 P1")
        << "a short one is replaced at its own place alone";
    EXPECT_EQ(unit.findings[0].found, "0000001");
    EXPECT_EQ(unit.findings[1].found, "02:00:00:00:01:00");
    EXPECT_EQ(*unit.find("fan.1.speed")->number(), 2400);
}

TEST(CapturedUnitPrivacyTest, BytesAndChecksumsFollow) {
    CapturedUnit unit = unitOfSomebody();
    makeAnonymous(unit);
    const Bytes eeprom = bytesIn(unit, "eeprom.board");
    ASSERT_EQ(eeprom.size(), 1024U);
    const uint8_t *record = eeprom.data() + 256;
    EXPECT_EQ(hexText(ByteView(eeprom).subspan(256 + 10, 6)), "0200000001ff");
    EXPECT_EQ(std::string(record + 64, record + 72), std::string("0000001\0", 8));
    EXPECT_EQ(formats::storedRecordCrc(record), formats::computedRecordCrc(record));
    EXPECT_EQ(std::string(eeprom.begin() + 700, eeprom.begin() + 709), "x0000001x");
    EXPECT_EQ(eeprom[0], 0xFF);
    const Bytes page = bytesIn(unit, "sfp.49.id");
    EXPECT_EQ(std::string(page.begin() + 68, page.begin() + 84), "ANON0003        ");
    unsigned sum = 0;
    for (size_t i = 64; i < 95; ++i)
        sum += page[i];
    EXPECT_EQ(page[95], static_cast<uint8_t>(sum));
    EXPECT_EQ(unit.find("flash.12.crc32"), nullptr) << "the content is another";
    ASSERT_EQ(unit.capture.leftOut.size(), 1U);
    EXPECT_EQ(unit.capture.leftOut[0].name, "flash.12.crc32");
    EXPECT_NE(unit.find("flash.14.crc32"), nullptr);
}

Bytes bytesOf(const std::string &text) {
    return {text.begin(), text.end()};
}

TEST(CapturedUnitPrivacyTest, AllSpellingsAreReplaced) {
    CapturedUnit unit = unitOfSomebody();
    unit.properties.push_back(
        {"boot.note", "eth1=00-1B-2C-3D-4E-51 eth2=001b2c3d4e52 eth3=001b.2c3d.4e53 sn00042"});
    unit.properties.push_back(
        {"flash.0.content",
         CapturedRuns{{0, bytesOf("\xFF\nethaddr=00:1b:2c:3d:4e:50 SN00042\n")}}});
    unit.properties.push_back({"sfp.50.id", hexText(bytesOf("..00:1B:2C:3D:4E:50.."))});
    makeAnonymous(unit);
    EXPECT_EQ(*unit.find("boot.note")->text(),
              "eth1=02-00-00-00-01-51 eth2=020000000152 eth3=0200.0000.0153 0000001");
    EXPECT_EQ(unit.find("flash.0.content")->runs()->front().bytes,
              bytesOf("\xFF\nethaddr=02:00:00:00:01:50 0000001\n"));
    EXPECT_EQ(bytesIn(unit, "sfp.50.id"), bytesOf("..02:00:00:00:01:50.."));
}

TEST(CapturedUnitPrivacyTest, OneSerialNumberMayBeAPartOfAnother) {
    CapturedUnit unit;
    Bytes supply(256, 0);
    std::memcpy(supply.data() + 176 + 40, "PSU0000001", 10);
    unit.properties = {{"identity.serial", "PSU0000001X"},
                       {"supply.1.serial", "PSU0000001"},
                       {"eeprom.supply1", hexText(supply)},
                       {"cmdline", "PSU0000001X PSU0000001 psu0000001x"}};
    makeAnonymous(unit);
    EXPECT_EQ(*unit.find("identity.serial")->text(), "ANON0000001");
    EXPECT_EQ(*unit.find("supply.1.serial")->text(), "ANON000002");
    EXPECT_EQ(*unit.find("cmdline")->text(), "ANON0000001 ANON000002 anon0000001");
    const Bytes other = bytesIn(unit, "eeprom.supply1");
    EXPECT_EQ(std::string(other.begin() + 216, other.begin() + 226), "ANON000002");
}

TEST(CapturedUnitPrivacyTest, AShortSerialNumberIsReplacedAsAWord) {
    CapturedUnit unit;
    unit.properties = {{"identity.serial", "A1234"},
                       {"identity.mac", CapturedFailure{-1, "", "of A1234"}},
                       {"cmdline", "serial=A1234 xA1234 A12345"}};
    unit.findings = {
        {"serial number", "good", "A1234", "ask for A1234", "good", "serial-number", {}, "A1234"}};
    unit.capture.leftOut = {{"poe.*", "hangs on A1234"}};
    makeAnonymous(unit);
    EXPECT_EQ(*unit.find("cmdline")->text(), "serial=00001 xA1234 A12345");
    EXPECT_EQ(unit.find("identity.mac")->failure()->message, "of 00001");
    EXPECT_EQ(unit.findings[0].found, "00001");
    EXPECT_EQ(unit.findings[0].advice, "ask for 00001");
    EXPECT_EQ(unit.findings[0].cause, "00001");
    EXPECT_EQ(unit.capture.leftOut[0].reason, "hangs on 00001");
}

TEST(CapturedUnitPrivacyTest, TheAddressInADamagedRecordIsReplaced) {
    CapturedUnit unit = unitOfSomebody();
    std::string digits = *unit.find("eeprom.board")->text();
    digits[2 * 256] = digits[2 * 256] == '0' ? '1' : '0';
    CapturedUnit damaged;
    damaged.properties = {{"eeprom.board", digits}};
    makeAnonymous(damaged);
    EXPECT_EQ(hexText(ByteView(bytesIn(damaged, "eeprom.board")).subspan(256 + 10, 6)),
              "0200000001ff");
}

TEST(CapturedUnitPrivacyTest, ChecksumsThatWereWrongStayWrong) {
    CapturedUnit unit = unitOfSomebody();
    std::string digits = *unit.find("eeprom.board")->text();
    digits[2 * (256 + 124)] = digits[2 * (256 + 124)] == '0' ? '1' : '0';
    unit.properties[3].content = digits;
    makeAnonymous(unit);
    const Bytes eeprom = bytesIn(unit, "eeprom.board");
    EXPECT_NE(formats::storedRecordCrc(eeprom.data() + 256),
              formats::computedRecordCrc(eeprom.data() + 256));
}

TEST(CapturedUnitPrivacyTest, SpoiledRowsOfBytesDoNoHarm) {
    CapturedUnit unit;
    unit.properties = {{"eeprom.board", "00"},     {"sfp.1.id", "ff"},
                       {"eeprom.supply1", "4142"}, {"later.runs", CapturedRuns{{0, {1}}}},
                       {"identity.serial", ""},    {"identity.mac", "no address"}};
    const CapturedUnit before = unit;
    makeAnonymous(unit);
    EXPECT_EQ(unit.properties, before.properties);
}

} // namespace
