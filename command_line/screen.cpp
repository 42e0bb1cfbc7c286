#include "command_line/screen.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace terminal {

namespace {

constexpr char kEscape = '\x1b';
constexpr char kHome[] = "\x1b[H";
constexpr char kClearLine[] = "\x1b[K";
constexpr char kClearBelow[] = "\x1b[J";
constexpr char kCutMark = '>';
constexpr size_t kFewestRows = 3;

std::string_view variable(const char *name) {
    const char *value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/** A line's characters that fit; colours begin and end as they do in the whole line. */
std::string cut(const std::string &line, size_t columns) {
    std::string text;
    size_t column = 0;
    size_t last = 0; // where the last character is that fits
    bool isEscape = false;
    for (const char character : line) {
        isEscape = isEscape || character == kEscape;
        if (!isEscape && ++column == columns)
            last = text.size();
        if (isEscape || column <= columns)
            text += character;
        isEscape = isEscape && character != 'm';
    }
    if (column > columns && columns > 0)
        text[last] = kCutMark;
    return text;
}

} // namespace

std::optional<Size> sizeOf(int descriptor) {
    constexpr Size kUsual = {24, 80};
    if (isatty(descriptor) != 1 || variable("TERM") == "dumb")
        return {};
    winsize size = {};
    const bool isKnown =
        ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 && size.ws_col > 0;
    return isKnown ? Size{size.ws_row, size.ws_col} : kUsual;
}

bool wantsColours() {
    return variable("NO_COLOR").empty();
}

std::string picture(const std::vector<std::string> &lines, const Size &size) {
    const size_t room = std::max(size.rows, kFewestRows) - 1; // the cursor has the last row
    const bool fits = lines.size() <= room;
    const size_t shown = fits ? lines.size() : room - 1;
    std::string text = kHome;
    const auto add = [&](const std::string &line) {
        text += cut(line, size.columns) + kClearLine + "\n";
    };
    std::for_each_n(lines.begin(), shown, add);
    if (!fits)
        add("(" + std::to_string(lines.size() - shown) + " more lines: the terminal is too small)");
    return text + kClearBelow;
}

} // namespace terminal
