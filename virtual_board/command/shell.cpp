#include "virtual_board/command/shell.h"

namespace vboard {

std::string shellQuoted(const std::string &word) {
    std::string text = "'";
    for (const char character : word)
        text += character == '\'' ? "'\\''" : std::string(1, character);
    return text + "'";
}

std::string shellWord(const std::string &word) {
    constexpr char kPlain[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                              "%+,-./:=@_";
    const bool isPlain = !word.empty() && word.find_first_not_of(kPlain) == std::string::npos;
    return isPlain ? word : shellQuoted(word);
}

} // namespace vboard
