#include "tests/support/outcome.h"

#include "tests/support/virtual_board_test.h"

#include <regex>
#include <unistd.h>

std::ostream &operator<<(std::ostream &stream, const Outcome &outcome) {
    return stream << outcome.status << ", printing \"" << outcome.text << "\"";
}

Outcome outcomeOf(const std::function<int32_t()> &call) {
    static const std::regex kSourceLine(R"((bsp\w*|rtl8239\w*)(-|\()\d+)");
    Outcome outcome;
    outcome.text = printedBy([&] { outcome.status = call(); });
    outcome.text = std::regex_replace(outcome.text, kSourceLine, "$1$2#");
    return outcome;
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
