#pragma once
// A captured unit as a virtual board: one that answers as the unit did.

#include "language/captured_unit.h"
#include "virtual_board/board/create.h"

#include <string>
#include <vector>

namespace vb {

/** What a board cannot have of its unit. */
struct TwinGap {
    std::string name; // of a property
    std::string reason;
};

/**
 * What the board is made with: model, command line and geometries of the unit. Throws Refused for
 * a unit that no board can be: without a model, or of one that is not known.
 */
BoardOptions twinOptions(const language::CapturedUnit &unit);

/** Makes a new board of these options what the unit was; tells what it cannot have. */
std::vector<TwinGap> furnishTwin(const BoardFolder &folder, const language::CapturedUnit &unit);

} // namespace vb
