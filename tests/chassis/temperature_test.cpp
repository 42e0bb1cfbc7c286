// The temperature sensor.

#include "bsp.h"
#include "tests/support/device_ids.h"
#include "tests/support/recorded_devices.h"
#include "tests/support/virtual_board_test.h"

namespace {

class TemperatureTest : public VirtualBoardTest {
  protected:
    MemoryDevice sensor{0, 1, 0x4F};
};

TEST_F(TemperatureTest, IsTheSensorsSignedByte) {
    constexpr std::pair<uint8_t, int32_t> kCases[] = {
        {0x00, 0}, {0x2A, 42}, {0x7F, 127}, {0x80, -128}, {0xF6, -10}, {0xFF, -1},
    };
    for (const auto &[stored, degrees] : kCases) {
        const uint8_t byte = stored;
        sensor.bytes[0] = byte;
        int32_t out = 0x5A5A5A5A;
        EXPECT_EQ(answerOf([&] { return bspTemperGet(byte, &out); }), kSilentSuccess);
        EXPECT_EQ(out, degrees);
        EXPECT_EQ(sensor.take(), (Lines{"read -- len 1"})) << "whatever sensor is asked for";
    }
}

TEST_F(TemperatureTest, IsAskedOnceAndFailureLeavesTheOutputAlone) {
    sensor.fail(1, -5);
    sensor.arriveInFailure = 1;
    int32_t out = 0x5A5A5A5A;
    EXPECT_EQ(answerOf([&] { return bspTemperGet(0, &out); }), Answer{-5});
    EXPECT_EQ(out, 0x5A5A5A5A);
    EXPECT_EQ(sensor.take().size(), 1u);
}

TEST_F(TemperatureTest, DependsOnNoModel) {
    sensor.bytes[0] = 30;
    for (const uint32_t devId : allIds()) {
        pretendDeviceId(devId);
        int32_t out = 0;
        EXPECT_EQ(bspTemperGet(0, &out), BSP_OK);
        EXPECT_EQ(out, 30) << devId;
    }
    addFault(openFails("/tmp/bsp/devId", EACCES));
    int32_t out = 0;
    EXPECT_EQ(bspTemperGet(0, &out), BSP_OK);
}

TEST_F(TemperatureTest, ANullOutputIsRefusedBeforeTheSensorIsAsked) {
    EXPECT_EQ(answerOf([] { return bspTemperGet(0, nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(sensor.take(), Lines{});
}

} // namespace
