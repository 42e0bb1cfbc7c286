#pragma once
// Files that commands make.

#include <string>

namespace vboard {

/** The name that stands for standard output. */
constexpr char kStandardOutput[] = "-";

/**
 * Writes a file that appears whole or not at all; '-' is standard output. One that exists is
 * replaced when that is forced, else Refused; devices and pipes are written into then.
 */
void writeWhole(const std::string &file, const std::string &content, bool isForced);

} // namespace vboard
