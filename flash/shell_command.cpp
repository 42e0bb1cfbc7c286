#include "flash/shell_command.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

/** Characters that a shell takes as they are; the bytes of other alphabets are among them. */
constexpr bool isPlain(char character) {
    const auto code = static_cast<unsigned char>(character);
    const bool isAlphanumeric = (code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z') ||
                                (code >= 'a' && code <= 'z');
    return isAlphanumeric || code >= 0x80 ||
           (code != '\0' && std::strchr("/._-+,:=@%", character) != nullptr);
}

bool isPlain(const char *name) {
    for (; *name != '\0'; ++name)
        if (!isPlain(*name))
            return false;
    return true;
}

} // namespace

bsp::ShellWord::ShellWord(const char *name) {
    const char *quote = isPlain(name) ? "" : "'";
    append(quote);
    if (*name == '-')
        append("./");
    for (; *name != '\0'; ++name) {
        const char character[] = {*name, '\0'};
        append(*name == '\'' ? "'\\''" : character);
    }
    append(quote);
}

void bsp::ShellWord::append(const char *characters) {
    if (length_ >= kCommandSize)
        return;
    for (; *characters != '\0'; ++characters)
        text_[length_++] = *characters;
    text_[length_] = '\0';
}

bsp::ShellCommand::ShellCommand(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line_, sizeof(line_), format, arguments);
    va_end(arguments);
    fits_ = length >= 0 && static_cast<size_t>(length) < sizeof(line_);
}
