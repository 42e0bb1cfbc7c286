// The system clock as programs set and read it: the board's, never the host's.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"
#include "tests/support/world.h"
#include "virtual_board/os/timespec64.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <linux/capability.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

// What programs with 64-bit time call on 32-bit systems.
extern "C" {
int wideClockSettime(clockid_t clock, const vb::Timespec64 *time) __asm__("__clock_settime64");
int wideClockGettime(clockid_t clock, vb::Timespec64 *time) __asm__("__clock_gettime64");
int64_t wideTime(int64_t *out) __asm__("__time64");
int wideGettimeofday(vb::Timeval64 *time, void *zone) __asm__("__gettimeofday64");
int wideSettimeofday(const vb::Timeval64 *time, const void *zone) __asm__("__settimeofday64");
}

namespace {

using world::get;
using world::set;

constexpr int64_t kIn2030 = 1900000000;
constexpr int64_t kIn2051 = 2570445296; // 2051-06-15 12:34:56, more than 31 bits hold
constexpr int64_t kLate = 60;           // seconds that a test may take between two readings
constexpr int64_t kLastSecond = 8277292035;
constexpr int64_t kMark = 0x5A5A5A5A;

/** A time, or the errno with which it was refused. */
struct Moment {
    int64_t seconds, fraction;
    int error;
};

// The calls under their plain names, and under those for 64-bit time.
struct Plain {
    using Nanotime = timespec;
    using Microtime = timeval;
    using Seconds = time_t;
    static int set(clockid_t clock, const Nanotime *time) { return clock_settime(clock, time); }
    static int get(clockid_t clock, Nanotime *time) { return clock_gettime(clock, time); }
    static int setDay(const Microtime *time, const void *zone) {
        return settimeofday(time, static_cast<const struct timezone *>(zone));
    }
    static int getDay(Microtime *time) { return gettimeofday(time, nullptr); }
    static Seconds seconds(Seconds *out) { return time(out); }
};
struct Wide {
    using Nanotime = vb::Timespec64;
    using Microtime = vb::Timeval64;
    using Seconds = int64_t;
    static int set(clockid_t clock, const Nanotime *time) { return wideClockSettime(clock, time); }
    static int get(clockid_t clock, Nanotime *time) { return wideClockGettime(clock, time); }
    static int setDay(const Microtime *time, const void *zone) {
        return wideSettimeofday(time, zone);
    }
    static int getDay(Microtime *time) { return wideGettimeofday(time, nullptr); }
    static Seconds seconds(Seconds *out) { return wideTime(out); }
};

/** The calls of one size. */
class Calls {
  public:
    template <typename Api>
    static Calls of(const char *name) {
        Calls calls;
        calls.name = name;
        calls.size = sizeof(typename Api::Seconds);
        calls.set = [](clockid_t clock, int64_t seconds, int64_t ns) {
            typename Api::Nanotime time{};
            time.tv_sec = static_cast<decltype(time.tv_sec)>(seconds);
            time.tv_nsec = static_cast<decltype(time.tv_nsec)>(ns);
            return errorOf(Api::set(clock, &time));
        };
        calls.setNull = [] {
            const typename Api::Nanotime *volatile none = nullptr;
            return errorOf(Api::set(CLOCK_REALTIME, none));
        };
        calls.get = [](clockid_t clock) {
            typename Api::Nanotime time{};
            const int error = errorOf(Api::get(clock, &time));
            return Moment{time.tv_sec, time.tv_nsec, error};
        };
        calls.setDay = [](int64_t seconds, int64_t us, const void *zone) {
            typename Api::Microtime time{};
            time.tv_sec = static_cast<decltype(time.tv_sec)>(seconds);
            time.tv_usec = static_cast<decltype(time.tv_usec)>(us);
            return errorOf(Api::setDay(&time, zone));
        };
        calls.setZone = [](const void *zone) { return errorOf(Api::setDay(nullptr, zone)); };
        calls.getDay = [] {
            typename Api::Microtime time{};
            const int error = errorOf(Api::getDay(&time));
            return Moment{time.tv_sec, time.tv_usec, error};
        };
        calls.getSeconds = [] {
            typename Api::Seconds stored = kMark;
            errno = 0;
            const typename Api::Seconds now = Api::seconds(&stored);
            const int error = now < 0 ? errno : 0;
            EXPECT_EQ(stored, error == 0 ? now : kMark);
            if (error == 0) {
                EXPECT_LE(Api::seconds(nullptr) - now, kLate);
            }
            return Moment{now, 0, error};
        };
        return calls;
    }

    const char *name;
    size_t size; // of the seconds, in bytes
    int (*set)(clockid_t clock, int64_t seconds, int64_t ns);
    int (*setNull)();
    Moment (*get)(clockid_t clock);
    int (*setDay)(int64_t seconds, int64_t us, const void *zone);
    int (*setZone)(const void *zone);
    Moment (*getDay)();
    Moment (*getSeconds)();

  private:
    static int errorOf(int result) { return result == 0 ? 0 : errno; }
};

std::vector<Calls> allCalls() {
    std::vector<Calls> all = {Calls::of<Plain>("plain")};
    if (sizeof(long) == 4)
        all.push_back(Calls::of<Wide>("64-bit time"));
    return all;
}

/** Those that know times behind 2038. */
Calls wideCalls() {
    return allCalls().back();
}

class SystemClockTest : public VirtualBoardTest {
  protected:
    void SetUp() override {
        VirtualBoardTest::SetUp();
        setenv("TZ", "UTC", 1);
        tzset();
    }
    void TearDown() override {
        unsetenv("TZ");
        tzset();
        VirtualBoardTest::TearDown();
    }

    /** Where readings of the host's clock begin: time() and the coarse clock are a tick late. */
    static int64_t hostSeconds() { return static_cast<int64_t>(vb::hostNow() / 1000000000) - 1; }

    static void expectNow(const Moment &now, int64_t seconds, int64_t units) {
        EXPECT_EQ(now.error, 0);
        EXPECT_GE(now.seconds, seconds);
        EXPECT_LT(now.seconds, seconds + kLate);
        EXPECT_GE(now.fraction, 0);
        EXPECT_LT(now.fraction, units);
    }

    /** Every reading tells a time from these seconds on. */
    static void expectReadings(const Calls &calls, int64_t seconds) {
        expectNow(calls.get(CLOCK_REALTIME), seconds, 1000000000);
        expectNow(calls.get(CLOCK_REALTIME_COARSE), seconds, 1000000000);
        expectNow(calls.getDay(), seconds, 1000000);
        expectNow(calls.getSeconds(), seconds, 1);
    }

    /** No reading can hold the time. */
    static void expectOverflow(const Calls &calls) {
        EXPECT_EQ(calls.get(CLOCK_REALTIME).error, EOVERFLOW);
        EXPECT_EQ(calls.getDay().error, EOVERFLOW);
        EXPECT_EQ(calls.getSeconds().error, EOVERFLOW);
        EXPECT_EQ(calls.getSeconds().seconds, -1);
    }

    static bool isSet() { return get("system-clock") != "host"; }

    void forgetSetting() const { setSystemOffset(board().clock, 0); }
};

TEST_F(SystemClockTest, TestsHaveNoRightToSetTheHosts) {
    std::ifstream status("/proc/self/status");
    size_t sets = 0;
    for (std::string name, value; status >> name;) {
        if (name != "CapEff:" && name != "CapPrm:")
            continue;
        status >> value;
        EXPECT_EQ(std::stoull(value, nullptr, 16) >> CAP_SYS_TIME & 1, 0u) << name;
        ++sets;
    }
    EXPECT_EQ(sets, 2u);
}

TEST_F(SystemClockTest, ABoardStartsWithTheHostsTime) {
    for (const Calls &calls : allCalls()) {
        SCOPED_TRACE(calls.name);
        expectReadings(calls, hostSeconds());
        const auto before = static_cast<int64_t>(vb::hostNow());
        const Moment now = calls.get(CLOCK_REALTIME);
        const int64_t read = now.seconds * 1000000000 + now.fraction;
        EXPECT_LE(before, read);
        EXPECT_LE(read, static_cast<int64_t>(vb::hostNow()));
    }
    EXPECT_FALSE(isSet());
}

TEST_F(SystemClockTest, SettingMovesTheBoardsClockAndNotTheHosts) {
    const int64_t host = hostSeconds();
    for (const Calls &calls : allCalls()) {
        for (const int64_t seconds : {kIn2030, int64_t{1}}) {
            for (const int64_t ns : {0, 1, 500000000, 999999999}) {
                SCOPED_TRACE(calls.name + (" " + std::to_string(seconds)));
                forgetSetting();
                EXPECT_EQ(calls.set(CLOCK_REALTIME, seconds, ns), 0);
                for (const Calls &reading : allCalls())
                    expectReadings(reading, seconds);
                EXPECT_TRUE(isSet());
                EXPECT_EQ(calls.setDay(seconds + 1000, ns / 1000, nullptr), 0);
                for (const Calls &reading : allCalls())
                    expectReadings(reading, seconds + 1000);
            }
        }
    }
    const int64_t ahead = std::stoll(get("system-clock"));
    EXPECT_NEAR(static_cast<double>(ahead), static_cast<double>(1001 - host), kLate);
    EXPECT_LT(hostSeconds() - host, kLate);
    vb::detachBoard();
    for (const Calls &calls : allCalls())
        expectReadings(calls, host);
}

TEST_F(SystemClockTest, AFractionIsSetAndReadToTheNanosecond) {
    const Calls calls = allCalls().front();
    EXPECT_EQ(calls.set(CLOCK_REALTIME, kIn2030, 0), 0);
    const int64_t offset = board().clock.systemOffsetNs;
    const auto host = [] { return static_cast<int64_t>(vb::hostNow()); };
    int64_t before = host();
    const Moment precise = calls.get(CLOCK_REALTIME);
    const int64_t read = precise.seconds * 1000000000 + precise.fraction - offset;
    EXPECT_LE(before, read);
    EXPECT_LE(read, host());
    before = host();
    const Moment day = calls.getDay();
    const int64_t us = day.seconds * 1000000 + day.fraction;
    EXPECT_LE((before + offset) / 1000, us);
    EXPECT_LE(us, (host() + offset) / 1000);

    before = host();
    EXPECT_EQ(calls.setDay(kIn2030, 123456, nullptr), 0);
    const int64_t wanted = kIn2030 * 1000000000 + 123456000;
    EXPECT_LE(wanted - host(), board().clock.systemOffsetNs);
    EXPECT_LE(board().clock.systemOffsetNs, wanted - before);
}

TEST_F(SystemClockTest, Year2051NeedsWideSeconds) {
    for (const int64_t seconds :
         {int64_t{0x80000000}, kIn2051, int64_t{0x100000000} + 1000, kLastSecond - kLate}) {
        EXPECT_EQ(wideCalls().set(CLOCK_REALTIME, seconds, 0), 0);
        expectReadings(wideCalls(), seconds);
        EXPECT_EQ(wideCalls().setDay(seconds, 0, nullptr), 0);
        expectReadings(wideCalls(), seconds);
        for (const Calls &calls : allCalls()) {
            SCOPED_TRACE(calls.name);
            if (calls.size == 4)
                expectOverflow(calls);
        }
    }
}

struct Refusal {
    int64_t seconds, ns;
};

TEST_F(SystemClockTest, RefusesWhatTheKernelDoes) {
    constexpr Refusal kCases[] = {
        {kIn2030, -1},  {kIn2030, 1000000000}, {kIn2030, INT32_MAX},
        {-1, 0},        {-1, 999999999},       {-2209075200, 0}, // the day before 1 January 1900
        {INT32_MIN, 0},
    };
    for (const Calls &calls : allCalls()) {
        SCOPED_TRACE(calls.name);
        for (const Refusal &row : kCases) {
            if (calls.size == 4 && row.seconds < INT32_MIN)
                continue;
            SCOPED_TRACE(std::to_string(row.seconds) + " " + std::to_string(row.ns));
            EXPECT_EQ(calls.set(CLOCK_REALTIME, row.seconds, row.ns), EINVAL);
        }
        EXPECT_EQ(calls.setDay(-1, 0, nullptr), EINVAL);
        EXPECT_EQ(calls.setDay(kIn2030, -1, nullptr), EINVAL);
        EXPECT_EQ(calls.setDay(kIn2030, 1000000, nullptr), EINVAL);
        EXPECT_EQ(calls.setNull(), EFAULT);
    }
    EXPECT_EQ(wideCalls().set(CLOCK_REALTIME, kLastSecond + 1, 0), EINVAL);
    EXPECT_EQ(wideCalls().set(CLOCK_REALTIME, INT64_MAX, 0), EINVAL);
    EXPECT_EQ(wideCalls().setDay(kLastSecond + 1, 0, nullptr), EINVAL);
    EXPECT_EQ(wideCalls().setDay(kIn2030, INT64_MAX / 1000 + 1, nullptr), EINVAL);
    EXPECT_FALSE(isSet());
    EXPECT_EQ(wideCalls().set(CLOCK_REALTIME, kLastSecond, 999999999), 0);
    EXPECT_TRUE(isSet());
}

TEST_F(SystemClockTest, ABoardHasNoZone) {
    const struct timezone zone = {60, 0};
    for (const Calls &calls : allCalls()) {
        SCOPED_TRACE(calls.name);
        EXPECT_EQ(calls.setZone(&zone), 0);
        EXPECT_EQ(calls.setZone(nullptr), 0);
        EXPECT_EQ(calls.setDay(kIn2030, 0, &zone), EINVAL);
    }
    EXPECT_FALSE(isSet());
}

TEST_F(SystemClockTest, OtherClocksStayTheHosts) {
    constexpr clockid_t kOthers[] = {CLOCK_MONOTONIC,          CLOCK_MONOTONIC_RAW,
                                     CLOCK_MONOTONIC_COARSE,   CLOCK_BOOTTIME,
                                     CLOCK_PROCESS_CPUTIME_ID, CLOCK_THREAD_CPUTIME_ID};
    constexpr clockid_t kUnknown = 42;
    for (const Calls &calls : allCalls()) {
        SCOPED_TRACE(calls.name);
        for (const clockid_t clock : kOthers) {
            SCOPED_TRACE(clock);
            forgetSetting();
            const Moment before = calls.get(clock);
            EXPECT_EQ(before.error, 0);
            EXPECT_EQ(wideCalls().set(CLOCK_REALTIME, kIn2051, 0), 0);
            expectNow(calls.get(clock), before.seconds, 1000000000);
        }
        EXPECT_EQ(calls.get(kUnknown).error, EINVAL);
        forgetSetting();
        EXPECT_EQ(calls.set(CLOCK_MONOTONIC, kIn2030, 0), EINVAL);
        EXPECT_EQ(calls.set(CLOCK_REALTIME_COARSE, kIn2030, 0), EINVAL);
        EXPECT_EQ(calls.set(kUnknown, kIn2030, 0), EINVAL);
        EXPECT_FALSE(isSet());
    }
}

TEST_F(SystemClockTest, AllProgramsOfTheBoardSeeItSet) {
    const pid_t child = fork();
    if (child == 0)
        _exit(wideCalls().set(CLOCK_REALTIME, kIn2051, 0) == 0 ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    expectReadings(wideCalls(), kIn2051);
    set("power", "cycle"); // no battery keeps it
    EXPECT_FALSE(isSet());
}

TEST_F(SystemClockTest, ProgramsWithoutABoardHaveTheHosts) {
    wideCalls().set(CLOCK_REALTIME, kIn2051, 0);
    vb::detachBoard();
    for (const Calls &calls : allCalls()) {
        SCOPED_TRACE(calls.name);
        expectReadings(calls, hostSeconds());
        // Settings reach the host, which refuses these whoever asks.
        EXPECT_EQ(calls.set(CLOCK_REALTIME, -1, 1000000000), EINVAL);
        EXPECT_EQ(calls.setDay(-1, 1000000, nullptr), EINVAL);
    }
}

// How the library sets it from the clock chip.

TEST_F(SystemClockTest, TheLibrarySetsItFromTheChip) {
    struct Case {
        const char *chip;
        int64_t seconds;
    };
    constexpr Case kCases[] = {
        {"2026-07-01 12:00:00", 1782907200},
        {"2038-01-19 03:14:08", 0x80000000}, // more than 31 bits hold
        {"2051-06-15 12:34:56", kIn2051},
        {"2059-12-31 23:59:00", 2840140740},
        {"1970-01-01 00:00:00", 0},
    };
    for (int32_t (*const function)() : {bspSysClockSync, bspInit}) {
        for (const Case &row : kCases) {
            SCOPED_TRACE(row.chip);
            forgetSetting();
            set("rtc.time", row.chip);
            EXPECT_EQ(answerOf(function), kSilentSuccess);
            expectReadings(wideCalls(), row.seconds);
        }
    }
}

TEST_F(SystemClockTest, ATimeThatTheKernelRefusesLeavesItAsItIs) {
    set("rtc.time", "1969-12-31 23:59:59");
    EXPECT_EQ(answerOf([] { return bspSysClockSync(); }), kSilentSuccess);
    useModel(0x0109); // has no chip, which is a time before 1970 as well
    EXPECT_EQ(answerOf([] { return bspInit(); }), kSilentSuccess);
    EXPECT_FALSE(isSet());
}

} // namespace
