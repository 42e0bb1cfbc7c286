#pragma once
// A text that is drawn again and again at the same place of a terminal.

#include "command_line/screen.h"

#include <string>
#include <vector>

namespace iodbg {

enum class Emphasis { None, Bold, Warning, Fault };

struct ScreenLine {
    std::string text;
    Emphasis emphasis = Emphasis::None;
};

/** A line as a terminal shows it: emphasised, where its user wants that. */
std::string lineText(const ScreenLine &line);

/** What replaces all that a terminal shows; what it has no room for is left out, and said. */
std::string screenText(const std::vector<ScreenLine> &lines, const terminal::Size &size);

} // namespace iodbg
