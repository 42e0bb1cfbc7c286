#pragma once
// Answers for programs.

#include <nlohmann/json.hpp>

namespace vboard {

/** Prints an answer, also where a name or a text in it is no UTF-8: other programs write them, too.
 */
void printJson(const nlohmann::ordered_json &answer);
void printJson(const nlohmann::json &answer);

} // namespace vboard
