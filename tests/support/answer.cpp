#include "tests/support/answer.h"

#include <cstdio>
#include <ostream>
#include <regex>
#include <stdexcept>
#include <unistd.h>

std::string printedBy(const std::function<void()> &function) {
    std::fflush(stdout);
    std::FILE *captured = std::tmpfile();
    if (captured == nullptr)
        throw std::runtime_error("no temporary file for captured output");
    const int savedStdout = dup(STDOUT_FILENO);
    dup2(fileno(captured), STDOUT_FILENO);
    function();
    std::fflush(stdout);
    dup2(savedStdout, STDOUT_FILENO);
    close(savedStdout);

    std::string text;
    std::rewind(captured);
    for (int character = std::fgetc(captured); character != EOF; character = std::fgetc(captured))
        text += static_cast<char>(character);
    std::fclose(captured);
    return text;
}

std::ostream &operator<<(std::ostream &stream, const Answer &answer) {
    return stream << answer.status << " \"" << answer.printed << '"';
}

Answer answerOf(const std::function<int32_t()> &call) {
    // "function-12: " and "function(12): "
    static const std::regex lineNumber("([A-Za-z0-9_]+)(-|\\()[0-9]+(\\)?: )");
    Answer answer{};
    const std::string printed = printedBy([&] { answer.status = call(); });
    answer.printed = std::regex_replace(printed, lineNumber, "$1$2#$3");
    return answer;
}
