// The table of properties, its names on models, and its values.

#include "language/numbers.h"
#include "language/property_names.h"
#include "language/property_table.h"
#include "language/property_values.h"
#include "language/refused.h"
#include <nlohmann/json.hpp>

#include <functional>
#include <gtest/gtest.h>
#include <set>

namespace {

using namespace language;

/** A model that has some of everything. */
Equipment wholeModel() {
    Equipment equipment;
    equipment.model = "0x0001";
    equipment.supplies = 2;
    equipment.plugInSupplies = 2;
    equipment.poePorts = 24;
    equipment.fans = 4;
    equipment.hasClock = true;
    equipment.cages = {1, 2, 3, 33, 34, 40};
    equipment.partitions = {0, 4, 12, 14};
    return equipment;
}

std::string refusalBy(const std::function<void()> &work) {
    try {
        work();
    } catch (const Refused &refusal) {
        return refusal.what();
    }
    return "";
}

std::string refusalOfName(const std::string &name, const Equipment &equipment = wholeModel()) {
    return refusalBy([&] { resolveName(name, equipment); });
}

TEST(PropertiesTest, EachRowIsWhole) {
    std::set<std::string> names;
    for (const Property &property : properties()) {
        SCOPED_TRACE(property.name);
        EXPECT_TRUE(names.insert(property.name).second);
        EXPECT_FALSE(std::string(property.sentence).empty());
        EXPECT_NE(std::string(property.sentence).back(), '.');
        const bool isNumeric = property.type == Type::Number || property.type == Type::Register;
        EXPECT_EQ(property.lowest < property.highest, isNumeric);
        if (property.type == Type::Word) {
            EXPECT_FALSE(wordsOf(property.words).empty());
        }
        if (property.type == Type::Text) {
            EXPECT_NE(*property.form, '\0');
        }
        EXPECT_TRUE(property.isSettable || *property.given == '\0');
        EXPECT_FALSE(rangeText(property).empty());
        EXPECT_EQ(rowOf(property.name), nullptr == rowOf(property.name) ? nullptr : &property);
    }
}

TEST(PropertiesTest, EachNameOfAModelLeadsToItsRow) {
    const std::vector<PropertyName> names = namesOn(wholeModel());
    EXPECT_GT(names.size(), 1024u + 64 + 64);
    for (const PropertyName &name : names) {
        const PropertyName found = resolveName(nameText(name), wholeModel());
        EXPECT_EQ(found.property, name.property) << nameText(name);
        EXPECT_EQ(found.number, name.number) << nameText(name);
        EXPECT_EQ(found.second, name.second) << nameText(name);
        EXPECT_EQ(rowOf(nameText(name)), name.property) << nameText(name);
    }
}

TEST(PropertiesTest, NamesHaveNumbersAndParts) {
    const PropertyName mdio = resolveName("mdio.0x1F.7", wholeModel());
    EXPECT_STREQ(mdio.property->name, "mdio.#.#");
    EXPECT_EQ(mdio.number, 31u);
    EXPECT_EQ(mdio.second, 7u);
    EXPECT_EQ(nameText(mdio), "mdio.31.7");
    const PropertyName part = resolveName("eeprom.supply2@0x100+16", wholeModel());
    EXPECT_STREQ(part.property->name, "eeprom.supply#");
    EXPECT_EQ(part.number, 2u);
    EXPECT_EQ(part.offset, 0x100u);
    EXPECT_EQ(part.length, 16u);
    EXPECT_EQ(resolveName("eeprom.board@3", wholeModel()).length, std::nullopt);
    EXPECT_EQ(resolveName("eeprom.board", wholeModel()).offset, std::nullopt);
}

TEST(PropertiesTest, NamesThatAModelDoesNotHaveAreRefusedWithThoseThatItHas) {
    const struct {
        const char *name, *reason;
    } cases[] = {
        {"", "there is no property ''; 'vboard get DIR' lists them"},
        {"colour", "there is no property 'colour'; 'vboard get DIR' lists them"},
        {"cpld.", "there is no property 'cpld.'; 'vboard get DIR' lists them"},
        {"cpld.-1", "there is no property 'cpld.-1'; 'vboard get DIR' lists them"},
        {"cpld.-0", "there is no property 'cpld.-0'; 'vboard get DIR' lists them"},
        {"cpld.1.2", "there is no property 'cpld.1.2'; 'vboard get DIR' lists them"},
        {"fan..speed", "there is no property 'fan..speed'; 'vboard get DIR' lists them"},
        {"fan.1.speeds", "there is no property 'fan.1.speeds'; 'vboard get DIR' lists them"},
        {"cpld.64", "there is no cpld.64; the numbers are 0 to 63"},
        {"fan.5.speed", "there is no fan.5.speed; the numbers are 1 to 4"},
        {"poe.25.state", "there is no poe.25.state; the numbers are 1 to 24"},
        {"sfp.4.link", "there is no sfp.4.link; the cages are 1-3, 33-34, 40"},
        {"flash.1.content", "there is no flash.1.content; the numbers are 0, 4, 12 and 14"},
        {"mdio.32.0", "there is no mdio.32.0; the numbers are 0 to 31"},
        {"mdio.0.32", "there is no mdio.0.32; the numbers are 0 to 31"},
        {"cpld.1@2", "cpld.1 has no parts; leave out '@2'"},
        {"eeprom.board@x",
         "'x' is not a number; a part of an EEPROM or of flash is @OFFSET+LENGTH"},
        {"eeprom.board@1+",
         "'' is not a number; a part of an EEPROM or of flash is @OFFSET+LENGTH"},
    };
    for (const auto &[name, reason] : cases)
        EXPECT_EQ(refusalOfName(name), reason);
    Equipment bare;
    bare.model = "0x0002";
    EXPECT_EQ(refusalOfName("poe.1.state", bare),
              "there is no poe.1.state on model 0x0002: it has no PoE");
    EXPECT_EQ(refusalOfName("poe.controller", bare),
              "there is no poe.controller on model 0x0002: it has no PoE");
    EXPECT_EQ(refusalOfName("fan.1.speed", bare),
              "there is no fan.1.speed on model 0x0002: it has no fans");
    EXPECT_EQ(refusalOfName("rtc.time", bare),
              "there is no rtc.time on model 0x0002: it has no clock");
    EXPECT_EQ(refusalOfName("supply.1.input-power", bare),
              "there is no supply.1.input-power on model 0x0002: its supplies are built in");
    EXPECT_TRUE(isOn(wholeModel(), Subject::Fan));
    EXPECT_FALSE(isOn(bare, Subject::Fan));
    EXPECT_TRUE(isOn(bare, Subject::Register));
}

std::string textOf(const char *name, const Value &value) {
    return valueText(propertyOf(name), value);
}

nlohmann::json jsonOf(const char *name, const Value &value) {
    return valueJson(propertyOf(name), value);
}

TEST(PropertiesTest, ValuesAreTextsForPeopleAndNumbersForPrograms) {
    EXPECT_EQ(textOf("cpld.#", 0x709), "0x0709");
    EXPECT_EQ(jsonOf("cpld.#", 0x709), 0x709);
    EXPECT_EQ(textOf("temperature.ambient", -5), "-5");
    EXPECT_EQ(jsonOf("temperature.ambient", -5), -5);
    EXPECT_TRUE(jsonOf("temperature.ambient", -5).is_number_integer());
    EXPECT_EQ(textOf("fan.#.state", 2), "stuck");
    EXPECT_EQ(jsonOf("fan.#.state", 2), "stuck");
    EXPECT_EQ(textOf("fan.#.state", 4), "?");
    EXPECT_EQ(jsonOf("clock", "131.745000000"), 131.745);
    EXPECT_EQ(jsonOf("temperature.board", "36.5"), 36.5);
    EXPECT_EQ(jsonOf("watchdog.expires", "off"), "off");
    EXPECT_EQ(jsonOf("watchdog.expires", "1.500000000"), 1.5);
    EXPECT_EQ(jsonOf("temperature.sensor", "none"), "none");
    EXPECT_EQ(jsonOf("temperature.sensor", 40), 40);
    EXPECT_EQ(jsonOf("eeprom.board", "00"), "00");
    EXPECT_EQ(jsonOf("identity.serial", "123"), "123");
}

TEST(PropertiesTest, ValuesAreJudgedByTheTable) {
    const auto refusal = [](const char *name, const std::string &text) {
        return refusalBy([&] { parseValue(propertyOf(name), text); });
    };
    EXPECT_EQ(parseValue(propertyOf("cpld.#"), "0xFFFF").as<uint16_t>(), 0xFFFF);
    EXPECT_NE(refusal("cpld.#", "65536").find("from 0 to 65535"), std::string::npos);
    EXPECT_EQ(parseValue(propertyOf("supply.#.temperature1"), "-1000").as<int32_t>(), -1000);
    EXPECT_NE(refusal("supply.#.temperature1", "-1001").find("from -1000 to 1000"),
              std::string::npos);
    EXPECT_EQ(parseValue(propertyOf("fan.#.state"), "stuck").as<int>(), 2);
    EXPECT_EQ(refusal("fan.#.state", "ill"), "'ill' is none of good|failing|stuck|held");
    EXPECT_EQ(refusal("power", "on"), "'on' is none of cycle");
    EXPECT_EQ(parseValue(propertyOf("poe.controller"), "missing").as<int>(), 1);
    EXPECT_EQ(refusal("poe.controller", "loader"), "'loader' is none of present|missing");
    EXPECT_NE(refusal("eeprom.board", "0g"), "");
    EXPECT_NE(refusal("identity.mac", "02"), "");
    EXPECT_NE(refusal("rtc.time", "noon"), "");
    EXPECT_EQ(parseValue(propertyOf("cmdline"), "quiet").text(), "quiet");
    using Words = std::vector<std::string>;
    EXPECT_EQ(wordsToSet(propertyOf("poe.controller")), (Words{"present", "missing"}));
    EXPECT_EQ(wordsToSet(propertyOf("sfp.#.link")), (Words{"down", "up"}));
    EXPECT_EQ(wordsToSet(propertyOf("poe.#.state")), Words{});
    EXPECT_EQ(wordsToSet(propertyOf("poe.#.device")), Words{"none"});
}

TEST(PropertiesTest, RangesAreToldInBrief) {
    EXPECT_EQ(rangeText(propertyOf("cpld.#")), "0x0000-0xFFFF");
    EXPECT_EQ(rangeText(propertyOf("sfp.#.rx-power")), "0-6553 uW");
    EXPECT_EQ(rangeText(propertyOf("temperature.sensor")), "none, or -128 to 127 degrees C");
    EXPECT_EQ(rangeText(propertyOf("power")), "on; set: cycle");
    EXPECT_EQ(rangeText(propertyOf("fan.#.speed")), "rpm");
}

} // namespace
