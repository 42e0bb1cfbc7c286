#pragma once
// A board at one moment, as pages see it, and how it differs from another one.

#include "virtual_board/calls/board.h"
#include "virtual_board/drawing/panel.h"
#include "virtual_board/server/json.h"

#include <string>
#include <vector>

namespace vboard::server {

struct Snapshot {
    drawing::Readings properties;
    std::vector<drawing::Part> parts;
    Json faults = Json::array();
    std::string users; // "iodbg 4711"

    /** Whether time alone changes it. */
    bool isMoving() const;

    /** Without its users. */
    static Snapshot of(const Board &board);
};

/** What `vboard fault list --json` tells of each rule. */
Json faultsJson(const Board &board);

Json whole(const Snapshot &snapshot);
/** The members in which the later one differs; null: in none. */
Json difference(const Snapshot &earlier, const Snapshot &later);

} // namespace vboard::server
