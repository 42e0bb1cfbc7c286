// The serial number.

#include "bsp.h"
#include "tests/identity/records.h"
#include "tests/support/virtual_board_test.h"

#include <algorithm>

namespace {

using namespace std::string_literals;

constexpr uint32_t kUntouched = 0xA5A5A5A5;

class SerialNumberTest : public VirtualBoardTest {
  protected:
    /** The board's record with a text in the serial field and, if it is long, behind it. */
    static BspDevinfo recordWith(const std::string &text) {
        BspDevinfo record = numberedBoardRecord();
        std::memset(record.serial, 0, sizeof(record.serial));
        std::memcpy(reinterpret_cast<char *>(&record) + 64, text.data(), text.size());
        seal(record);
        return record;
    }

    static void expectSerial(const std::string &expected) {
        std::string buffer(70, '#');
        uint32_t len = kUntouched;
        EXPECT_EQ(answerOf([&] { return bspSerialNumGet(buffer.data(), &len); }), Answer{BSP_OK});
        EXPECT_EQ(len, expected.size());
        EXPECT_EQ(buffer, expected + std::string(70 - expected.size(), '#'))
            << "no terminating zero";
    }
};

TEST_F(SerialNumberTest, EndsAtTheFirstZero) {
    for (const std::string text : {"A", "VB00000001", "0123456789012345678901234567890"}) {
        storeBoardRecord(devices().eeprom, recordWith(text));
        expectSerial(text);
    }
    storeBoardRecord(devices().eeprom, recordWith(""));
    expectSerial("");
    storeBoardRecord(devices().eeprom, recordWith("AB\0CD"s));
    expectSerial("AB");
}

TEST_F(SerialNumberTest, AFieldWithoutAZeroRunsOn) {
    const std::string full = "0123456789ABCDEF0123456789ABCDEF";
    storeBoardRecord(devices().eeprom, recordWith(full + "\0"s));
    expectSerial(full);
    storeBoardRecord(devices().eeprom, recordWith(full + "\x02\0"s));
    expectSerial(full + "\x02");
    storeBoardRecord(devices().eeprom, recordWith(full + "\x02\x01\x01\x01\x01\x01\x01\0"s));
    expectSerial(full + "\x02\x01\x01\x01\x01\x01\x01");
}

TEST_F(SerialNumberTest, AFieldWithoutAZeroEndsWithTheRecord) {
    const BspDevinfo record = recordWith(std::string(60, 'S'));
    ASSERT_EQ(std::count(record.crc, record.crc + 4, 0), 0) << "the CRC must not end the text";
    storeBoardRecord(devices().eeprom, record);
    const Bytes bytes = bytesOf(record);
    expectSerial(std::string(bytes.begin() + 64, bytes.end()));
}

TEST_F(SerialNumberTest, IsStoredWithZerosBehindIt) {
    for (const std::string text : {"ABC", "A", "0123456789012345678901234567890"}) {
        storeBoardRecord(devices().eeprom, recordWith("XXXXXXXXXXXXXXXXXXXXXXXXXXXXXXXX"));
        const std::string longer = text + "beyond";
        EXPECT_EQ(answerOf([&] {
                      return bspSerialNumSet(longer.data(), static_cast<int32_t>(text.size()));
                  }),
                  Answer{BSP_OK});
        EXPECT_EQ(boardRecordIn(devices().eeprom), bytesOf(recordWith(text)))
            << "all else in the record survives";
        expectSerial(text);
    }
}

TEST_F(SerialNumberTest, BytesAreStoredWhateverTheyAre) {
    EXPECT_EQ(bspSerialNumSet("A\0C", 3), BSP_OK);
    EXPECT_EQ(bytesAt(devices().eeprom, 0x140, 4), (Bytes{'A', 0, 'C', 0}));
    expectSerial("A");
}

TEST_F(SerialNumberTest, Has1To31Characters) {
    const std::string text(64, 'S');
    for (const int32_t len : {0, -1, 32, 33, 64, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(answerOf([&] { return bspSerialNumSet(text.data(), len); }),
                  Answer{BSP_E_INVALID})
            << len;
    }
    EXPECT_EQ(trace(), Lines{});
}

TEST_F(SerialNumberTest, ARecordThatCannotBeReadIsReported) {
    devices().eeprom.bytes[0x110] ^= 1;
    const Bytes spoilt = boardRecordIn(devices().eeprom);
    std::string buffer(70, '#');
    uint32_t len = kUntouched;
    EXPECT_EQ(answerOf([&] { return bspSerialNumGet(buffer.data(), &len); }),
              (Answer{BSP_E_INVALID, "bspSerialNumGet-#: devinfo get failed\n"}));
    EXPECT_EQ(buffer, std::string(70, '#'));
    EXPECT_EQ(len, kUntouched);
    EXPECT_EQ(answerOf([] { return bspSerialNumSet("ABC", 3); }),
              (Answer{BSP_E_INVALID, "bspSerialNumSet-#: devinfo get failed\n"}));
    EXPECT_EQ(boardRecordIn(devices().eeprom), spoilt);
}

TEST_F(SerialNumberTest, ARecordThatCannotBeWrittenIsReported) {
    addFault(refuse(vb::FaultDevice::I2c, vb::FaultOp::Write, 5));
    EXPECT_EQ(answerOf([] { return bspSerialNumSet("ABC", 3); }),
              (Answer{BSP_E_FAILED, "bspSerialNumSet-#: devinfo set failed\n"}));
}

TEST_F(SerialNumberTest, ANullPointerIsRefusedBeforeAnythingIsDone) {
    std::string buffer(70, '#');
    uint32_t len = kUntouched;
    EXPECT_EQ(answerOf([&] { return bspSerialNumGet(nullptr, &len); }), Answer{BSP_E_NULL});
    EXPECT_EQ(answerOf([&] { return bspSerialNumGet(buffer.data(), nullptr); }),
              Answer{BSP_E_NULL});
    EXPECT_EQ(answerOf([] { return bspSerialNumSet(nullptr, 3); }), Answer{BSP_E_NULL});
    // a null serial outweighs a wrong length
    EXPECT_EQ(answerOf([] { return bspSerialNumSet(nullptr, 0); }), Answer{BSP_E_NULL});
    EXPECT_EQ(len, kUntouched);
    EXPECT_EQ(buffer, std::string(70, '#'));
    EXPECT_EQ(trace(), Lines{});
}

} // namespace
