#include "iodbg/screen.h"

#include <algorithm>

namespace iodbg {

namespace {

constexpr char kHome[] = "\x1b[H";
constexpr char kClearLine[] = "\x1b[K";
constexpr char kClearBelow[] = "\x1b[J";
constexpr char kPlain[] = "\x1b[m";

const char *startOf(Emphasis emphasis) {
    switch (emphasis) {
    case Emphasis::Bold:
        return "\x1b[1m";
    case Emphasis::Inverse:
        return "\x1b[7m";
    case Emphasis::None:
        break;
    }
    return "";
}

std::string drawn(const ScreenLine &line, size_t columns) {
    const std::string text = line.text.substr(0, columns);
    const bool isPlain = line.emphasis == Emphasis::None;
    return (isPlain ? text : startOf(line.emphasis) + text + kPlain) + kClearLine + "\n";
}

} // namespace

std::string screenText(const std::vector<ScreenLine> &lines, const Console::TerminalSize &size) {
    const size_t room = std::max<size_t>(size.rows, 3) - 1; // the cursor has the last row
    const bool fits = lines.size() <= room;
    const size_t shown = fits ? lines.size() : room - 1;
    std::string text = kHome;
    for (size_t i = 0; i < shown; ++i)
        text += drawn(lines[i], size.columns);
    if (!fits)
        text += drawn({"(" + std::to_string(lines.size() - shown) +
                       " more lines: the terminal is too small)"},
                      size.columns);
    return text + kClearBelow;
}

} // namespace iodbg
