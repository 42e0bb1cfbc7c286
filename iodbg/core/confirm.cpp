#include "iodbg/core/confirm.h"

#include "iodbg/core/failure.h"

#include <array>
#include <cstdio>
#include <unistd.h>

namespace iodbg {

namespace {

bool isYes(const std::string &line) {
    const std::string word = line.substr(0, line.find('\n'));
    return word == "y" || word == "Y" || word == "yes";
}

} // namespace

void confirm(const std::string &question) {
    std::fprintf(stderr, "%s [y/N] ", question.c_str());
    std::array<char, 16> line{}; // more than any yes needs
    const bool isAnswered = std::fgets(line.data(), line.size(), stdin) != nullptr;
    if (!isAnswered || isatty(STDIN_FILENO) == 0)
        std::fputc('\n', stderr); // the one that a terminal shows behind an answer
    if (!isAnswered)
        throw Failure::usage("nobody answered, nothing was done; say --yes where nobody can");
    if (!isYes(line.data()))
        throw Failure::usage("not confirmed, nothing was done");
}

} // namespace iodbg
