#pragma once
// Answers as JSON.

#include <nlohmann/json.hpp>
#include <string>

namespace vboard::server {

using Json = nlohmann::ordered_json;

constexpr char kJsonType[] = "application/json";
constexpr char kEventType[] = "text/event-stream";

/** In one line, also where a text in it is no UTF-8: other programs write them, too. */
inline std::string dumped(const Json &value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace vboard::server
