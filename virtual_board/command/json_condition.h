#pragma once
// Conditions over what programs print as JSON: "fans.0.speed_rpm > 2000 and failures == []".

#include "language/conditions.h"

#include <nlohmann/json.hpp>
#include <string>

namespace vboard {

/**
 * Whether a document is as a condition says. Members are named by their path; elements of an array
 * have numbers from 0 on, and '*' is any of them. What is not there fulfils no comparison. Values
 * that are neither texts nor numbers are compared with their JSON: true, null, [49,50].
 */
bool holds(const language::Condition &condition, const nlohmann::json &document);

/** What a document has for a condition: "fans.0.speed_rpm is 2400, failures is missing". */
std::string membersText(const language::Condition &condition, const nlohmann::json &document);

} // namespace vboard
