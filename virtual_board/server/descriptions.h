#pragma once
// What models are, in words.

#include <string>

namespace vboard::server {

/** "48 PoE ports, 6 SFP uplinks"; empty for a model that there is not. */
std::string descriptionOf(const std::string &model);

} // namespace vboard::server
