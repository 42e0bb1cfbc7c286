// Fans: speed, level, presence.

#include "bsp.h"
#include "tests/chassis/chassis_models.h"
#include "tests/support/device_ids.h"
#include "tests/support/recorded_devices.h"
#include "tests/support/virtual_board_test.h"

namespace {

class FanTest : public VirtualBoardTest {
  protected:
    uint32_t speedOf(uint32_t fan) {
        uint32_t speed = kMark;
        EXPECT_EQ(answerOf([&] { return bspFanSpeedGet(fan, &speed); }), kSilentSuccess);
        return speed;
    }

    uint32_t presenceOf(int32_t fan) {
        uint32_t isPresent = kMark;
        EXPECT_EQ(answerOf([&] { return bspFanPresentGet(fan, &isPresent); }), kSilentSuccess);
        return isPresent;
    }

    /** No such fan: nothing is asked, nothing is stored. */
    void expectNoFan(uint32_t fan) {
        uint32_t out = kMark;
        EXPECT_EQ(answerOf([&] { return bspFanSpeedGet(fan, &out); }), Answer{BSP_E_INVALID});
        EXPECT_EQ(answerOf([&] { return bspFanPresentGet(static_cast<int32_t>(fan), &out); }),
                  Answer{BSP_E_INVALID});
        EXPECT_EQ(out, kMark);
        EXPECT_EQ(cpld.take(), Lines{});
    }

    CpldRegisters cpld;
};

TEST_F(FanTest, EachModelHasItsFansAndNoMore) {
    for (const uint32_t devId : allIds()) {
        SCOPED_TRACE(devId);
        pretendDeviceId(devId);
        const uint32_t count = isOneOf(devId, kFourFan) ? 4 : 2;
        for (uint32_t fan = 1; fan <= count; ++fan) {
            speedOf(fan);
            presenceOf(static_cast<int32_t>(fan));
        }
        cpld.take();
        for (const uint32_t fan : {0u, count + 1, 5u, 256u + 1, 0x80000001u, UINT32_MAX})
            expectNoFan(fan);
    }
}

TEST_F(FanTest, SpeedIs120TimesTheTachometersCount) {
    for (const uint32_t devId : allIds()) {
        SCOPED_TRACE(devId);
        pretendDeviceId(devId);
        cpld.reg[28] = 0x0201;
        cpld.reg[29] = 0xFF04;
        EXPECT_EQ(speedOf(1), 120u);
        EXPECT_EQ(speedOf(2), isOneOf(devId, kTwoFan) ? 120u : 240u);
        EXPECT_EQ(cpld.take(), (Lines{"read 28", "read 28"}));
        if (isOneOf(devId, kFourFan)) {
            EXPECT_EQ(speedOf(3), 480u);
            EXPECT_EQ(speedOf(4), 30600u);
            EXPECT_EQ(cpld.take(), (Lines{"read 29", "read 29"}));
        }
    }
}

TEST_F(FanTest, StandingFansHaveNoSpeed) {
    EXPECT_EQ(speedOf(1), 0u);
}

struct PresenceCase {
    const DeviceIds &models;
    int32_t fan;
    unsigned reg;
    uint16_t bit;
};

TEST_F(FanTest, PresenceIsALineOfEachPair) {
    const PresenceCase cases[] = {
        {kFourFan, 1, 30, 0x0001}, {kFourFan, 2, 30, 0x0001}, {kFourFan, 3, 30, 0x0002},
        {kFourFan, 4, 30, 0x0002}, {kTwoFan, 1, 31, 0x0100},  {kTwoFan, 2, 31, 0x0100},
    };
    for (const PresenceCase &row : cases) {
        for (const uint32_t devId : row.models) {
            SCOPED_TRACE(listed({devId, row.fan}));
            pretendDeviceId(devId);
            cpld.reg.fill(0);
            cpld.reg[row.reg] = row.bit;
            EXPECT_EQ(presenceOf(row.fan), 1u);
            cpld.reg.fill(0xFFFF);
            cpld.reg[row.reg] = static_cast<uint16_t>(~row.bit);
            EXPECT_EQ(presenceOf(row.fan), 0u);
            const std::string read = "read " + std::to_string(row.reg);
            EXPECT_EQ(cpld.take(), (Lines{read, read}));
        }
    }
}

TEST_F(FanTest, OtherModelsSeeNoFanAndDoNotLook) {
    cpld.reg.fill(0xFFFF);
    for (const uint32_t devId : allIds()) {
        if (isOneOf(devId, kFourFan) || isOneOf(devId, kTwoFan))
            continue;
        pretendDeviceId(devId);
        EXPECT_EQ(presenceOf(1), 0u) << devId;
        EXPECT_EQ(presenceOf(2), 0u) << devId;
    }
    EXPECT_EQ(cpld.take(), Lines{});
}

TEST_F(FanTest, WithoutADeviceIdNothingIsKnown) {
    addFault(openFails("/tmp/bsp/devId", EACCES));
    uint32_t out = kMark;
    EXPECT_EQ(answerOf([&] { return bspFanSpeedGet(0, &out); }),
              (Answer{BSP_E_OPEN, "bspFanSpeedGet-#: get devId failed\n"}));
    EXPECT_EQ(answerOf([&] { return bspFanPresentGet(0, &out); }),
              (Answer{BSP_E_OPEN, "bspFanPresentGet-#: get devId failed\n"}));
    EXPECT_EQ(out, kMark);
    EXPECT_EQ(cpld.take(), Lines{});
    EXPECT_EQ(answerOf([] { return bspFanSpeedSet(1, 1); }), kSilentSuccess) << "any model";
}

TEST_F(FanTest, AnUnreadableRegisterLeavesTheOutputAlone) {
    pretendDeviceId(0x0309);
    cpld.fail(1, 5);
    uint32_t out = kMark;
    EXPECT_EQ(answerOf([&] { return bspFanSpeedGet(3, &out); }), Answer{5});
    EXPECT_EQ(answerOf([&] { return bspFanPresentGet(3, &out); }), Answer{5});
    EXPECT_EQ(out, kMark);
}

struct LevelCase {
    uint32_t fan;
    int32_t level;
    uint16_t before;
    int32_t status;
    const char *written;
};

TEST_F(FanTest, LevelIsBits5To8OfRegister6) {
    constexpr LevelCase kCases[] = {
        {1, 1, 0xFFFF, BSP_OK, "write 6 = FE1F"},  {1, 10, 0x0000, BSP_OK, "write 6 = 0120"},
        {1, 10, 0xFFFF, BSP_OK, "write 6 = FF3F"}, {0, 2, 0xC000, BSP_OK, "write 6 = C020"},
        {9, 9, 0x1234, BSP_OK, "write 6 = 1314"},  {UINT32_MAX, 6, 0, BSP_OK, "write 6 = 00A0"},
        {1, 0, 0, BSP_E_INVALID, nullptr},         {1, 11, 0, BSP_E_INVALID, nullptr},
        {1, -1, 0, BSP_E_INVALID, nullptr},        {1, INT32_MIN, 0, BSP_E_INVALID, nullptr},
        {1, INT32_MAX, 0, BSP_E_INVALID, nullptr}, {1, 257, 0, BSP_E_INVALID, nullptr},
    };
    for (const LevelCase &row : kCases) {
        cpld.reg[6] = row.before;
        EXPECT_EQ(answerOf([&] { return bspFanSpeedSet(row.fan, row.level); }), Answer{row.status});
        EXPECT_EQ(cpld.take(), row.written != nullptr ? (Lines{"read 6", row.written}) : Lines{});
    }
}

TEST_F(FanTest, LevelFailuresAreThoseOfTheRegister) {
    cpld.fail(1, 5);
    EXPECT_EQ(answerOf([] { return bspFanSpeedSet(1, 3); }), Answer{5});
    EXPECT_EQ(cpld.take(), (Lines{"read 6"}));
    cpld.fail(2, 6);
    EXPECT_EQ(answerOf([] { return bspFanSpeedSet(1, 3); }), Answer{6});
    EXPECT_EQ(cpld.take(), (Lines{"read 6", "write 6 = 0040"}));
}

TEST_F(FanTest, NullOutputsAreRefusedBeforeAnythingIsAsked) {
    for (const uint32_t fan : {1u, 5u}) {
        EXPECT_EQ(answerOf([&] { return bspFanSpeedGet(fan, nullptr); }), Answer{BSP_E_NULL});
        EXPECT_EQ(answerOf([&] { return bspFanPresentGet(static_cast<int32_t>(fan), nullptr); }),
                  Answer{BSP_E_NULL});
    }
    EXPECT_EQ(cpld.take(), Lines{});
}

} // namespace
