#pragma once
// Values of properties, as their types have them.

#include "language/properties.h"

#include <concepts>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace language {

/** A number (of a word its place among the words), or a text. */
class Value {
  public:
    template <std::integral Number>
    Value(Number number) : content_(static_cast<int64_t>(number)) {}
    Value(std::string text) : content_(std::move(text)) {}
    Value(const char *text) : content_(std::string(text)) {}

    bool isNumber() const { return content_.index() == 0; }
    const std::string &text() const { return std::get<std::string>(content_); }
    template <typename Number>
    Number as() const {
        return static_cast<Number>(std::get<int64_t>(content_));
    }

  private:
    std::variant<int64_t, std::string> content_;
};

/** The value that a text gives a property; others throw Refused. */
Value parseValue(const Property &property, const std::string &text);

/** A value as people read it. */
std::string valueText(const Property &property, const Value &value);

/** The same for programs: numbers are numbers. */
nlohmann::json valueJson(const Property &property, const Value &value);

/** The words of a list: "good|stuck". */
std::vector<std::string> wordsOf(const char *list);

/** One of a property's words. */
std::string wordOf(const Property &property, int64_t index);

/** The words that a property can be set to; empty when it takes others. */
std::vector<std::string> wordsToSet(const Property &property);

/** What a property can hold, with its unit, and what else it can be set to: "0-6553 uW",
 * "good|stuck". */
std::string rangeText(const Property &property);

} // namespace language
