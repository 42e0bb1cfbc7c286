// What a JSON text may hold.

#include "language/json_limits.h"
#include "language/refused.h"

#include <gtest/gtest.h>

namespace {

constexpr language::JsonLimits kLimits = {.levels = 3, .keys = 2, .values = 6};

std::string refusalOfJson(const std::string &text) {
    try {
        language::requireWithin(kLimits, text);
    } catch (const language::Refused &refusal) {
        return refusal.what();
    }
    return "";
}

TEST(JsonLimitsTest, WhatIsWithinIsTaken) {
    for (const char *text : {"1", "null", "[[[]]]", "[1, 2.5, true, null, \"a\"]",
                             R"({"a": {"a": 1}, "b": [{"a": 2}]})", R"([{"a": 1}, {"a": 2}])"})
        EXPECT_EQ(refusalOfJson(text), "") << text;
}

TEST(JsonLimitsTest, WhatIsMoreIsRefused) {
    EXPECT_EQ(refusalOfJson("[[[[]]]]"), "it is more than 3 levels deep");
    EXPECT_EQ(refusalOfJson(R"({"a": [{"a": {}}]})"), "it is more than 3 levels deep");
    EXPECT_EQ(refusalOfJson(R"({"a": 1, "b": 2, "c": 3})"), "an object has more than 2 keys");
    EXPECT_EQ(refusalOfJson("[1, 2, 3, 4, 5, 6]"), "it has more than 6 values");
    EXPECT_EQ(refusalOfJson("[[], [], [], {}, {}, {}]"), "it has more than 6 values");
}

TEST(JsonLimitsTest, AKeyThatStandsTwiceIsRefused) {
    EXPECT_EQ(refusalOfJson(R"({"a": 1, "a": 2})"), "'a' stands there twice");
    EXPECT_EQ(refusalOfJson(R"([{"b": {}, "\u0062": 2}])"), "'b' stands there twice");
}

TEST(JsonLimitsTest, SyntaxIsForTheParser) {
    for (const char *text : {"", "{", "[1,", "{\"a\" 1}", "\xff", "[1] 2"})
        EXPECT_EQ(refusalOfJson(text), "") << text;
}

} // namespace
