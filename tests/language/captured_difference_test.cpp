// What two captured units differ in, and what is no difference.

#include "language/captured_difference.h"

#include <gtest/gtest.h>

namespace {

using namespace language;

CapturedUnit unitWith(std::vector<CapturedReading> properties) {
    CapturedUnit unit;
    unit.properties = std::move(properties);
    return unit;
}

std::string told(const CapturedUnit &first, const CapturedUnit &second,
                 CaptureDetail detail = CaptureDetail::Usual) {
    std::string text;
    for (const CapturedDifference &difference : differencesOf(first, second, detail))
        text += std::string(difference.group) + ": " + difference.name + ": " +
                difference.first.value_or("absent") + " | " + difference.second.value_or("absent") +
                "\n";
    return text;
}

/** Of one property of each unit. */
std::string toldOf(const CapturedReading &first, const CapturedReading &second,
                   CaptureDetail detail = CaptureDetail::Usual) {
    return told(unitWith({first}), unitWith({second}), detail);
}

TEST(CapturedDifferenceTest, TheSameHasNone) {
    const CapturedUnit unit = unitWith({{"model", "0x0709"},
                                        {"fan.1.speed", int64_t{2400}},
                                        {"temperature.sensor", CapturedFailure{-6, "", "no"}}});
    EXPECT_EQ(told(unit, unit), "");
    EXPECT_EQ(told(unit, unit, CaptureDetail::All), "");
    EXPECT_EQ(told({}, {}), "");
}

TEST(CapturedDifferenceTest, AStateDiffersInWords) {
    EXPECT_EQ(toldOf({"model", "0x0709"}, {"model", "0x0809"}), "Unit: model: 0x0709 | 0x0809\n");
    EXPECT_EQ(toldOf({"cpld.7", int64_t{2}}, {"cpld.7", int64_t{0x8003}}),
              "Registers and lines: cpld.7: 0x0002 | 0x8003\n");
    EXPECT_EQ(toldOf({"cpld.7", int64_t{2}}, {"cpld.7", int64_t{-1}}),
              "Registers and lines: cpld.7: 0x0002 | -1\n");
    EXPECT_EQ(toldOf({"poe.3.limit", int64_t{30000}}, {"poe.3.limit", int64_t{90000}}),
              "PoE: poe.3.limit: 30000 mW | 90000 mW\n");
    EXPECT_EQ(toldOf({"later.thing", "a"}, {"later.thing", "b"}), "Other: later.thing: a | b\n");
}

TEST(CapturedDifferenceTest, WhatIsMeasuredHasATolerance) {
    const auto speeds = [](int64_t one, int64_t other, CaptureDetail detail = {}) {
        return toldOf({"fan.1.speed", one}, {"fan.1.speed", other}, detail);
    };
    EXPECT_EQ(speeds(2400, 2640), "");
    EXPECT_EQ(speeds(2400, 2641), "") << "a tenth of the larger";
    EXPECT_EQ(speeds(2400, 2667), "Fans and temperature: fan.1.speed: 2400 rpm | 2667 rpm\n");
    EXPECT_EQ(speeds(0, 240), "");
    EXPECT_EQ(speeds(0, 241), "Fans and temperature: fan.1.speed: 0 rpm | 241 rpm\n");
    EXPECT_EQ(speeds(2400, 2401, CaptureDetail::All),
              "Fans and temperature: fan.1.speed: 2400 rpm | 2401 rpm\n");
    const auto degrees = [](int64_t one, int64_t other) {
        return toldOf({"temperature.sensor", one}, {"temperature.sensor", other});
    };
    EXPECT_EQ(degrees(-5, 5), "");
    EXPECT_EQ(degrees(5, -6),
              "Fans and temperature: temperature.sensor: 5 degrees C | -6 degrees C\n");
    EXPECT_NE(speeds(INT64_MIN, INT64_MAX), "") << "what a document can hold does no harm";
}

TEST(CapturedDifferenceTest, ClocksAndRawBytesAreForThoseWhoWantAll) {
    for (const auto &[one, other] :
         {std::pair<CapturedReading, CapturedReading>({"rtc.time", "2024-01-01 00:00:00"},
                                                      {"rtc.time", "2024-01-01 00:00:01"}),
          {{"system-time", "a"}, {"system-time", "b"}},
          {{"cpld.28", int64_t{20}}, {"cpld.28", int64_t{21}}}}) {
        EXPECT_EQ(toldOf(one, other), "");
        EXPECT_NE(toldOf(one, other, CaptureDetail::All), "");
    }
    const CapturedReading one = {"poe.3.mode", int64_t{1}, Bytes{1}};
    const CapturedReading other = {"poe.3.mode", int64_t{1}, Bytes{2}};
    EXPECT_EQ(toldOf(one, other), "");
    EXPECT_EQ(toldOf(one, other, CaptureDetail::All),
              "PoE: poe.3.mode: 1, bytes 01 | 1, bytes 02\n");
}

TEST(CapturedDifferenceTest, BytesTellWhereTheyDiffer) {
    EXPECT_EQ(
        toldOf({"eeprom.board", "00112233"}, {"eeprom.board", "00ff2234"}),
        "Identity and EEPROMs: eeprom.board: from 0x0001: 112233 (2 of 4 bytes differ) | from "
        "0x0001: ff2234\n");
    EXPECT_EQ(toldOf({"eeprom.board", "0011"}, {"eeprom.board", "00"}),
              "Identity and EEPROMs: eeprom.board: from 0x0001: 11 (1 of 2 bytes differ) | from "
              "0x0001: nothing\n");
    const auto page = [](size_t at) {
        std::string digits(512, '0');
        digits[2 * at] = '1';
        return CapturedReading{"sfp.1.diagnostics", digits};
    };
    EXPECT_EQ(toldOf(page(96), page(119)), "") << "what is measured has its own properties";
    EXPECT_NE(toldOf(page(95), page(96)), "");
    EXPECT_NE(toldOf(page(120), page(119)), "");
    EXPECT_NE(toldOf(page(96), page(97), CaptureDetail::All), "");
}

TEST(CapturedDifferenceTest, FailuresDifferByTheirStatus) {
    const CapturedReading one = {"fan.1.speed", CapturedFailure{-5, "", "a"}};
    EXPECT_EQ(toldOf(one, {"fan.1.speed", CapturedFailure{-5, "", "b"}}), "");
    EXPECT_EQ(toldOf(one, {"fan.1.speed", CapturedFailure{1010, "BSP_E_OPEN", "b"}}),
              "Fans and temperature: fan.1.speed: failed: status -5, a | failed: BSP_E_OPEN, b\n");
    EXPECT_EQ(toldOf(one, {"fan.1.speed", int64_t{2400}}),
              "Fans and temperature: fan.1.speed: failed: status -5, a | 2400 rpm\n");
}

TEST(CapturedDifferenceTest, WhatOneUnitLacksIsADifferenceUnlessNobodyAskedForIt) {
    CapturedUnit with = unitWith({{"boot.password", "x"}, {"sfp.1.id", "0011"}});
    CapturedUnit without;
    EXPECT_EQ(told(with, without),
              "SFP: sfp.1.id: 2 bytes | absent\nBoot settings: boot.password: x | absent\n");
    without.capture.leftOut = {{"boot.password", "a secret"}, {"sfp.*", "hangs on the CPLD"}};
    with.properties.push_back({"sfp.2.id", "00"});
    EXPECT_EQ(told(with, without), "SFP: sfp.*: read | left out: hangs on the CPLD\n")
        << "all of a group are one difference";
    EXPECT_EQ(told(without, with), "SFP: sfp.*: left out: hangs on the CPLD | read\n");
}

TEST(CapturedDifferenceTest, StarsStandForAnyText) {
    const CapturedUnit with = unitWith({{"poe.12.mode", int64_t{1}}});
    for (const auto &[name, isOf] : {std::pair("poe.*", true),
                                     {"poe.*.*", true},
                                     {"*", true},
                                     {"poe.12.*", true},
                                     {"*.1*.m*", true},
                                     {"**", true},
                                     {"poe.1.*", false},
                                     {"poe.*.limit*", false},
                                     {"pos*", false},
                                     {"poe.*.*.*", false}}) {
        CapturedUnit without;
        without.capture.leftOut = {{name, "a reason"}};
        EXPECT_EQ(told(with, without).find("left out: a reason") != std::string::npos, isOf)
            << name;
    }
}

TEST(CapturedDifferenceTest, ContentOfFlashDiffers) {
    const CapturedReading one = {"flash.4.content", CapturedRuns{{0, {1, 2}}}};
    EXPECT_EQ(toldOf(one, {"flash.4.content", CapturedRuns{{0, {1, 3}}}}),
              "Flash: flash.4.content: 2 bytes that are not erased | 2 bytes that are not erased, "
              "other bytes\n");
}

TEST(CapturedDifferenceTest, TheOrderIsThatOfDocuments) {
    const CapturedUnit first =
        unitWith({{"sfp.10.present", "no"}, {"sfp.9.present", "no"}, {"model", "a"}});
    EXPECT_EQ(told(first, {}), "Unit: model: a | absent\nSFP: sfp.9.present: no | absent\n"
                               "SFP: sfp.10.present: no | absent\n");
}

} // namespace
