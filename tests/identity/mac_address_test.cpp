// The base MAC address.

#include "bsp.h"
#include "tests/identity/records.h"
#include "tests/support/virtual_board_test.h"

#include <array>

namespace {

// Six octets and a byte that is not the address's.
using Mac = std::array<uint8_t, 7>;

class MacAddressTest : public VirtualBoardTest {
  protected:
    void store(const Mac &mac) {
        BspDevinfo record = numberedBoardRecord();
        std::memcpy(record.mac, mac.data(), 6);
        seal(record);
        storeBoardRecord(devices().eeprom, record);
    }

    static Mac get(uint32_t index) {
        Mac mac = {0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5};
        EXPECT_EQ(answerOf([&] { return bspMacAddrGet(index, mac.data()); }), Answer{BSP_OK});
        return mac;
    }
};

TEST_F(MacAddressTest, Index0IsTheAddressAboveTheBase) {
    store({0x00, 0x11, 0x22, 0x33, 0x44, 0x55});
    EXPECT_EQ(get(0), (Mac{0x00, 0x11, 0x22, 0x33, 0x44, 0x56, 0xA5}));
    EXPECT_EQ(get(1), (Mac{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0xA5}));
    EXPECT_EQ(get(0x50), (Mac{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0xA5}));
    EXPECT_EQ(get(0xFFFFFFFF), (Mac{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0xA5}));
}

TEST_F(MacAddressTest, NothingIsCarriedOutOfTheLastOctet) {
    store({0x00, 0x11, 0x22, 0x33, 0x44, 0xFF});
    EXPECT_EQ(get(0), (Mac{0x00, 0x11, 0x22, 0x33, 0x44, 0x00, 0xA5}));
    EXPECT_EQ(get(1), (Mac{0x00, 0x11, 0x22, 0x33, 0x44, 0xFF, 0xA5}));
}

TEST_F(MacAddressTest, IsReadFromTheBoardsRecordWhateverTheIndex) {
    get(0x50);
    const Lines lines = withoutData(requests());
    ASSERT_EQ(lines.size(), 8u);
    EXPECT_EQ(lines.front(), "I2C read  bus 0 ch 0 dev 0x51 off 0x00 len 16");
}

TEST_F(MacAddressTest, IsStoredAsItIsWhateverTheIndex) {
    for (const uint32_t index : {0u, 1u, 0x50u}) {
        BspDevinfo expected = numberedBoardRecord();
        storeBoardRecord(devices().eeprom, expected);
        const uint8_t mac[6] = {0x02, 0xAA, 0xBB, 0xCC, 0xDD, static_cast<uint8_t>(0xFE + index)};
        EXPECT_EQ(answerOf([&] { return bspMacAddrSet(index, mac); }), Answer{BSP_OK});
        std::memcpy(expected.mac, mac, sizeof(mac));
        seal(expected);
        EXPECT_EQ(boardRecordIn(devices().eeprom), bytesOf(expected))
            << "all else in the record survives";
        EXPECT_EQ(withoutData(requests()).size(), 16u);
    }
}

TEST_F(MacAddressTest, AGetAfterASetOfIndex0IsOneHigher) {
    const uint8_t mac[6] = {0x02, 0xAA, 0xBB, 0xCC, 0xDD, 0x10};
    EXPECT_EQ(bspMacAddrSet(0, mac), BSP_OK);
    EXPECT_EQ(get(0), (Mac{0x02, 0xAA, 0xBB, 0xCC, 0xDD, 0x11, 0xA5}));
}

TEST_F(MacAddressTest, ARecordThatCannotBeReadIsReported) {
    const struct {
        std::function<void()> spoil;
        int32_t status;
    } cases[] = {
        {[&] { devices().eeprom.bytes[0x110] ^= 1; }, BSP_E_INVALID},
        {[&] { devices().eeprom.bytes[0x100] ^= 1; }, BSP_E_NO_RECORD},
        {[&] { addFault(refuse(vb::FaultDevice::I2c, vb::FaultOp::Read, 5)); }, BSP_E_FAILED},
    };
    for (const auto &expected : cases) {
        expected.spoil();
        const Bytes spoilt = boardRecordIn(devices().eeprom);
        uint8_t mac[6] = {1, 2, 3, 4, 5, 6};
        EXPECT_EQ(answerOf([&] { return bspMacAddrGet(0, mac); }),
                  (Answer{expected.status, "bspMacAddrGet-#: devinfo get failed\n"}));
        EXPECT_EQ(bytesOf(mac), (Bytes{1, 2, 3, 4, 5, 6}));
        EXPECT_EQ(answerOf([&] { return bspMacAddrSet(0, mac); }),
                  (Answer{expected.status, "bspMacAddrSet-#: devinfo get failed\n"}));
        EXPECT_EQ(boardRecordIn(devices().eeprom), spoilt) << "a setter cannot repair a record";
    }
}

TEST_F(MacAddressTest, ARecordThatCannotBeWrittenIsReported) {
    addFault(refuse(vb::FaultDevice::I2c, vb::FaultOp::Write, 5));
    const uint8_t mac[6] = {1, 2, 3, 4, 5, 6};
    EXPECT_EQ(answerOf([&] { return bspMacAddrSet(1, mac); }),
              (Answer{BSP_E_FAILED, "bspMacAddrSet-#: devinfo set failed\n"}));
}

TEST_F(MacAddressTest, ANullAddressIsRefusedBeforeAnythingIsDone) {
    EXPECT_EQ(answerOf([] { return bspMacAddrGet(0, nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(answerOf([] { return bspMacAddrSet(0, nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(trace(), Lines{});
}

} // namespace
