#include "language/texts.h"

#include <sstream>

namespace language {

namespace {

bool isPrintable(uint8_t byte) {
    return byte >= 0x20 && byte < 0x7F;
}

} // namespace

std::string fieldText(ByteView field) {
    std::string text;
    for (size_t i = 0; i < field.size() && field[i] != 0; ++i) {
        if (!isPrintable(field[i]))
            text += "\\x" + capitalHexText(field.subspan(i, 1));
        else if (field[i] == '\\')
            text += "\\\\";
        else
            text += static_cast<char>(field[i]);
    }
    return text;
}

std::string printable(const std::string &text) {
    return fieldText({reinterpret_cast<const uint8_t *>(text.data()), text.size()});
}

std::string shortened(const std::string &text, size_t longest) {
    constexpr char kDots[] = "...";
    return text.size() <= longest ? text : text.substr(0, longest - sizeof(kDots) + 1) + kDots;
}

std::string quoted(const std::string &word) {
    constexpr size_t kLongest = 60;
    return "'" + shortened(printable(word), kLongest) + "'";
}

std::vector<std::string> linesOf(const std::string &text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::string listed(const std::vector<std::string> &words, const std::string &last) {
    std::string text;
    for (size_t i = 0; i < words.size(); ++i) {
        if (i != 0)
            text += i + 1 < words.size() ? ", " : " " + last + " ";
        text += words[i];
    }
    return text;
}

} // namespace language
