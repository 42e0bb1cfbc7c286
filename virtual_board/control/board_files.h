#pragma once
// What boards' folders are known by.

#include <filesystem>

namespace vboard {

// Beside a board's state while a board is taken to another version.
constexpr char kNewState[] = "board.state.new";
constexpr char kOldState[] = "board.state.old";

/** Whether a folder is a board's, whole and of this version or not. */
bool isBoard(const std::filesystem::path &folder);

} // namespace vboard
