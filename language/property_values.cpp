#include "language/property_values.h"

#include "language/bytes.h"
#include "language/numbers.h"
#include "language/property_table.h"
#include "language/refused.h"
#include "language/times.h"

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>

namespace language {

namespace {

bool isNumeric(Type type) {
    return type == Type::Number || type == Type::Register;
}

uint32_t parseOneOf(const char *list, const std::string &text) {
    const std::vector<std::string> words = wordsOf(list);
    std::vector<const char *> choices;
    choices.reserve(words.size());
    for (const std::string &word : words)
        choices.push_back(word.c_str());
    return parseChoice(text, choices);
}

void checkPace(const Property &property, const std::string &text) {
    const std::vector<std::string> words = wordsOf(property.words);
    if (std::find(words.begin(), words.end(), text) == words.end() && !readRate(text).has_value())
        refuse(text,
               std::string("is none of ") + property.words + ", and no rate from x0.001 to x1000");
}

/** "0-65535" */
std::string numbersText(const Property &property) {
    if (property.type == Type::Register)
        return hex16Text(0) + "-" + hex16Text(static_cast<uint32_t>(property.highest));
    return std::to_string(property.lowest) + (property.lowest < 0 ? " to " : "-") +
           std::to_string(property.highest);
}

/** A number of any size is told by its unit alone. */
std::string anyNumberText(const Property &property) {
    return *property.unit == '\0' ? "number" : property.unit;
}

std::string withUnit(const std::string &text, const Property &property) {
    return *property.unit == '\0' ? text : text + " " + property.unit;
}

std::string formText(const Property &property) {
    switch (property.type) {
    case Type::Number:
    case Type::Register:
        return property.highest == UINT32_MAX ? anyNumberText(property)
                                              : withUnit(numbersText(property), property);
    case Type::Decimal:
        return anyNumberText(property);
    case Type::Word:
        return "";
    case Type::Text:
        return property.form;
    case Type::MacAddress:
        return "02:00:5e:10:00:00";
    case Type::Time:
        return "2024-02-29 23:59:59";
    case Type::Pace:
        return "x0.001-x1000";
    case Type::ByteRow:
        break;
    }
    return "hexadecimal digits";
}

} // namespace

Value parseValue(const Property &property, const std::string &text) {
    switch (property.type) {
    case Type::Number:
    case Type::Register:
        return parseInteger(text, property.lowest, property.highest);
    case Type::Word:
        return parseOneOf(*property.given != '\0' ? property.given : property.words, text);
    case Type::MacAddress:
        parseMac(text);
        break;
    case Type::Time:
        parseCalendarTime(text, kFirstYear, kLastYear);
        break;
    case Type::Pace:
        checkPace(property, text);
        break;
    case Type::ByteRow:
        parseBytes(text);
        break;
    case Type::Decimal: // none of them can be set
    case Type::Text:
        break;
    }
    return text;
}

std::string valueText(const Property &property, const Value &value) {
    if (!value.isNumber())
        return value.text();
    const auto number = value.as<int64_t>();
    if (property.type == Type::Word)
        return wordOf(property, number);
    return property.type == Type::Register ? hex16Text(static_cast<uint32_t>(number))
                                           : std::to_string(number);
}

nlohmann::json valueJson(const Property &property, const Value &value) {
    if (value.isNumber() && isNumeric(property.type))
        return value.as<int64_t>();
    const std::string text = valueText(property, value);
    if (property.type != Type::Decimal || text == property.words)
        return text;
    return std::strtod(text.c_str(), nullptr);
}

std::vector<std::string> wordsOf(const char *list) {
    std::vector<std::string> words;
    std::string word;
    for (const char *next = list; *next != '\0'; ++next) {
        if (*next != '|') {
            word += *next;
            continue;
        }
        words.push_back(word);
        word.clear();
    }
    if (!word.empty())
        words.push_back(word);
    return words;
}

std::string wordOf(const Property &property, int64_t index) {
    const std::vector<std::string> words = wordsOf(property.words);
    const auto place = static_cast<size_t>(index);
    return place < words.size() ? words[place] : "?";
}

std::vector<std::string> wordsToSet(const Property &property) {
    if (!property.isSettable)
        return {};
    return wordsOf(*property.given != '\0' ? property.given : property.words);
}

std::string rangeText(const Property &property) {
    const std::string form = formText(property);
    std::string text = property.words;
    text += (text.empty() || form.empty() ? "" : ", or ") + form;
    return *property.given == '\0' ? text : text + "; set: " + property.given;
}

} // namespace language
