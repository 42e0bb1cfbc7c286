#pragma once
// What puts a program on a board.

#include "virtual_board/calls/board.h"

#include <cstring>

namespace vboard {

using Environment = List<VBoardVariable>;

/** The variables for a program; null: for any. */
inline Environment environmentOf(VBoard *board, const char *program) {
    return Environment([&](VBoardVariable **list, uint32_t *count, VBoardError *error) {
        return vboardEnvironment(board, program, list, count, error);
    });
}

inline bool isSearchPath(const VBoardVariable &variable) {
    return std::strcmp(variable.name, "PATH") == 0;
}

} // namespace vboard
