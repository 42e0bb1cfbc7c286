#include "tests/support/answer.h"
#include "tests/support/patterns.h"

#include <cstdio>
#include <ostream>
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
    // "function-12" and "function(12)"
    Answer answer{};
    const std::string printed = printedBy([&] { answer.status = call(); });
    answer.printed = replaced(printed, R"((bsp\w*|rtl8239\w*)(-|\()\d+)", "$1$2#");
    return answer;
}

std::string complainedBy(const std::function<void()> &function) {
    // Standard error stands in for standard output, which is what the capture captures.
    return printedBy([&] {
        const int savedStderr = dup(STDERR_FILENO);
        dup2(STDOUT_FILENO, STDERR_FILENO);
        function();
        dup2(savedStderr, STDERR_FILENO);
        close(savedStderr);
    });
}

std::string listed(std::initializer_list<int64_t> numbers) {
    std::string text;
    for (const int64_t number : numbers)
        text += (text.empty() ? "" : " ") + std::to_string(number);
    return text;
}
