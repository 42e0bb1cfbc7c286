// The device id and its cache.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"

#include <fstream>

namespace {

using DeviceIdTest = VirtualBoardTest;

TEST_F(DeviceIdTest, IsReadFromTheCpldOnceAndThenFromTheCache) {
    uint32_t devId = 0;
    EXPECT_EQ(bspDevIdGet(&devId), BSP_OK);
    EXPECT_EQ(devId, 0x0709u);
    EXPECT_EQ(trace(), (Lines{"open /tmp/bsp/devId", "CPLD read  reg 1 (device id) = 0x0709"}));

    devId = 0;
    EXPECT_EQ(bspDevIdGet(&devId), BSP_OK);
    EXPECT_EQ(devId, 0x0709u);
    EXPECT_EQ(trace(), (Lines{"open /tmp/bsp/devId"}));
}

} // namespace
