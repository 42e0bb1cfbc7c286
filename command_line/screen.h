#pragma once
// What iodbg and vboard draw on a terminal.

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace terminal {

struct Size {
    size_t rows, columns;
};

/** Of the terminal behind a descriptor; none where it is no terminal, or one that cannot redraw. */
std::optional<Size> sizeOf(int descriptor);

/** Whether the user wants colours and emphasis where a terminal can show them. */
bool wantsColours();

/**
 * What replaces all that a terminal shows by these lines, which may contain colours. The first ones
 * stay in view: those that it has no room for are left out and counted below the others, and a line
 * that is too long ends with '>'.
 */
std::string picture(const std::vector<std::string> &lines, const Size &size);

} // namespace terminal
