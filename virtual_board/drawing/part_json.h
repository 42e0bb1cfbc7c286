#pragma once
// Parts of a panel for programs.

#include "virtual_board/drawing/panel.h"

#include <nlohmann/json.hpp>

namespace vboard::drawing {

nlohmann::ordered_json partJson(const Part &part);
nlohmann::ordered_json partsJson(const std::vector<Part> &parts);

} // namespace vboard::drawing
