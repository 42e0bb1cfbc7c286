// One record layout for the board and its supplies.

#include "bsp.h"
#include "tests/identity/records.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/board/models.h"

#include <filesystem>

namespace {

constexpr int32_t (*kBoth[])(uint32_t, BspDevinfo *) = {bspDevinfoGet, bspDevinfoSet};

class DeviceInfoTest : public VirtualBoardTest {
  protected:
    /** Both directions answer the same; neither the caller's record nor the EEPROMs change. */
    void expectRefused(uint32_t index, int32_t status, const std::string &message = "") {
        SCOPED_TRACE(index);
        const auto untouched = numbered<BspDevinfo>(0x40);
        const vb::Devices before = devices();
        BspDevinfo record = untouched;
        const auto prefixed = [&](const char *function) {
            return Answer{status, message.empty() ? "" : function + message};
        };
        EXPECT_EQ(answerOf([&] { return bspDevinfoGet(index, &record); }),
                  prefixed("bspDevinfoGet"));
        EXPECT_EQ(answerOf([&] { return bspDevinfoSet(index, &record); }),
                  prefixed("bspDevinfoSet"));
        EXPECT_EQ(bytesOf(record), bytesOf(untouched));
        EXPECT_EQ(bytesOf(devices()), bytesOf(before));
    }
};

TEST_F(DeviceInfoTest, Index0IsTheBoardsOwnRecord) {
    const BspDevinfo stored = numberedBoardRecord();
    for (const uint32_t devId : {0x0109u, 0x0309u, 0x0709u}) {
        useModel(devId);
        BspDevinfo record = stored;
        std::memset(record.crc, 0, sizeof(record.crc));
        EXPECT_EQ(answerOf([&] { return bspDevinfoSet(0, &record); }), Answer{BSP_OK});
        EXPECT_EQ(bytesOf(record), bytesOf(stored)) << "the CRC is computed into it";
        EXPECT_EQ(boardRecordIn(devices().eeprom), bytesOf(stored));

        record = BspDevinfo{};
        EXPECT_EQ(answerOf([&] { return bspDevinfoGet(0, &record); }), Answer{BSP_OK});
        EXPECT_EQ(bytesOf(record), bytesOf(stored));
        EXPECT_EQ(requests().size(), 16u) << "the model is not asked";
    }
}

TEST_F(DeviceInfoTest, TheBoardsOwnRecordIsChecked) {
    auto record = numbered<BspDevinfo>(0x40);
    EXPECT_EQ(answerOf([&] { return bspDevinfoSet(0, &record); }), Answer{BSP_E_NO_RECORD});
    EXPECT_EQ(trace(), Lines{});

    devices().eeprom.bytes[0x110] ^= 1;
    EXPECT_EQ(answerOf([&] { return bspDevinfoGet(0, &record); }), Answer{BSP_E_INVALID});
    devices().eeprom.bytes[0x100] ^= 1;
    EXPECT_EQ(answerOf([&] { return bspDevinfoGet(0, &record); }), Answer{BSP_E_NO_RECORD});
    EXPECT_EQ(bytesOf(record), bytesOf(numbered<BspDevinfo>(0x40)));
}

// The rest of the caller's buffer stays: a record shows no more than the supply has.
TEST_F(DeviceInfoTest, ASupplyIsShownInTheBoardsLayout) {
    for (const uint32_t index : {0x50u, 0x51u}) {
        const auto stored = numbered<BspSupplyRecord>(static_cast<uint8_t>(index));
        storeSupplyRecord(devices().supply[index - 0x50].eeprom, stored);
        BspDevinfo record;
        std::memset(&record, 0xEE, sizeof(record));
        EXPECT_EQ(answerOf([&] { return bspDevinfoGet(index, &record); }), Answer{BSP_OK});

        const Bytes supply = bytesOf(stored);
        Bytes expected(128, 0xEE);
        std::copy_n(supply.begin() + 64, 16, expected.begin() + 16);
        std::copy_n(supply.begin(), 32, expected.begin() + 32);
        std::copy_n(supply.begin() + 40, 24, expected.begin() + 64);
        std::copy_n(supply.begin() + 32, 4, expected.begin() + 103);
        EXPECT_EQ(bytesOf(record), expected);
    }
}

TEST_F(DeviceInfoTest, ASupplyIsStoredFromTheBoardsLayout) {
    for (const uint32_t index : {0x50u, 0x51u}) {
        auto record = numbered<BspDevinfo>(static_cast<uint8_t>(index)); // no magic needed
        const Bytes bytes = bytesOf(record);
        EXPECT_EQ(answerOf([&] { return bspDevinfoSet(index, &record); }), Answer{BSP_OK});
        EXPECT_EQ(bytesOf(record), bytes) << "no CRC either";

        Bytes expected(80, 0);
        std::copy_n(bytes.begin() + 32, 32, expected.begin());
        std::copy_n(bytes.begin() + 103, 4, expected.begin() + 32);
        std::copy_n(bytes.begin() + 64, 24, expected.begin() + 40);
        std::copy_n(bytes.begin() + 16, 16, expected.begin() + 64);
        EXPECT_EQ(supplyRecordIn(devices().supply[index - 0x50].eeprom), expected);
    }
}

TEST_F(DeviceInfoTest, StoringASupplyClearsWhatTheBoardsLayoutHasNoPlaceFor) {
    storeSupplyRecord(devices().supply[0].eeprom, numbered<BspSupplyRecord>(1));
    BspDevinfo record{};
    EXPECT_EQ(bspDevinfoGet(0x50, &record), BSP_OK);
    EXPECT_EQ(bspDevinfoSet(0x50, &record), BSP_OK);
    auto expected = numbered<BspSupplyRecord>(1);
    std::memset(expected.unused, 0, sizeof(expected.unused));
    BspSupplyRecord stored{};
    EXPECT_EQ(bspPowerPieGet(1, &stored), BSP_OK);
    EXPECT_EQ(bytesOf(stored), bytesOf(expected));
}

TEST_F(DeviceInfoTest, TheModelIsAskedBeforeTheSupply) {
    BspDevinfo record{};
    for (const auto call : kBoth) {
        std::filesystem::remove(boardFile("/tmp/bsp/devId"));
        EXPECT_EQ(call(0x51, &record), BSP_OK);
        Lines lines = withoutData(trace());
        lines.resize(3);
        const std::string operation = call == bspDevinfoGet ? "I2C read  " : "I2C write ";
        EXPECT_EQ(lines, (Lines{"open /tmp/bsp/devId", "CPLD read  reg 1 (device id) = 0x0709",
                                operation + "bus 0 ch 3 dev 0x50 off 0xB0 len 16"}));
    }
}

TEST_F(DeviceInfoTest, ThereAreNoMoreThanTwoSupplies) {
    for (const uint32_t index : {0x52u, 0x53u, 0x5Fu, 0x150u, 0x151u, 0xFFFFFF50u})
        expectRefused(index, BSP_E_INVALID);
    EXPECT_EQ(requests().size(), 1u) << "the device id and nothing else";
}

TEST_F(DeviceInfoTest, OtherIndexesHaveNoRecord) {
    for (const uint32_t index :
         {1u, 0x05u, 0x40u, 0x4Fu, 0x60u, 0xD0u, 0x100u, 0x500u, 0xFFFFFFFFu})
        expectRefused(index, BSP_E_NOT_SUPPORTED);
    EXPECT_EQ(trace(), Lines{});
}

TEST_F(DeviceInfoTest, OnlySuppliesOfTwoFanModelsHaveRecords) {
    for (const vb::Model &model : vb::kModels) {
        useModel(model.devId);
        BspDevinfo record{};
        const int32_t expected = model.supplies.haveBus ? BSP_OK : BSP_E_NOT_SUPPORTED;
        EXPECT_EQ(bspDevinfoGet(0x50, &record), expected) << model.devId;
        EXPECT_EQ(bspDevinfoSet(0x51, &record), expected) << model.devId;
    }
}

TEST_F(DeviceInfoTest, OtherModelsHaveNoSupplyWhateverItsNumber) {
    for (const uint32_t devId : {0x0109u, 0x0309u}) {
        useModel(devId);
        for (const uint32_t index : {0x50u, 0x52u, 0x150u})
            expectRefused(index, BSP_E_NOT_SUPPORTED);
        EXPECT_EQ(requests().size(), 1u) << "the device id and nothing else";
    }
}

TEST_F(DeviceInfoTest, WithoutADeviceIdNoSupplyIsReached) {
    addFault(refuse(vb::FaultDevice::Cpld, vb::FaultOp::Read, 6));
    expectRefused(0x50, 6, "-#: get devId failed\n");
    expectRefused(0x52, 6, "-#: get devId failed\n");
    addFault(openFails("/tmp/bsp/devId", EACCES));
    expectRefused(0x51, BSP_E_OPEN, "-#: get devId failed\n");
}

TEST_F(DeviceInfoTest, AFailedTransferOfASupplyGivesNothing) {
    addFault(refuse(vb::FaultDevice::I2c, vb::FaultOp::Any, 5));
    expectRefused(0x50, BSP_E_FAILED);
    expectRefused(0x51, BSP_E_FAILED);
}

TEST_F(DeviceInfoTest, AnUnpluggedSupplyDoesNotAnswer) {
    devices().supply[1].isPresent = 0;
    expectRefused(0x51, BSP_E_FAILED);
}

TEST_F(DeviceInfoTest, ANullRecordIsRefusedWhateverTheIndex) {
    for (const auto call : kBoth) {
        for (const uint32_t index : {0u, 0x50u, 0x52u, 0x40u})
            EXPECT_EQ(answerOf([&] { return call(index, nullptr); }), Answer{BSP_E_NULL});
    }
    EXPECT_EQ(trace(), Lines{});
}

} // namespace
