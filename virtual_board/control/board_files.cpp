#include "virtual_board/control/board_files.h"

#include "virtual_board/board/folder.h"

#include <cstring>
#include <fstream>

namespace vboard {

bool isBoard(const std::filesystem::path &folder) {
    char magic[sizeof(vb::kBoardMagic)] = {};
    std::ifstream state(folder / vb::kStateFile, std::ios::binary);
    state.read(magic, sizeof(magic));
    return std::memcmp(magic, vb::kBoardMagic, sizeof(magic)) == 0;
}

} // namespace vboard
