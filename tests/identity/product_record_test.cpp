// The records in the EEPROMs of the board and of its supplies.

#include "bsp.h"
#include "tests/identity/records.h"
#include "tests/support/virtual_board_test.h"

#include <cstddef>

namespace {

// The EEPROMs are written in the factory: the layouts are what both sides agree on.
static_assert(sizeof(BspDevinfo) == 128);
static_assert(offsetof(BspDevinfo, magic) == 0 && sizeof(BspDevinfo::magic) == 8);
static_assert(offsetof(BspDevinfo, reserved1) == 8 && sizeof(BspDevinfo::reserved1) == 2);
static_assert(offsetof(BspDevinfo, mac) == 10 && sizeof(BspDevinfo::mac) == 6);
static_assert(offsetof(BspDevinfo, productData1) == 16 && sizeof(BspDevinfo::productData1) == 16);
static_assert(offsetof(BspDevinfo, productData2) == 32 && sizeof(BspDevinfo::productData2) == 32);
static_assert(offsetof(BspDevinfo, serial) == 64 && sizeof(BspDevinfo::serial) == 32);
static_assert(offsetof(BspDevinfo, supplyCount) == 96 && sizeof(BspDevinfo::supplyCount) == 1);
static_assert(offsetof(BspDevinfo, supplyType) == 97 && sizeof(BspDevinfo::supplyType) == 6);
static_assert(offsetof(BspDevinfo, productData3) == 103 && sizeof(BspDevinfo::productData3) == 4);
static_assert(offsetof(BspDevinfo, reserved2) == 107 && sizeof(BspDevinfo::reserved2) == 17);
static_assert(offsetof(BspDevinfo, crc) == 124 && sizeof(BspDevinfo::crc) == 4);

static_assert(sizeof(BspSupplyRecord) == 80);
static_assert(offsetof(BspSupplyRecord, productData2) == 0);
static_assert(offsetof(BspSupplyRecord, productData3) == 32);
static_assert(offsetof(BspSupplyRecord, unused) == 36);
static_assert(offsetof(BspSupplyRecord, serial) == 40);
static_assert(offsetof(BspSupplyRecord, productData1) == 64);

/** How the whole of the board's record travels. */
Lines boardRecordRequests(const std::string &operation) {
    Lines lines;
    for (const char *offset : {"00", "10", "20", "30", "40", "50", "60", "70"})
        lines.push_back(operation + " bus 0 ch 0 dev 0x51 off 0x" + offset + " len 16");
    return lines;
}

class ProductRecordTest : public VirtualBoardTest {
  protected:
    /** A read of the board's record fails and leaves the caller's record alone. */
    void expectBoardRecordRefused(const Answer &expected) {
        const auto untouched = numbered<BspDevinfo>(0x40);
        BspDevinfo record = untouched;
        EXPECT_EQ(answerOf([&] { return bspLocalPieGet(&record); }), expected);
        EXPECT_EQ(bytesOf(record), bytesOf(untouched));
    }
};

TEST_F(ProductRecordTest, TheBoardsRecordLiesInTheSecondBlock) {
    const BspDevinfo stored = numberedBoardRecord();
    storeBoardRecord(devices().eeprom, stored);
    BspDevinfo record{};
    EXPECT_EQ(answerOf([&] { return bspLocalPieGet(&record); }), Answer{BSP_OK});
    EXPECT_EQ(bytesOf(record), bytesOf(stored));
    EXPECT_EQ(now(), 8000000u);
    EXPECT_EQ(withoutData(requests()), boardRecordRequests("I2C read "));
}

TEST_F(ProductRecordTest, TheMagicIsJudgedBeforeTheCrc) {
    const struct {
        const char *magic; // 8 bytes
        bool isCrcRight;
        int32_t status;
    } cases[] = {
        {"DEVINFX", true, BSP_E_NO_RECORD},  {"DEVINFX", false, BSP_E_NO_RECORD},
        {"DEVINFO1", true, BSP_E_NO_RECORD}, // no terminating zero
        {"devinfo", true, BSP_E_NO_RECORD},  {"\0EVINFO", true, BSP_E_NO_RECORD},
        {"DEVINFO", false, BSP_E_INVALID},
    };
    for (const auto &expected : cases) {
        auto stored = numbered<BspDevinfo>(1);
        std::memcpy(stored.magic, expected.magic, sizeof(stored.magic));
        seal(stored);
        if (!expected.isCrcRight)
            stored.crc[3] ^= 1;
        storeBoardRecord(devices().eeprom, stored);
        expectBoardRecordRefused({expected.status});
    }
}

TEST_F(ProductRecordTest, EveryByteOfTheBoardsRecordIsChecked) {
    const BspDevinfo stored = numberedBoardRecord();
    for (uint32_t i = 0; i < sizeof(stored); ++i) {
        storeBoardRecord(devices().eeprom, stored);
        devices().eeprom.bytes[0x100 + i] ^= 0x10;
        expectBoardRecordRefused({i < 8 ? BSP_E_NO_RECORD : BSP_E_INVALID});
    }
}

TEST_F(ProductRecordTest, AnErasedEepromHoldsNoRecord) {
    std::memset(devices().eeprom.bytes, 0xFF, sizeof(devices().eeprom.bytes));
    expectBoardRecordRefused({BSP_E_NO_RECORD});
}

TEST_F(ProductRecordTest, AFailedReadOfTheBoardsRecordGivesNothing) {
    for (const uint32_t nth : {1u, 8u}) {
        clearFaults();
        addFault(refuse(vb::FaultDevice::I2c, vb::FaultOp::Read, 5, nth));
        expectBoardRecordRefused({BSP_E_FAILED});
    }
}

TEST_F(ProductRecordTest, TheBoardsRecordIsWrittenWithItsCrc) {
    const BspDevinfo expected = numberedBoardRecord();
    BspDevinfo record = expected;
    std::memset(record.crc, 0, sizeof(record.crc));
    EXPECT_EQ(answerOf([&] { return bspLocalPieSet(&record); }), Answer{BSP_OK});
    EXPECT_EQ(bytesOf(record), bytesOf(expected)) << "the caller's record gets the CRC too";
    EXPECT_EQ(boardRecordIn(devices().eeprom), bytesOf(expected));
    EXPECT_EQ(now(), 8000000u);
    EXPECT_EQ(withoutData(requests()), boardRecordRequests("I2C write"));
}

TEST_F(ProductRecordTest, TheCrcsMostSignificantByteComesFirst) {
    BspDevinfo record{};
    std::memcpy(record.magic, "DEVINFO", 8);
    EXPECT_EQ(bspLocalPieSet(&record), BSP_OK);
    EXPECT_EQ(bytesAt(devices().eeprom, 0x17C, 4), (Bytes{0x95, 0x1B, 0xEE, 0xB3}));
}

TEST_F(ProductRecordTest, ARecordWithoutMagicIsNotWritten) {
    for (const char *magic : {"DEVINFX", "DEVINFO1"}) {
        auto record = numbered<BspDevinfo>(1);
        std::memcpy(record.magic, magic, sizeof(record.magic));
        const Bytes untouched = bytesOf(record);
        EXPECT_EQ(answerOf([&] { return bspLocalPieSet(&record); }), Answer{BSP_E_NO_RECORD});
        EXPECT_EQ(bytesOf(record), untouched);
    }
    EXPECT_EQ(trace(), Lines{});
}

TEST_F(ProductRecordTest, AFailedWriteOfTheBoardsRecordStaysHalfWritten) {
    const Bytes before = boardRecordIn(devices().eeprom);
    const BspDevinfo expected = numberedBoardRecord();
    BspDevinfo record = expected;
    std::memset(record.crc, 0, sizeof(record.crc));
    addFault(refuse(vb::FaultDevice::I2c, vb::FaultOp::Write, 5, 3));
    EXPECT_EQ(answerOf([&] { return bspLocalPieSet(&record); }), Answer{BSP_E_FAILED});
    EXPECT_EQ(bytesOf(record), bytesOf(expected));
    Bytes stored = bytesOf(expected);
    std::copy(before.begin() + 32, before.end(), stored.begin() + 32);
    EXPECT_EQ(boardRecordIn(devices().eeprom), stored);
}

TEST_F(ProductRecordTest, ASupplysRecordIsTheLast80BytesOfItsEeprom) {
    for (const uint32_t supply : {1u, 2u}) {
        // neither magic nor CRC: whatever it holds is the record
        const auto stored = numbered<BspSupplyRecord>(static_cast<uint8_t>(0x90 * supply));
        storeSupplyRecord(devices().supply[supply - 1].eeprom, stored);
        BspSupplyRecord record{};
        EXPECT_EQ(answerOf([&] { return bspPowerPieGet(supply, &record); }), Answer{BSP_OK});
        EXPECT_EQ(bytesOf(record), bytesOf(stored));
        const std::string operation = "I2C read  bus 0 ch " + std::to_string(supply + 1);
        EXPECT_EQ(withoutData(trace()),
                  (Lines{operation + " dev 0x50 off 0xB0 len 16", "sleep 1000 us",
                         operation + " dev 0x50 off 0xC0 len 16", "sleep 1000 us",
                         operation + " dev 0x50 off 0xD0 len 16", "sleep 1000 us",
                         operation + " dev 0x50 off 0xE0 len 16", "sleep 1000 us",
                         operation + " dev 0x50 off 0xF0 len 16", "sleep 1000 us"}));
    }
}

TEST_F(ProductRecordTest, ASupplysRecordIsWrittenAsItIs) {
    const auto record = numbered<BspSupplyRecord>(3);
    const Bytes other = supplyRecordIn(devices().supply[0].eeprom);
    EXPECT_EQ(answerOf([&] { return bspPowerPieSet(2, &record); }), Answer{BSP_OK});
    EXPECT_EQ(supplyRecordIn(devices().supply[1].eeprom), bytesOf(record));
    EXPECT_EQ(supplyRecordIn(devices().supply[0].eeprom), other);
    const Lines lines = withoutData(requests());
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines.front(), "I2C write bus 0 ch 3 dev 0x50 off 0xB0 len 16");
    EXPECT_EQ(lines.back(), "I2C write bus 0 ch 3 dev 0x50 off 0xF0 len 16");
}

TEST_F(ProductRecordTest, AFailedReadOfASupplysRecordGivesNothing) {
    const auto untouched = numbered<BspSupplyRecord>(0x40);
    BspSupplyRecord record = untouched;
    addFault(refuse(vb::FaultDevice::I2c, vb::FaultOp::Read, 5, 5));
    EXPECT_EQ(answerOf([&] { return bspPowerPieGet(1, &record); }), Answer{BSP_E_FAILED});
    EXPECT_EQ(bytesOf(record), bytesOf(untouched));
    addFault(refuse(vb::FaultDevice::I2c, vb::FaultOp::Write, 5, 5));
    EXPECT_EQ(answerOf([&] { return bspPowerPieSet(1, &record); }), Answer{BSP_E_FAILED});
}

TEST_F(ProductRecordTest, OnlySupplies1And2HaveRecords) {
    const auto untouched = numbered<BspSupplyRecord>(0x40);
    BspSupplyRecord record = untouched;
    for (const uint32_t supply : {0u, 3u, 0xFFFFFFFFu}) {
        EXPECT_EQ(answerOf([&] { return bspPowerPieGet(supply, &record); }), Answer{BSP_E_INVALID});
        EXPECT_EQ(answerOf([&] { return bspPowerPieSet(supply, &record); }), Answer{BSP_E_INVALID});
    }
    EXPECT_EQ(bytesOf(record), bytesOf(untouched));
    EXPECT_EQ(trace(), Lines{});
}

// The model is not asked: a supply that answers has a record.
TEST_F(ProductRecordTest, ASupplysRecordIsReachedOnEveryModel) {
    useModel(0x0309);
    const auto stored = numbered<BspSupplyRecord>(0x55);
    devices().supply[0].isPresent = 1;
    devices().supply[0].eeprom.blocks = 1;
    EXPECT_EQ(bspPowerPieSet(1, &stored), BSP_OK);
    BspSupplyRecord record{};
    EXPECT_EQ(bspPowerPieGet(1, &record), BSP_OK);
    EXPECT_EQ(bytesOf(record), bytesOf(stored));
    EXPECT_EQ(requests().size(), 10u) << "nothing but the EEPROM is asked";
}

TEST_F(ProductRecordTest, ANullRecordIsRefusedInSilence) {
    EXPECT_EQ(answerOf([] { return bspLocalPieGet(nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(answerOf([] { return bspLocalPieSet(nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(answerOf([] { return bspPowerPieGet(3, nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(answerOf([] { return bspPowerPieSet(3, nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(trace(), Lines{});
}

} // namespace
