#pragma once
// How the parts of a panel are drawn: each from its upper left corner on, in all of its states at
// once, of which the style shows the one that the part's look tells.

#include "virtual_board/drawing/markup.h"
#include "virtual_board/drawing/panel.h"

namespace vboard::drawing {

constexpr Size kPlace = {40, 34}; // of a port or cage
constexpr Size kFan = {104, 104};
constexpr Size kSupply = {190, 104};
constexpr Size kGauge = {214, 44};
constexpr Size kLamp = {40, 22};

/** What is inside of a part's group. */
std::string shapeOf(const Part &part);

} // namespace vboard::drawing
