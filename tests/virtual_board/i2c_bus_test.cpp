// Which device answers where on the I2C buses.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"

namespace {

class I2cBusTest : public VirtualBoardTest {
  protected:
    /** The first byte at a place; -1 when nothing answers. */
    static int byteAt(uint32_t bus, uint32_t channel, uint32_t device, uint32_t offset = 0) {
        uint8_t byte = 0;
        return bspI2cRead(bus, channel, device, offset, 1, &byte, 1) == BSP_OK ? byte : -1;
    }
};

TEST_F(I2cBusTest, EachBlockOfTheBoardsEepromHasItsAddress) {
    for (uint32_t block = 0; block < 4; ++block) {
        devices().eeprom.bytes[block * 256 + 9] = static_cast<uint8_t>(0x40 + block);
        EXPECT_EQ(byteAt(0, 0, 0x50 + block, 9), static_cast<int>(0x40 + block));
    }
    EXPECT_EQ(byteAt(0, 0, 0x4F), -1);
    EXPECT_EQ(byteAt(0, 0, 0x54), -1);
}

TEST_F(I2cBusTest, EachSupplyHasItsChannelAndOneBlock) {
    devices().supply[0].eeprom.bytes[3] = 0x11;
    devices().supply[1].eeprom.bytes[3] = 0x22;
    EXPECT_EQ(byteAt(0, 2, 0x50, 3), 0x11);
    EXPECT_EQ(byteAt(0, 3, 0x50, 3), 0x22);
    EXPECT_EQ(byteAt(0, 2, 0x51, 3), -1);
    EXPECT_EQ(byteAt(0, 1, 0x50, 3), -1);
    EXPECT_EQ(byteAt(0, 4, 0x50, 3), -1);
    EXPECT_EQ(byteAt(1, 2, 0x50, 3), -1);
}

TEST_F(I2cBusTest, AnUnpluggedSupplyAnswersNothing) {
    devices().supply[0].isPresent = 0;
    EXPECT_EQ(byteAt(0, 2, 0x50), -1);
    EXPECT_NE(byteAt(0, 3, 0x50), -1);
    const uint8_t data = 0;
    EXPECT_NE(bspI2cWrite(0, 2, 0x50, 0, 1, &data, 1), BSP_OK);
}

TEST_F(I2cBusTest, ModelsWithBuiltInSuppliesHaveNoSupplyEeprom) {
    useModel(0x0109);
    EXPECT_EQ(byteAt(0, 2, 0x50), -1);
    EXPECT_EQ(byteAt(0, 3, 0x50), -1);
    EXPECT_NE(byteAt(0, 0, 0x50), -1);
}

} // namespace
