#include "iodbg/core/screen.h"

namespace iodbg {

namespace {

constexpr char kPlain[] = "\x1b[m";

const char *startOf(Emphasis emphasis) {
    switch (emphasis) {
    case Emphasis::Bold:
        return "\x1b[1m";
    case Emphasis::Warning: // bold, yellow
        return "\x1b[1;33m";
    case Emphasis::Fault: // inverse, red
        return "\x1b[7;31m";
    case Emphasis::None:
        break;
    }
    return "";
}

} // namespace

std::string lineText(const ScreenLine &line) {
    const bool isPlain = line.emphasis == Emphasis::None || !terminal::wantsColours();
    return isPlain ? line.text : startOf(line.emphasis) + line.text + kPlain;
}

std::string screenText(const std::vector<ScreenLine> &lines, const terminal::Size &size) {
    std::vector<std::string> drawn;
    drawn.reserve(lines.size());
    for (const ScreenLine &line : lines)
        drawn.push_back(lineText(line));
    return terminal::picture(drawn, size);
}

} // namespace iodbg
