#include "virtual_board/command/json_condition.h"

#include "language/numbers.h"
#include "language/texts.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

namespace vboard {

namespace {

using language::Comparison;
using language::Condition;
using language::Relation;
using nlohmann::json;

/** What a path leads to, with '*' to several things. */
void find(const json &place, std::string_view path, std::vector<const json *> &found) {
    if (place.is_object()) {
        // Names may have points in them.
        for (const auto &[name, value] : place.items()) {
            if (path == name)
                found.push_back(&value);
            else if (path.starts_with(name + "."))
                find(value, path.substr(name.size() + 1), found);
        }
    }
    if (!place.is_array())
        return;
    const size_t point = std::min(path.find('.'), path.size());
    const std::string_view number = path.substr(0, point);
    for (size_t i = 0; i < place.size(); ++i) {
        if (number != "*" && number != std::to_string(i))
            continue;
        if (point == path.size())
            found.push_back(&place[i]);
        else
            find(place[i], path.substr(point + 1), found);
    }
}

std::vector<const json *> membersOf(const json &document, const std::string &path) {
    std::vector<const json *> found;
    find(document, path, found);
    return found;
}

std::string valueText(const json &value) {
    return value.is_string() ? value.get<std::string>()
                             : value.dump(-1, ' ', false, json::error_handler_t::replace);
}

/** The number that a text is, decimal or hexadecimal. */
std::optional<double> numberIn(const std::string &text) {
    if (const auto whole = language::readInteger(text, INT64_MIN, INT64_MAX))
        return static_cast<double>(*whole);
    char *end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    return !text.empty() && *end == '\0' ? std::optional(number) : std::nullopt;
}

bool isEqual(const json &value, const std::string &text) {
    if (value.is_number())
        return numberIn(text) == value.get<double>();
    return valueText(value) == text;
}

/** Whether two numbers are so in order; nothing else has one. */
bool isInOrder(const json &value, Relation relation, const std::string &text) {
    const std::optional<double> limit = numberIn(text);
    if (!value.is_number() || !limit.has_value())
        return false;
    const auto number = value.get<double>();
    switch (relation) {
    case Relation::Less:
        return number < *limit;
    case Relation::LessOrEqual:
        return number <= *limit;
    case Relation::Greater:
        return number > *limit;
    case Relation::GreaterOrEqual:
        return number >= *limit;
    case Relation::Equal:
    case Relation::NotEqual:
        break;
    }
    return false;
}

bool isFulfilled(const Comparison &comparison, const json &document) {
    const std::vector<const json *> found = membersOf(document, comparison.name);
    const auto isAny = [&](auto fits) { return std::any_of(found.begin(), found.end(), fits); };
    const auto equals = [&](const json *value) { return isEqual(*value, comparison.value); };
    switch (comparison.relation) {
    case Relation::Equal:
        return isAny(equals);
    case Relation::NotEqual: // none of them is
        return !found.empty() && !isAny(equals);
    default:
        return isAny([&](const json *value) {
            return isInOrder(*value, comparison.relation, comparison.value);
        });
    }
}

/** "49, 50"; what is longer ends with dots. */
std::string listed(const std::vector<const json *> &found) {
    constexpr size_t kLongest = 200;
    std::string text;
    for (const json *value : found)
        text += (text.empty() ? "" : ", ") + valueText(*value);
    return language::shortened(language::printable(text), kLongest);
}

} // namespace

bool holds(const Condition &condition, const json &document) {
    return std::any_of(condition.begin(), condition.end(), [&](const auto &comparisons) {
        return std::all_of(comparisons.begin(), comparisons.end(),
                           [&](const Comparison &one) { return isFulfilled(one, document); });
    });
}

std::string membersText(const Condition &condition, const json &document) {
    std::set<std::string> told;
    std::string text;
    for (const language::Conjunction &comparisons : condition) {
        for (const Comparison &one : comparisons) {
            if (!told.insert(one.name).second)
                continue;
            const std::vector<const json *> found = membersOf(document, one.name);
            text += (text.empty() ? "" : "; ") + one.name +
                    (found.empty() ? " is missing" : " is " + listed(found));
        }
    }
    return text;
}

} // namespace vboard
