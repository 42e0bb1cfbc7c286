#pragma once
// What boards' folders are known by.

#include <filesystem>

namespace vboard {

/** Whether a folder is a board's, whole and of this version or not. */
bool isBoard(const std::filesystem::path &folder);

} // namespace vboard
