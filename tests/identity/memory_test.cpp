// What happens when there is no memory for a work buffer. The linker leads this program's calls of
// calloc and malloc here.

#include "bsp.h"
#include "tests/identity/records.h"
#include "tests/support/virtual_board_test.h"

#include <cstdlib>

extern "C" {
void *__real_calloc(size_t count, size_t size);
void *__real_malloc(size_t size);
void *__wrap_calloc(size_t count, size_t size);
void *__wrap_malloc(size_t size);
}

namespace {
bool isMemoryGone = false;
}

void *__wrap_calloc(size_t count, size_t size) {
    return isMemoryGone ? nullptr : __real_calloc(count, size);
}

void *__wrap_malloc(size_t size) {
    return isMemoryGone ? nullptr : __real_malloc(size);
}

namespace {

class MemoryTest : public VirtualBoardTest {
  protected:
    /** A call without memory fails before any EEPROM is asked. */
    void expectOutOfMemory(const std::function<int32_t()> &call, const std::string &message = "") {
        const Answer answer = answerOf([&] {
            isMemoryGone = true;
            const int32_t status = call();
            isMemoryGone = false;
            return status;
        });
        EXPECT_EQ(answer, (Answer{BSP_E_NO_MEMORY, message}));
        for (const std::string &request : requests())
            EXPECT_NE(request.substr(0, 3), "I2C") << request;
    }
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
    isMemoryGone = true;
    const int32_t local = bspLocalPieGet(nullptr);
    const int32_t power = bspPowerPieGet(1, nullptr);
    isMemoryGone = false;
    EXPECT_EQ(local, BSP_E_NULL);
    EXPECT_EQ(power, BSP_E_NULL);
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
