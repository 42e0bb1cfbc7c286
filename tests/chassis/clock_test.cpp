// The clock chip, and the system clock that is set from it.

#include "bsp.h"
#include "tests/chassis/chassis_models.h"
#include "tests/support/device_ids.h"
#include "tests/support/recorded_devices.h"
#include "tests/support/virtual_board_test.h"

#include <cstdlib>
#include <ctime>

namespace {

const DeviceIds kWithClock = idsWhere([](const DataSheet &sheet) { return sheet.hasClock; });

const Lines kAllReads = {"read 02 len 1", "read 03 len 1", "read 04 len 1",
                         "read 05 len 1", "read 07 len 1", "read 08 len 1"};

constexpr char kSetting[] = "set "; // of a clock

/** A record in the order in which people write it: year first. */
std::string text(const BspCalendar &record) {
    return listed(
        {record.year, record.month, record.day, record.hour, record.minute, record.second});
}

/** The first fields, in the chip's order, of a chip that holds 1 to 6; the others untouched. */
BspCalendar countedTo(uint32_t fields) {
    uint32_t value[6];
    for (uint32_t i = 0; i < 6; ++i)
        value[i] = i < fields ? i + 1 : kMark;
    return {value[0], value[1], value[2], value[3], value[4], value[5]};
}

class ClockTest : public VirtualBoardTest {
  protected:
    void SetUp() override {
        VirtualBoardTest::SetUp();
        recorder.failAlways(kSetting, 0); // the host's own is never touched
        useZone("UTC");
        pretendDeviceId(0x0709);
    }
    void TearDown() override {
        unsetenv("TZ");
        tzset();
        VirtualBoardTest::TearDown();
    }

    static void useZone(const char *zone) {
        setenv("TZ", zone, 1);
        tzset();
    }

    void hold(std::initializer_list<uint8_t> registers2To8) {
        std::copy(registers2To8.begin(), registers2To8.end(), chip.bytes.begin() + 2);
    }

    std::string read() {
        BspCalendar record{};
        EXPECT_EQ(answerOf([&] { return bspRealtimeGet(&record); }), kSilentSuccess);
        return text(record);
    }

    MemoryDevice chip{0, 1, 0x51};
    Recorder recorder;
};

TEST_F(ClockTest, ReadsTwoDigitsOfEachRegister) {
    hold({0x56, 0x34, 0x12, 0x15, 0x06, 0x05, 0xC4});
    EXPECT_EQ(read(), "124 5 15 12 34 56");
    EXPECT_EQ(chip.take(), kAllReads) << "and never the weekday's";
    hold({0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x24});
    EXPECT_EQ(read(), "24 0 0 0 0 0");
}

TEST_F(ClockTest, FlagsInTheTensAreNotPartOfTheTime) {
    hold({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF});
    EXPECT_EQ(read(), "165 25 45 45 85 85");
    hold({0x80, 0x80, 0xC0, 0xC0, 0xFF, 0xE0, 0x99});
    EXPECT_EQ(read(), "99 0 0 0 0 0");
    hold({0x79, 0x79, 0x39, 0x39, 0x00, 0x19, 0xF9});
    EXPECT_EQ(read(), "159 19 39 39 79 79");
}

TEST_F(ClockTest, ChipIsReadIntoNarrowOutputs) {
    hold({0x01, 0x02, 0x03, 0x04, 0xFF, 0x05, 0x06});
    for (uint32_t fields = 0; fields <= 6; ++fields) {
        SCOPED_TRACE(fields);
        fields < 6 ? chip.fail(fields + 1, -5) : chip.work();
        uint16_t year = 0xA5A5;
        uint8_t month = 0xA5, day = 0xA5, hour = 0xA5, minute = 0xA5, second = 0xA5;
        EXPECT_EQ(answerOf([&] {
                      return bsp_rtc_chip_get(&year, &month, &day, &hour, &minute, &second);
                  }),
                  Answer{fields < 6 ? -5 : BSP_OK});
        const auto expected = [&](uint32_t place) { return place <= fields ? place : 0xA5u; };
        EXPECT_EQ(second, expected(1));
        EXPECT_EQ(minute, expected(2));
        EXPECT_EQ(hour, expected(3));
        EXPECT_EQ(day, expected(4));
        EXPECT_EQ(month, expected(5));
        EXPECT_EQ(year, fields == 6 ? 6 : 0xA5A5);
        EXPECT_EQ(chip.take().size(), std::min(fields + 1, 6u));
    }
}

TEST_F(ClockTest, WhatWasReadBeforeAFailureIsInTheRecord) {
    hold({0x01, 0x02, 0x03, 0x04, 0xFF, 0x05, 0x06});
    for (uint32_t fields = 0; fields < 6; ++fields) {
        chip.fail(fields + 1, -7);
        BspCalendar record = countedTo(0);
        EXPECT_EQ(answerOf([&] { return bspRealtimeGet(&record); }), Answer{-7});
        EXPECT_EQ(text(record), text(countedTo(fields)));
    }
}

TEST_F(ClockTest, WritesTheRegistersInTheirOrder) {
    EXPECT_EQ(answerOf([] { return bsp_rtc_chip_set(124, 5, 31, 23, 59, 0); }), kSilentSuccess);
    EXPECT_EQ(chip.take(), (Lines{"write 02: 00", "write 03: 59", "write 04: 23", "write 05: 31",
                                  "write 07: 05", "write 08: C4"}));
    for (uint32_t failing = 1; failing <= 6; ++failing) {
        chip.fail(failing, -9);
        EXPECT_EQ(answerOf([] { return bsp_rtc_chip_set(1, 2, 3, 4, 5, 6); }), Answer{-9});
        EXPECT_EQ(chip.take().size(), failing);
    }
}

struct Encoding {
    uint32_t value;
    const char *second; // as the chip's function encodes it
    const char *year;
    const char *secondOfRecord; // as it goes from a record
};

TEST_F(ClockTest, EncodesWholeValuesButTheYearsLowByte) {
    constexpr Encoding kCases[] = {
        {0, "00", "00", "00"},    {9, "09", "09", "09"},       {10, "10", "10", "10"},
        {59, "59", "59", "59"},   {124, "C4", "C4", "C4"},     {159, "F9", "F9", "F9"},
        {160, "00", "00", "00"},  {255, "95", "95", "95"},     {256, "96", "00", "00"},
        {1000, "40", "72", "72"}, {0x10001, "97", "01", "01"}, {UINT32_MAX, "95", "95", "95"},
    };
    for (const Encoding &row : kCases) {
        SCOPED_TRACE(row.value);
        EXPECT_EQ(bsp_rtc_chip_set(row.value, 0, 0, 0, 0, row.value), BSP_OK);
        Lines lines = chip.take();
        EXPECT_EQ(lines.front(), std::string("write 02: ") + row.second);
        EXPECT_EQ(lines.back(), std::string("write 08: ") + row.year);

        const BspCalendar record = {row.value, row.value, row.value,
                                    row.value, row.value, row.value};
        EXPECT_EQ(bspRealtimeSet(&record), BSP_OK);
        lines = chip.take();
        ASSERT_EQ(lines.size(), 6u);
        for (const std::string &line : lines)
            EXPECT_EQ(line.substr(line.find(':')), std::string(": ") + row.secondOfRecord);
    }
}

TEST_F(ClockTest, EveryYearUpTo159SurvivesARoundTrip) {
    for (uint32_t year = 0; year < 160; ++year) {
        const BspCalendar record = {1, 2, 3, 4, 5, year};
        EXPECT_EQ(bspRealtimeSet(&record), BSP_OK);
        EXPECT_EQ(read(), text(record));
    }
}

TEST_F(ClockTest, ModelsWithoutTheChipSucceedWithoutDoingAnything) {
    hold({0x01, 0x02, 0x03, 0x04, 0xFF, 0x05, 0x06});
    for (const uint32_t devId : allIds()) {
        SCOPED_TRACE(devId);
        pretendDeviceId(devId);
        const bool hasClock = isOneOf(devId, kWithClock);
        BspCalendar record = countedTo(0);
        EXPECT_EQ(answerOf([&] { return bspRealtimeGet(&record); }), kSilentSuccess);
        EXPECT_EQ(text(record), text(countedTo(hasClock ? 6 : 0)));
        EXPECT_EQ(chip.take(), hasClock ? kAllReads : Lines{});
        EXPECT_EQ(bspRealtimeGet(nullptr), hasClock ? BSP_E_NULL : BSP_OK);
        EXPECT_EQ(chip.take(), Lines{});
        record = countedTo(6);
        EXPECT_EQ(answerOf([&] { return bspRealtimeSet(&record); }), kSilentSuccess);
        EXPECT_EQ(chip.take().size(), hasClock ? 6u : 0u);
    }
}

TEST_F(ClockTest, WithoutADeviceIdNothingIsDone) {
    addFault(openFails("/tmp/bsp/devId", EACCES));
    BspCalendar record = countedTo(0);
    EXPECT_EQ(answerOf([&] { return bspRealtimeGet(&record); }), Answer{BSP_E_OPEN});
    EXPECT_EQ(answerOf([] { return bspRealtimeGet(nullptr); }), Answer{BSP_E_OPEN});
    EXPECT_EQ(answerOf([&] { return bspRealtimeSet(&record); }), Answer{BSP_E_OPEN});
    EXPECT_EQ(answerOf([] { return bspSysClockSync(); }), Answer{BSP_E_OPEN});
    EXPECT_EQ(recorder.run([] { return bspInit(); }), kSilentSuccess);
    EXPECT_EQ(text(record), text(countedTo(0)));
    EXPECT_EQ(chip.take(), Lines{});
    EXPECT_EQ(recorder.callsOf(kSetting), Calls{});
}

struct SyncCase {
    const char *zone;
    BspCalendar local;
    const char *expected;
};

TEST_F(ClockTest, SystemClockIsSetFromLocalTime) {
    static constexpr char kNewYork[] = "EST5EDT,M3.2.0,M11.1.0";
    constexpr SyncCase kCases[] = {
        {"UTC", {59, 59, 23, 31, 0, 126}, "1769903999 s 0 ns"},
        {"UTC", {8, 14, 3, 19, 0, 138}, "2147483648 s 0 ns"}, // one more than 31 bits
        {"UTC", {56, 34, 12, 15, 5, 151}, "2570445296 s 0 ns"},
        {"UTC", {59, 59, 23, 31, 11, 159}, "2840140799 s 0 ns"},
        {kNewYork, {59, 59, 18, 31, 0, 126}, "1769903999 s 0 ns"},
        {kNewYork, {0, 0, 8, 1, 6, 126}, "1782907200 s 0 ns"}, // in summer, by the zone's own rules
        {kNewYork, {56, 34, 8, 15, 5, 151}, "2570445296 s 0 ns"},
        {"XYZ-2", {56, 34, 14, 15, 5, 151}, "2570445296 s 0 ns"},
    };
    for (const SyncCase &row : kCases) {
        SCOPED_TRACE(row.zone + (" " + text(row.local)));
        useZone(row.zone);
        ASSERT_EQ(bspRealtimeSet(&row.local), BSP_OK);
        for (int32_t (*const function)() : {bspSysClockSync, bspInit}) {
            EXPECT_EQ(recorder.run(function), kSilentSuccess);
            EXPECT_EQ(recorder.callsOf(kSetting), Calls{std::string("set clock ") + row.expected});
        }
    }
}

TEST_F(ClockTest, AModelWithoutTheChipSyncsToARecordOfZeros) {
    pretendDeviceId(0x0109);
    EXPECT_EQ(recorder.run([] { return bspSysClockSync(); }), kSilentSuccess);
    EXPECT_EQ(recorder.callsOf(kSetting), Calls{"set clock -2209075200 s 0 ns"})
        << "the day before 1 January 1900";
}

TEST_F(ClockTest, ARefusedSettingIsNotTold) {
    recorder.clearFailures();
    recorder.failAlways(kSetting);
    EXPECT_EQ(recorder.run([] { return bspSysClockSync(); }), kSilentSuccess);
    EXPECT_EQ(recorder.callsOf(kSetting).size(), 1u);
}

TEST_F(ClockTest, AnUnreadableChipLeavesTheSystemClockAlone) {
    chip.fail(6, -5);
    EXPECT_EQ(recorder.run([] { return bspSysClockSync(); }), Answer{-5});
    EXPECT_EQ(recorder.callsOf(kSetting), Calls{});
    EXPECT_EQ(recorder.run([] { return bspInit(); }), kSilentSuccess);
    EXPECT_EQ(recorder.callsOf(kSetting), Calls{});
}

TEST_F(ClockTest, NullOutputsOfTheChipAreRefusedBeforeItIsAsked) {
    for (int null = 0; null < 6; ++null) {
        uint16_t year = 1;
        uint8_t byte[5] = {};
        const auto out = [&](int field) { return field == null ? nullptr : &byte[field - 1]; };
        EXPECT_EQ(answerOf([&] {
                      return bsp_rtc_chip_get(null == 0 ? nullptr : &year, out(1), out(2), out(3),
                                              out(4), out(5));
                  }),
                  Answer{BSP_E_NULL})
            << null;
    }
    EXPECT_EQ(chip.take(), Lines{});
}

} // namespace
