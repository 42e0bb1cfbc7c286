#pragma once
// Whole folders. std::filesystem reads folders with 32-bit positions on 32-bit systems, which
// 64-bit kernels under an emulator do not always have; these functions do not.

#include <string>
#include <vector>

/** Everything in a folder, at every depth, without the folder itself; folders behind their content.
 */
std::vector<std::string> pathsUnder(const std::string &folder);

/** What a file holds, but for the holes of a sparse one. */
std::string bytesOutsideHoles(const std::string &path);

/** Removes a folder and everything in it, if it is there. */
void removeFolder(const std::string &folder);
