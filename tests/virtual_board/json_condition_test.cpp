// Conditions over what programs print.

#include "virtual_board/command/json_condition.h"

#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using vboard::holds;
using vboard::membersText;

const json kDocument = {
    {"temperature_c", 40},
    {"offset", -3},
    {"voltage", 54.5},
    {"serial", "VB00000001"},
    {"name", "two words"},
    {"clock", nullptr},
    {"ok", true},
    {"fan.1.speed", 2400},
    {"plugged", {49, 50}},
    {"failures", json::array()},
    {"poe", {{"budget_mw", 3000000}, {"ports", {{{"port", 3}, {"on", true}}, {{"port", 8}}}}}},
};

bool holdsText(const std::string &condition) {
    return holds(language::parseCondition(condition), kDocument);
}

TEST(JsonConditionTest, MembersAreComparedAsTheyAre) {
    for (const char *condition : {"temperature_c == 40",
                                  "temperature_c == 0x28",
                                  "temperature_c == 40.0",
                                  "temperature_c != 41",
                                  "temperature_c > 39",
                                  "temperature_c >= 40",
                                  "temperature_c < 40.5",
                                  "temperature_c <= 40",
                                  "offset < 0",
                                  "voltage > 54",
                                  "voltage == 54.5",
                                  "serial == VB00000001",
                                  "serial != VB",
                                  "name == 'two words'",
                                  "clock == null",
                                  "clock != 0",
                                  "ok == true",
                                  "ok != false",
                                  "fan.1.speed == 2400",
                                  "plugged == [49,50]",
                                  "failures == []",
                                  "plugged.0 == 49",
                                  "plugged.1 == 50",
                                  "poe.budget_mw == 3000000",
                                  "poe.ports.1.port == 8",
                                  "temperature_c == 1 or ok == true",
                                  "temperature_c == 40 and offset == -3"})
        EXPECT_TRUE(holdsText(condition)) << condition;
    for (const char *condition :
         {"temperature_c == 41", "temperature_c != 40", "temperature_c > 40", "temperature_c < 40",
          "temperature_c == forty", "temperature_c > forty", "serial == VB", "serial > A",
          "clock == 0", "ok == 1", "plugged == [49]", "failures != []", "plugged.00 == 49",
          "plugged.1x == 50", "temperature_c == 40 and ok == false",
          "temperature_c == 1 or ok == false"})
        EXPECT_FALSE(holdsText(condition)) << condition;
}

TEST(JsonConditionTest, AStarIsAnyElement) {
    EXPECT_TRUE(holdsText("poe.ports.*.port == 8"));
    EXPECT_TRUE(holdsText("plugged.* > 49"));
    EXPECT_FALSE(holdsText("plugged.* > 50"));
    EXPECT_FALSE(holdsText("plugged.* == 51"));
    // None of them is, and not: one of them is not.
    EXPECT_TRUE(holdsText("plugged.* != 51"));
    EXPECT_FALSE(holdsText("plugged.* != 49"));
}

TEST(JsonConditionTest, WhatIsNotThereFulfilsNothing) {
    for (const char *condition :
         {"temperature == 40", "temperature != 40", "temperature < 40", "plugged.2 == 49",
          "plugged.2 != 49", "failures.* == 1", "failures.* != 1", "temperature_c.x != 1",
          "poe.* == 1", "fan.1.speeds != 1"})
        EXPECT_FALSE(holdsText(condition)) << condition;
}

TEST(JsonConditionTest, MembersAreTold) {
    const auto told = [](const std::string &condition) {
        return membersText(language::parseCondition(condition), kDocument);
    };
    EXPECT_EQ(told("temperature_c == 1 or temperature_c == 2 and serial == x"),
              "temperature_c is 40; serial is VB00000001");
    EXPECT_EQ(told("poe.ports.*.port == 1"), "poe.ports.*.port is 3, 8");
    EXPECT_EQ(told("failures == 1 and nothing != 1"), "failures is []; nothing is missing");
    const json wide = {{"a", std::string(300, 'x') + "\x1b"}};
    EXPECT_LT(membersText(language::parseCondition("a == 1"), wide).size(), 220u);
}

} // namespace
