#include "tests/kernel_driver/check.h"

#include "tests/kernel_driver/files.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sstream>
#include <unistd.h>

namespace {

constexpr char kPrintedFile[] = "/tmp/printed";

int made = 0;
int failed = 0;

void report(bool isGood, const std::string &what, const std::string &expected,
            const std::string &seen) {
    ++made;
    if (isGood) {
        std::printf("ok    %s\n", what.c_str());
        return;
    }
    ++failed;
    std::printf("FAIL  %s: expected %s, saw %s\n", what.c_str(), expected.c_str(), seen.c_str());
}

/** A text in one line. */
std::string quoted(const std::string &text) {
    std::string line = "\"";
    for (const char character : text) {
        if (character == '\n' || character == '\r')
            line += character == '\n' ? "\\n" : "\\r";
        else
            line += character;
    }
    return line + '"';
}

/** The size, and some bytes from a position on. */
std::string described(const Bytes &bytes, size_t position) {
    constexpr size_t kShown = 8;
    std::string text = std::to_string(bytes.size()) + " bytes, at " + std::to_string(position);
    for (size_t i = position; i < std::min(bytes.size(), position + kShown); ++i) {
        char digits[8];
        std::snprintf(digits, sizeof(digits), " %02X", bytes[i]);
        text += digits;
    }
    return text;
}

/** Standard output and standard error go into a file for a while. */
class Redirection {
  public:
    Redirection() {
        std::fflush(nullptr);
        const int file = open(kPrintedFile, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0644);
        dup2(file, STDOUT_FILENO);
        dup2(file, STDERR_FILENO);
        close(file);
    }
    Redirection(const Redirection &) = delete;
    Redirection &operator=(const Redirection &) = delete;
    ~Redirection() {
        std::fflush(nullptr);
        dup2(output_, STDOUT_FILENO);
        dup2(error_, STDERR_FILENO);
        close(output_);
        close(error_);
    }

  private:
    int output_ = dup(STDOUT_FILENO), error_ = dup(STDERR_FILENO);
};

} // namespace

void beginSection(const std::string &title) {
    std::printf("\n-- %s\n", title.c_str());
}

void expectSame(const std::string &what, int64_t expected, int64_t seen) {
    report(expected == seen, what, std::to_string(expected), std::to_string(seen));
}

void expectSame(const std::string &what, const std::string &expected, const std::string &seen) {
    report(expected == seen, what, quoted(expected), quoted(seen));
}

void expectSame(const std::string &what, const Bytes &expected, const Bytes &seen) {
    const size_t common = std::min(expected.size(), seen.size());
    const auto difference =
        std::mismatch(expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(common),
                      seen.begin())
            .first -
        expected.begin();
    const auto position = static_cast<size_t>(difference);
    report(expected == seen, what, described(expected, position), described(seen, position));
}

Answer expectStatus(const std::string &what, int32_t expected,
                    const std::function<int32_t()> &call) {
    Answer answer = {};
    {
        const Redirection redirection;
        answer.status = call();
    }
    const Bytes printed = readFile(kPrintedFile);
    answer.printed.assign(printed.begin(), printed.end());
    expectSame(what + " answers " + std::to_string(expected), expected, answer.status);
    std::istringstream lines(answer.printed);
    for (std::string line; std::getline(lines, line);)
        std::printf("      | %s\n", line.c_str());
    return answer;
}

void expectSilent(const std::string &what, int32_t expected, const std::function<int32_t()> &call) {
    expectSame(what + " prints nothing", "", expectStatus(what, expected, call).printed);
}

void expectPrinted(const Answer &answer, const std::string &text) {
    report(answer.printed.find(text) != std::string::npos, "it prints " + quoted(text), "it",
           quoted(answer.printed));
}

int checksMade() {
    return made;
}

int checksFailed() {
    return failed;
}
