// What happens when there is no memory for a work buffer.

#include "bsp.h"
#include "tests/identity/records.h"
#include "tests/support/recorder.h"
#include "tests/support/virtual_board_test.h"

namespace {

class MemoryTest : public VirtualBoardTest {
  protected:
    MemoryTest() {
        recorder.failAlways("malloc", 0);
        recorder.failAlways("calloc", 0);
    }

    /** A call without memory fails before any EEPROM is asked. */
    void expectOutOfMemory(const std::function<int32_t()> &call, const std::string &message = "") {
        EXPECT_EQ(recorder.run(call), (Answer{BSP_E_NO_MEMORY, message}));
        for (const std::string &request : requests())
            EXPECT_NE(request.substr(0, 3), "I2C") << request;
    }

    Recorder recorder;
};

TEST_F(MemoryTest, RecordsAreReadThroughAWorkBuffer) {
    const auto untouched = numbered<BspDevinfo>(0x40);
    const auto untouchedSupply = numbered<BspSupplyRecord>(0x40);
    BspDevinfo record = untouched;
    BspSupplyRecord supply = untouchedSupply;
    expectOutOfMemory([&] { return bspLocalPieGet(&record); });
    expectOutOfMemory([&] { return bspPowerPieGet(1, &supply); });
    expectOutOfMemory([&] { return bspDevinfoGet(0, &record); });
    expectOutOfMemory([&] { return bspDevinfoGet(0x50, &record); });
    EXPECT_EQ(bytesOf(record), bytesOf(untouched));
    EXPECT_EQ(bytesOf(supply), bytesOf(untouchedSupply));
}

TEST_F(MemoryTest, TheSupplysNumberIsLookedAtLater) {
    BspSupplyRecord supply{};
    expectOutOfMemory([&] { return bspPowerPieGet(3, &supply); });
}

TEST_F(MemoryTest, ANullRecordIsNoticedEarlier) {
    EXPECT_EQ(bspLocalPieGet(nullptr), BSP_E_NULL);
    EXPECT_EQ(bspPowerPieGet(1, nullptr), BSP_E_NULL);
}

TEST_F(MemoryTest, WhoeverReadsTheBoardsRecordReportsIt) {
    uint8_t mac[6] = {};
    char serial[64] = {};
    uint32_t len = 0;
    expectOutOfMemory([&] { return bspMacAddrGet(0, mac); },
                      "bspMacAddrGet-#: devinfo get failed\n");
    expectOutOfMemory([&] { return bspMacAddrSet(0, mac); },
                      "bspMacAddrSet-#: devinfo get failed\n");
    expectOutOfMemory([&] { return bspSerialNumGet(serial, &len); },
                      "bspSerialNumGet-#: devinfo get failed\n");
    expectOutOfMemory([] { return bspSerialNumSet("ABC", 3); },
                      "bspSerialNumSet-#: devinfo get failed\n");
}

} // namespace
