#include "virtual_board/flash_tools/tools.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace flash_tools {

namespace {

__attribute__((format(printf, 2, 0))) void printError(const std::string &tool, const char *format,
                                                      va_list arguments) {
    std::fprintf(stderr, "%s: error!: ", tool.c_str());
    std::vfprintf(stderr, format, arguments);
    std::fputc('\n', stderr);
}

} // namespace

int complain(const std::string &tool, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    printError(tool, format, arguments);
    va_end(arguments);
    return kError;
}

int complainSystem(const std::string &tool, const char *format, ...) {
    const int error = errno;
    va_list arguments;
    va_start(arguments, format);
    printError(tool, format, arguments);
    va_end(arguments);
    const int indent = static_cast<int>(tool.size()) + 2;
    std::fprintf(stderr, "%*serror %d (%s)\n", indent, "", error, std::strerror(error));
    errno = error;
    return kError;
}

} // namespace flash_tools
