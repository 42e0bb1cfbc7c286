#pragma once
// What puts a program on a board: the board's folder and a library, named in its environment.

#include "virtual_board/programs/program_file.h"

#include <string>

namespace vboard {

/** The path of the board in a folder, which must be usable. */
std::string absoluteFolder(const std::string &folder);

/** The library that connects programs to boards: beside this program, as built or as installed. */
std::string findLibrary();

/** The libraries to preload into a program, which is refused when it would not be on the board. */
std::string preloadList(const vb::ProgramFile &program, const std::string &name);

} // namespace vboard
