// The arithmetic of clocks.

#include "virtual_board/board/clock_change.h"

#include <gtest/gtest.h>

namespace {

using vb::HostTime;
using vb::Pace;
using vb::TimeMode;

constexpr uint64_t kSecond = 1000000000;
constexpr uint64_t kStart = 1800000000 * kSecond;
constexpr uint64_t kUp = 5000 * kSecond;

HostTime hostAt(uint64_t seconds) {
    return {kStart + seconds * kSecond, kUp + seconds * kSecond};
}

vb::Clock clockWith(const Pace &pace) {
    vb::Clock clock = {};
    setPace(clock, pace, hostAt(0));
    clock.anchorNs = 0;
    return clock;
}

/** All clocks at one moment, in seconds since the start. */
struct Readings {
    double board, system, monotonic;
    bool operator==(const Readings &other) const = default;
};

Readings read(const vb::Clock &clock, const HostTime &host) {
    return {static_cast<double>(clockNow(clock, host.realNs)) / 1e9,
            static_cast<double>(systemClockNow(clock, host) - static_cast<int64_t>(kStart)) / 1e9,
            static_cast<double>(monotonicClockNow(clock, host) - static_cast<int64_t>(kUp)) / 1e9};
}

void PrintTo(const Readings &readings, std::ostream *out) {
    *out << readings.board << " " << readings.system << " " << readings.monotonic;
}

TEST(ClockTest, GoesAtItsRate) {
    const struct {
        Pace pace;
        Readings after10;
        vb::Difference difference;
    } cases[] = {
        {{TimeMode::Real}, {10, 10, 10}, vb::Difference::None},
        {{TimeMode::Virtual}, {0, 10, 10}, vb::Difference::None},
        {{TimeMode::Stepped}, {0, 0, 0}, vb::Difference::Pace},
        {{TimeMode::Scaled, 60000}, {600, 600, 600}, vb::Difference::Pace},
        {{TimeMode::Scaled, 1000}, {10, 10, 10}, vb::Difference::Pace},
        {{TimeMode::Scaled, 1}, {0.01, 0.01, 0.01}, vb::Difference::Pace},
    };
    for (const auto &[pace, after10, difference] : cases) {
        const vb::Clock clock = clockWith(pace);
        EXPECT_EQ(read(clock, hostAt(0)), (Readings{0, 0, 0}));
        EXPECT_EQ(read(clock, hostAt(10)), after10);
        EXPECT_EQ(clock.difference, difference);
        EXPECT_TRUE(clockIsConsistent(clock, kStart));
    }
}

TEST(ClockTest, GoesOnFromWhereItIsWhenThePaceChanges) {
    vb::Clock clock = clockWith({TimeMode::Scaled, 2000});
    setPace(clock, {TimeMode::Stepped}, hostAt(10));
    EXPECT_EQ(read(clock, hostAt(15)), (Readings{20, 20, 20}));
    moveClock(clock, 5 * kSecond);
    EXPECT_EQ(read(clock, hostAt(16)), (Readings{25, 25, 25}));
    setPace(clock, {}, hostAt(20));
    EXPECT_EQ(read(clock, hostAt(30)), (Readings{35, 35, 35}));
    EXPECT_EQ(clock.difference, vb::Difference::Offset);
    setPace(clock, {TimeMode::Virtual}, hostAt(30));
    moveClock(clock, 100 * kSecond);
    EXPECT_EQ(read(clock, hostAt(40)), (Readings{135, 45, 45}));
    setPace(clock, {TimeMode::Scaled, 500}, hostAt(40));
    EXPECT_EQ(read(clock, hostAt(50)), (Readings{140, 50, 50}));
}

TEST(ClockTest, ThatIsSetKeepsItsPace) {
    vb::Clock clock = clockWith({TimeMode::Scaled, 2000});
    setSystemOffset(clock, -100 * static_cast<int64_t>(kSecond));
    EXPECT_EQ(read(clock, hostAt(10)), (Readings{20, -80, 20}));
    setPace(clock, {}, hostAt(10));
    EXPECT_EQ(read(clock, hostAt(20)), (Readings{30, -70, 30}));
    setSystemOffset(clock, 0);
    EXPECT_EQ(read(clock, hostAt(20)), (Readings{30, 30, 30}));
}

TEST(ClockTest, LengthsOfTheHostAreRoundedUp) {
    EXPECT_EQ(vb::unscaled(1000, 1000), 1000u);
    EXPECT_EQ(vb::unscaled(1000, 60000), 17u);
    EXPECT_EQ(vb::unscaled(1, 1000000), 1u);
    EXPECT_EQ(vb::unscaled(1, 1), 1000u);
    EXPECT_EQ(vb::unscaled(UINT64_MAX, 1), UINT64_MAX);
    EXPECT_EQ(vb::unscaled(UINT64_MAX, 1000), UINT64_MAX);
}

TEST(ClockTest, ScaledLengthsDoNotOverflow) {
    EXPECT_EQ(vb::scaled(1001, 1500), 1501);
    EXPECT_EQ(vb::scaled(-1000, 1500), -1500);
    EXPECT_EQ(vb::scaled(INT64_MAX, 1000), INT64_MAX);
    EXPECT_GT(vb::scaled(INT64_MAX, 1000000), INT64_MAX / 2);
    EXPECT_LT(vb::scaled(-INT64_MAX, 1000000), -(INT64_MAX / 2));
}

TEST(ClockTest, ImpossiblePacesAreRefused) {
    for (const Pace &pace : {Pace{TimeMode::Scaled, 0}, Pace{TimeMode::Scaled, 1000001},
                             Pace{TimeMode::Real, 2000}, Pace{static_cast<TimeMode>(4), 1000}}) {
        vb::Clock clock = clockWith({});
        clock.pace = pace;
        EXPECT_FALSE(clockIsConsistent(clock, kStart));
    }
}

TEST(ClockTest, IsMendedBehindAnInterruptedChange) {
    vb::Clock clock = clockWith({TimeMode::Scaled, 2000});
    clock.changes = 7;
    clock.difference = vb::Difference::None;
    mendClock(clock, hostAt(10));
    EXPECT_EQ(clock.changes, 8u);
    EXPECT_EQ(clock.difference, vb::Difference::Pace);
    EXPECT_EQ(read(clock, hostAt(10)), (Readings{20, 20, 20}));
}

TEST(ClockTest, GoesOnWhenTheHostHasStartedAnew) {
    vb::Clock clock = clockWith({TimeMode::Stepped});
    moveClock(clock, 50 * kSecond);
    const HostTime anew = {kStart + 100 * kSecond, 3 * kSecond};
    mendClock(clock, anew);
    EXPECT_EQ(read(clock, anew), (Readings{50, 50, 50}));
    vb::Clock real = clockWith({});
    mendClock(real, anew);
    EXPECT_EQ(monotonicClockNow(real, anew), static_cast<int64_t>(3 * kSecond)); // the host's
}

} // namespace
