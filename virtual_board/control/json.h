#pragma once
// Answers for programs.

#include <nlohmann/json.hpp>
#include <string>

namespace vboard {

/** On one line, also where a name or a text in it is no UTF-8: programs of a board write them, too.
 */
template <typename Json>
std::string jsonText(const Json &answer) {
    return answer.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace vboard
