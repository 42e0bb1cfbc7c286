#pragma once
// JSON in tests. What takes it apart and prints it needs seconds to compile, so that is in one
// source.

#include <iosfwd>
#include <nlohmann/json.hpp>
#include <string>

nlohmann::json parsedJson(const std::string &text);
/** With its keys as they come. */
nlohmann::ordered_json parsedInOrder(const std::string &text);

namespace nlohmann {

// How a failed comparison shows them.
void PrintTo(const json &value, std::ostream *stream);
void PrintTo(const ordered_json &value, std::ostream *stream);

} // namespace nlohmann
