// Conditions over properties.

#include "language/conditions.h"

#include "language/property_table.h"
#include "language/refused.h"

#include <gtest/gtest.h>

namespace {

using namespace language;

std::string refusal(const std::string &text) {
    try {
        parseCondition(text);
    } catch (const Refused &refused) {
        return refused.what();
    }
    return "";
}

TEST(Conditions, AreComparisonsThatHoldTogetherOrOneOfThem) {
    EXPECT_EQ(parseCondition("fan.1.speed == 0"),
              (Condition{{{"fan.1.speed", Relation::Equal, "0"}}}));
    EXPECT_EQ(parseCondition("  a!=1 and b<2 or c<=3 or d>4 and e >=  5 "),
              (Condition{{{"a", Relation::NotEqual, "1"}, {"b", Relation::Less, "2"}},
                         {{"c", Relation::LessOrEqual, "3"}},
                         {{"d", Relation::Greater, "4"}, {"e", Relation::GreaterOrEqual, "5"}}}));
    EXPECT_EQ(parseCondition("a == 'b and c' and d == \"it's\""),
              (Condition{{{"a", Relation::Equal, "b and c"}, {"d", Relation::Equal, "it's"}}}));
    EXPECT_EQ(parseCondition("a == ''"), (Condition{{{"a", Relation::Equal, ""}}}));
}

TEST(Conditions, OfAnotherFormAreRefused) {
    for (const char *text : {"", " ", "a", "a ==", "a 1", "a = 1", "== 1", "a == 1 and",
                             "a == 1 or ", "a == 1 and or b == 2"})
        EXPECT_NE(refusal(text).find("is no condition; one is 'fan.1.speed == 0'"),
                  std::string::npos)
            << text << ": " << refusal(text);
    EXPECT_EQ(refusal("a == 1 xor b == 2"),
              "'xor' does not join two comparisons; 'and' and 'or' do");
    EXPECT_EQ(refusal("a == 'b"), "'a == 'b' has a quote that does not end");
}

/** Whether a property that holds a value is as a comparison says. */
bool isSo(const char *name, const Value &found, Relation relation, const std::string &value) {
    const Property &property = propertyOf(name);
    return holds(property, found, relation, comparedValue(property, {name, relation, value}));
}

TEST(Conditions, CompareNumbers) {
    const auto is = [](Relation relation, const std::string &value) {
        return isSo("fan.#.speed", 2400, relation, value);
    };
    EXPECT_TRUE(is(Relation::Equal, "2400"));
    EXPECT_TRUE(is(Relation::Equal, "0x960"));
    EXPECT_FALSE(is(Relation::Equal, "2399"));
    EXPECT_FALSE(is(Relation::NotEqual, "2400"));
    EXPECT_TRUE(is(Relation::NotEqual, "-1"));
    EXPECT_TRUE(is(Relation::Less, "2401"));
    EXPECT_FALSE(is(Relation::Less, "2400"));
    EXPECT_TRUE(is(Relation::LessOrEqual, "2400"));
    EXPECT_FALSE(is(Relation::LessOrEqual, "2399"));
    EXPECT_TRUE(is(Relation::Greater, "-5"));
    EXPECT_FALSE(is(Relation::Greater, "2400"));
    EXPECT_TRUE(is(Relation::GreaterOrEqual, "2400"));
    EXPECT_FALSE(is(Relation::GreaterOrEqual, "2401"));
    EXPECT_TRUE(isSo("cpld.#", 0x1234, Relation::Equal, "0x1234"));
}

TEST(Conditions, CompareDecimalsAndTimes) {
    EXPECT_TRUE(isSo("clock", "10.500000000", Relation::Greater, "9.75"));
    EXPECT_TRUE(isSo("clock", "10.500000000", Relation::Equal, "10.5"));
    EXPECT_FALSE(isSo("clock", "10.500000000", Relation::Less, "2"));
    EXPECT_TRUE(isSo("rtc.time", "2024-02-29 23:59:59", Relation::Less, "2024-03-01 00:00:00"));
    // What can be a word instead has no order then.
    EXPECT_TRUE(isSo("watchdog.expires", "off", Relation::Equal, "off"));
    EXPECT_FALSE(isSo("watchdog.expires", "off", Relation::Less, "5"));
    EXPECT_FALSE(isSo("watchdog.expires", "off", Relation::GreaterOrEqual, "5"));
    EXPECT_TRUE(isSo("watchdog.expires", "3.0", Relation::Less, "5"));
}

TEST(Conditions, CompareWordsAndTextsForEquality) {
    EXPECT_TRUE(isSo("fan.#.state", 2, Relation::Equal, "stuck"));
    EXPECT_TRUE(isSo("fan.#.state", 0, Relation::NotEqual, "stuck"));
    // Also words that it cannot be set to.
    EXPECT_TRUE(isSo("poe.controller", 1, Relation::Equal, "application"));
    EXPECT_TRUE(isSo("model", "0x0709", Relation::Equal, "0x0709"));
    EXPECT_TRUE(isSo("identity.mac", "02:ab:00:00:00:ff", Relation::Equal, "02:AB:00:00:00:FF"));
    EXPECT_TRUE(isSo("eeprom.board", "00ff", Relation::Equal, "0x00FF"));
}

std::string wrongValue(const char *name, Relation relation, const std::string &value) {
    try {
        comparedValue(propertyOf(name), {name, relation, value});
    } catch (const Refused &refused) {
        return refused.what();
    }
    return "";
}

TEST(Conditions, WithWhatAPropertyNeverHoldsAreRefused) {
    EXPECT_EQ(wrongValue("fan.#.state", Relation::Equal, "broken"),
              "fan.#.state: 'broken' is none of its words: good, failing, stuck or held");
    EXPECT_EQ(wrongValue("fan.#.state", Relation::Less, "good"),
              "fan.#.state: what it holds has no order; compare with == or !=");
    EXPECT_EQ(wrongValue("model", Relation::GreaterOrEqual, "0x0709"),
              "model: what it holds has no order; compare with == or !=");
    EXPECT_EQ(wrongValue("watchdog.expires", Relation::Less, "off"),
              "watchdog.expires: what it holds has no order; compare with == or !=");
    EXPECT_EQ(wrongValue("fan.#.speed", Relation::Equal, "fast"),
              "fan.#.speed: 'fast' is not a whole number");
    EXPECT_EQ(wrongValue("fan.#.speed", Relation::Equal, "1.5"),
              "fan.#.speed: '1.5' is not a whole number");
    EXPECT_EQ(wrongValue("clock", Relation::Less, "soon"), "clock: 'soon' is not a number");
    EXPECT_EQ(wrongValue("identity.mac", Relation::Equal, "02").find("identity.mac: '02'"), 0u);
}

} // namespace
