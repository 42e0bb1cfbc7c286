#include "tests/support/json.h"

#include <ostream>

nlohmann::json parsedJson(const std::string &text) {
    return nlohmann::json::parse(text);
}

nlohmann::ordered_json parsedInOrder(const std::string &text) {
    return nlohmann::ordered_json::parse(text);
}

void nlohmann::PrintTo(const json &value, std::ostream *stream) {
    *stream << value.dump(2);
}

void nlohmann::PrintTo(const ordered_json &value, std::ostream *stream) {
    *stream << value.dump(2);
}
