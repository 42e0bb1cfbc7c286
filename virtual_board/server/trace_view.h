#pragma once
// The trace, as pages see it.

#include "virtual_board/calls/board.h"
#include "virtual_board/server/json.h"

#include <cstdint>

namespace vboard::server {

/** The number that the next request will have. */
uint64_t nextRequest(const Board &board);

/** The requests from a position on, which then is that behind the last of them. */
Json traceJson(const Board &board, uint64_t &position, uint32_t most);

} // namespace vboard::server
