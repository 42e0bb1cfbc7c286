#include "iodbg/confirm.h"

#include "iodbg/failure.h"

#include <cstdio>
#include <iostream>

namespace iodbg {

void requireConsent(const std::string &question) {
    std::fprintf(stderr, "%s [y/N] ", question.c_str());
    std::string answer;
    const bool isAnswered = static_cast<bool>(std::getline(std::cin, answer));
    if (!isAnswered)
        std::fputc('\n', stderr);
    if (answer != "y" && answer != "Y" && answer != "yes")
        throw Failure::usage("not confirmed, nothing was changed; answer y, or give --yes");
}

} // namespace iodbg
