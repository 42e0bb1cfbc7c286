// How PoE ports come up, share the budget and go down, in the board's time.

#include "tests/virtual_board/poe_test.h"

namespace {

using vb::PoeSignature;
using State = std::pair<int, int>;

// Bytes 3 and 4 of a port's status.
constexpr State kDisabled = {0, 0xF0};
constexpr State kNotLooked = {1, 0xF0};
constexpr State kOpen = {1, 0xF6};
constexpr State kDeniedClass4 = {6, 0x44};
constexpr State kPoweredClass4 = {2, 0x44};

class PoePortsTest : public PoeTest {
  protected:
    void SetUp() override {
        PoeTest::SetUp();
        bringUp(370000);
        sleepMs(500);
    }

    void usePriority(uint8_t port, uint8_t priority) {
        EXPECT_EQ(ask({0x15, 1, port, priority})[3], 0);
    }
    void useBudget(uint32_t milliwatts) {
        const uint32_t code = milliwatts / 100;
        ask({0x04, 1, 0, static_cast<uint8_t>(code >> 8), static_cast<uint8_t>(code), 0, 0});
    }
    static uint32_t word(const PoeBytes &bytes, size_t at) {
        return static_cast<uint32_t>(bytes[at] << 8 | bytes[at + 1]);
    }
};

TEST_F(PoePortsTest, AGoodDeviceIsDetectedClassifiedAndPoweredInTime) {
    EXPECT_EQ(status(0), kOpen);
    plug(0, good(4, 25500, 18000));
    const uint64_t start = now();
    const auto at = [&](uint64_t ms) {
        const uint64_t due = start + ms * 1000000 - 10000000; // a question takes 10 ms
        usleep(static_cast<useconds_t>((due - now()) / 1000));
        return status(0);
    };
    EXPECT_EQ(at(500), (State{1, 0xF6})); // asked 10 ms before
    EXPECT_EQ(at(520), (State{1, 0xF4}));
    EXPECT_EQ(at(620), (State{1, 0x44}));
    EXPECT_EQ(at(700), (State{1, 0x44}));
    EXPECT_EQ(at(720), kPoweredClass4);
}

TEST_F(PoePortsTest, AnUnpluggedDeviceIsNoticed) {
    plug(0, good(4, 25500, 18000));
    sleepMs(1000);
    EXPECT_EQ(status(0), kPoweredClass4);
    plug(0, {});
    sleepMs(380);
    EXPECT_EQ(status(0), kPoweredClass4);
    sleepMs(20);
    EXPECT_EQ(status(0).first, 1);
    sleepMs(600);
    EXPECT_EQ(status(0), kOpen);
    EXPECT_EQ(ask({0x45, 1, 0, 1})[6], 1); // counted once, then cleared
    EXPECT_EQ(ask({0x45, 1, 0, 0})[6], 0);
}

TEST_F(PoePortsTest, WhatIsNotADeviceGetsNoPower) {
    const struct {
        PoeSignature signature;
        State expected;
    } cases[] = {{PoeSignature::Bad, {1, 0xF3}},
                 {PoeSignature::Legacy, {1, 0xF2}},
                 {PoeSignature::Open, kOpen},
                 {PoeSignature::Short, {4, 2}}};
    for (const auto &[signature, expected] : cases) {
        plug(3, {1, signature, 4, 0, 10000, 10000});
        sleepMs(2000);
        EXPECT_EQ(status(3), expected);
        plug(3, {});
        sleepMs(1000);
        EXPECT_EQ(status(3), kOpen);
    }
}

TEST_F(PoePortsTest, ALegacyDeviceIsPoweredWhereThatIsEnabled) {
    EXPECT_EQ(ask({0x09, 1, 3, 1})[3], 0);
    plug(3, {1, PoeSignature::Legacy, 4, 0, 10000, 10000});
    sleepMs(1000);
    EXPECT_EQ(status(3), (State{2, 0x02}));
}

TEST_F(PoePortsTest, OverloadsAndShortsAreCutOff) {
    const vb::PoweredDevice usual = good(4, 25500, 18000);
    vb::PoweredDevice overCurrent = usual;
    overCurrent.isOverCurrent = 1;
    vb::PoweredDevice overLimit = usual;
    overLimit.drawnMw = 30001; // class 4 is 30 W
    vb::PoweredDevice shorted = usual;
    shorted.signature = PoeSignature::Short;
    const struct {
        vb::PoweredDevice device;
        State expected;
    } cases[] = {{overCurrent, {4, 1}}, {overLimit, {4, 1}}, {shorted, {4, 2}}};
    for (const auto &[device, expected] : cases) {
        plug(0, usual);
        sleepMs(1000);
        EXPECT_EQ(status(0), kPoweredClass4);
        plug(0, device);
        sleepMs(40);
        EXPECT_EQ(status(0), kPoweredClass4);
        sleepMs(20);
        EXPECT_EQ(status(0), expected);
        sleepMs(5000);
        EXPECT_EQ(status(0), expected);
    }
}

TEST_F(PoePortsTest, AFixedLimitReplacesTheClass) {
    EXPECT_EQ(ask({0x12, 1, 0, 2})[3], 0);
    EXPECT_EQ(ask({0x14, 1, 0, 40})[3], 0); // 16 W
    plug(0, good(4, 25500, 16000));
    sleepMs(1000);
    EXPECT_EQ(status(0), kPoweredClass4);
    plug(0, good(4, 25500, 16001));
    sleepMs(1000);
    EXPECT_EQ(status(0).first, 4);
}

TEST_F(PoePortsTest, DisablingTakesPowerAndEnablingGivesItAgain) {
    plug(0, good(4, 25500, 18000));
    sleepMs(1000);
    EXPECT_EQ(ask({0x01, 1, 0, 0})[3], 0);
    EXPECT_EQ(status(0), kDisabled);
    EXPECT_EQ(ask({0x01, 1, 0, 1})[3], 0);
    sleepMs(1000);
    EXPECT_EQ(status(0), kPoweredClass4);
    ask({0x00, 1, 0}, 1000);
    EXPECT_EQ(status(0), kDisabled);
    EXPECT_EQ(status(1), kDisabled);
}

TEST_F(PoePortsTest, ASemiAutomaticPortWaitsForPower) {
    EXPECT_EQ(ask({0x08, 1, 0, 1})[3], 0);
    plug(0, good(4, 25500, 18000));
    sleepMs(5000);
    EXPECT_EQ(status(0), (State{1, 0x44}));
    EXPECT_EQ(ask({0x01, 1, 0, 2})[3], 0);
    sleepMs(100);
    EXPECT_EQ(status(0), kPoweredClass4);
}

TEST_F(PoePortsTest, AManualPortDoesWhatIsTriggered) {
    EXPECT_EQ(ask({0x08, 1, 0, 2})[3], 0);
    plug(0, good(4, 25500, 18000));
    sleepMs(5000);
    EXPECT_EQ(status(0), kNotLooked);
    EXPECT_EQ(ask({0x0A, 0, 0, 1})[3], 0);
    EXPECT_EQ(ask({0x0A, 1, 0, 0xFF, 1})[3], 1); // still at it
    sleepMs(1000);
    EXPECT_EQ(ask({0x0A, 1, 0, 0xFF, 1})[3], 0);
    EXPECT_EQ(status(0), (State{1, 0xF4}));
    EXPECT_EQ(ask({0x0B, 1, 0, 1})[3], 0);
    sleepMs(1000);
    EXPECT_EQ(status(0), (State{1, 0x44}));
    EXPECT_EQ(ask({0x18, 1, 0, 3})[3], 0);
    sleepMs(1000);
    EXPECT_EQ(status(0), kPoweredClass4);
    EXPECT_EQ(ask({0x18, 1, 0, 0})[3], 0);
    EXPECT_EQ(status(0).first, 1);
    sleepMs(5000);
    EXPECT_EQ(status(0).first, 1);
}

TEST_F(PoePortsTest, TheBudgetDeniesTheLastAndGivesWhatIsFreed) {
    ask({0x10, 1, 3}); // what devices ask for, first come, first served
    useBudget(60000);
    plug(0, good(4, 30000, 10000));
    plug(1, good(4, 30000, 10000));
    sleepMs(1000);
    plug(2, good(4, 30000, 10000));
    sleepMs(1000);
    EXPECT_EQ(status(0), kPoweredClass4);
    EXPECT_EQ(status(1), kPoweredClass4);
    EXPECT_EQ(status(2), kDeniedClass4);
    EXPECT_EQ(ask({0x45, 1, 2, 0})[5], 1);
    plug(0, {});
    sleepMs(1000);
    EXPECT_EQ(status(2), kPoweredClass4);
}

TEST_F(PoePortsTest, AReserveIsNotGiven) {
    ask({0x04, 1, 0, 0x01, 0x2C, 0x00, 0x01}); // 30 W, 0.1 W of it reserved
    plug(0, good(4, 30000, 10000));
    sleepMs(1000);
    EXPECT_EQ(status(0), kDeniedClass4);
}

TEST_F(PoePortsTest, AMoreImportantPortTakesThePowerOfLessImportantOnes) {
    ask({0x10, 1, 1}); // what devices ask for, by priority
    useBudget(60000);
    usePriority(5, 2);
    usePriority(0, 1);
    plug(0, good(4, 30000, 10000));
    plug(1, good(4, 30000, 10000));
    sleepMs(1000);
    plug(5, good(4, 30000, 10000));
    sleepMs(1000);
    EXPECT_EQ(status(0), kPoweredClass4);
    EXPECT_EQ(status(1), kDeniedClass4);
    EXPECT_EQ(status(5), kPoweredClass4);
    // A less important one takes from nobody.
    plug(6, good(4, 30000, 10000));
    sleepMs(1000);
    EXPECT_EQ(status(6), kDeniedClass4);
}

TEST_F(PoePortsTest, PowerManagementCountsWhatIsDrawn) {
    useBudget(60000); // with the default mode: what devices draw, by priority
    for (uint32_t port = 0; port < 4; ++port)
        plug(port, good(4, 15000, 10000));
    sleepMs(3000);
    for (uint8_t port = 0; port < 4; ++port)
        EXPECT_EQ(status(port), kPoweredClass4);
    usePriority(3, 1);
    plug(3, good(4, 30000, 30000));
    sleepMs(100);
    EXPECT_EQ(status(3), kPoweredClass4);
    plug(0, good(4, 30000, 20100)); // 70.1 W together: the last of the least important goes
    sleepMs(100);
    EXPECT_EQ(status(3), kPoweredClass4);
    EXPECT_EQ(status(0), kPoweredClass4);
    EXPECT_EQ(status(1).first, 6);
    EXPECT_EQ(status(2).first, 6);
}

TEST_F(PoePortsTest, ASmallerBudgetTakesPowerAway) {
    plug(0, good(4, 25500, 20000));
    plug(1, good(4, 25500, 20000));
    sleepMs(1000);
    useBudget(39900);
    EXPECT_EQ(status(0), kPoweredClass4);
    EXPECT_EQ(status(1), kDeniedClass4);
    useBudget(60000);
    sleepMs(200);
    EXPECT_EQ(status(1), kPoweredClass4);
}

TEST_F(PoePortsTest, WithoutPowerManagementEverybodyIsServed) {
    ask({0x10, 1, 0});
    useBudget(1000);
    plug(0, good(4, 25500, 20000));
    sleepMs(1000);
    EXPECT_EQ(status(0), kPoweredClass4);
}

TEST_F(PoePortsTest, MeasurementsFollowTheDevice) {
    PoeBytes measured = ask({0x44, 1, 0});
    EXPECT_EQ(word(measured, 3), 0u);
    EXPECT_EQ(word(measured, 9), 0u);
    plug(0, good(4, 25500, 18000));
    plug(1, good(3, 10000, 5000));
    sleepMs(1000);
    measured = ask({0x44, 1, 0});
    const uint32_t millivolts = word(measured, 3) * 64450 / 1000;
    EXPECT_NEAR(millivolts, 54000, 200);
    EXPECT_EQ(word(measured, 5), uint64_t{18000} * 1000000 / (word(measured, 3) * 64450));
    EXPECT_NEAR((220 - static_cast<int>(word(measured, 7))) * 1.25, 39, 1.5);
    EXPECT_EQ(word(measured, 9), 180u);
    const PoeBytes totals = ask({0x41, 1});
    EXPECT_EQ(word(totals, 4), 3700u);
    EXPECT_EQ(word(totals, 7), 230u);

    // The ripple changes with time only.
    EXPECT_EQ(ask({0x44, 1, 0}, 10), measured);
    sleepMs(100);
    const PoeBytes later = ask({0x44, 1, 0});
    EXPECT_NE(later, measured);
    const PoeBytes pairs = ask({0x4F, 1, 0});
    EXPECT_EQ(word(pairs, 5) + word(pairs, 9), word(later, 5));
}

TEST_F(PoePortsTest, EventsTellWhichPortsToLookAt) {
    ask({0x16, 1, 6});
    plug(9, good(4, 25500, 18000));
    sleepMs(1000);
    PoeBytes events = ask({0x46, 1, 1});
    EXPECT_EQ(events[3], 6);
    EXPECT_EQ(events[5], 0x02); // port 9
    events = ask({0x46, 1, 0});
    EXPECT_EQ(events[3], 0);
    EXPECT_EQ(events[5], 0);
}

TEST_F(PoePortsTest, AResetPortStartsOverWithItsDefaults) {
    plug(0, good(4, 25500, 18000));
    usePriority(0, 3);
    sleepMs(1000);
    EXPECT_EQ(ask({0x03, 1, 0, 1})[3], 0);
    EXPECT_EQ(status(0), kNotLooked);
    EXPECT_EQ(ask({0x49, 1, 0})[6], 0);
    sleepMs(1000);
    EXPECT_EQ(status(0), kPoweredClass4);
}

TEST_F(PoePortsTest, ALongIdleTimeIsCaughtUpAtOnce) {
    plug(0, good(4, 25500, 18000));
    sleep(100000000);
    EXPECT_EQ(status(0), kPoweredClass4);
}

} // namespace
