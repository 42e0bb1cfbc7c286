#pragma once
// What there is to be drawn of a board.

#include "virtual_board/calls/board.h"
#include "virtual_board/drawing/panel.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace vboard {

/** All that a board holds, but for what is too long to be looked at. */
drawing::Readings readingsOf(const Board &board);

/** The words for a model: "48 PoE ports, 6 SFP uplinks, 2 fans". */
std::string descriptionOf(const std::string &model);

struct Panel {
    drawing::Readings readings;
    std::vector<drawing::Part> parts;
    std::string description;
};
Panel panelOf(const Board &board);
nlohmann::ordered_json panelJson(const Panel &panel);

} // namespace vboard
