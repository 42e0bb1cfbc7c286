#pragma once
// The variables by which a program of a board has it, besides what it preloads.

namespace vb {

constexpr char kFolderVariable[] = "VBOARD_DIR";
constexpr char kAllowHostVariable[] = "VBOARD_ALLOW_HOST"; // of those who mean it

} // namespace vb
