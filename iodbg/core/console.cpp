#include "iodbg/core/console.h"

#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/host_file.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace iodbg {

namespace {

constexpr int kFirstOwnDescriptor = 3;

/** A descriptor of this program's own for standard output, which then leads to standard error. */
int takeStandardOutput() {
    const int own = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, kFirstOwnDescriptor);
    if (dup2(STDERR_FILENO, STDOUT_FILENO) < 0)
        close(STDOUT_FILENO); // without standard error the diagnostics have nowhere to go
    // Messages of the library and of this program come out in the order in which they were made.
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    return own;
}

void requireWritten(bool isWritten) {
    if (!isWritten)
        throw Failure::file("write to standard output", "lead it where there is space");
}

} // namespace

Console::Console() : out_(takeStandardOutput()) {}

void Console::beginLongWork() {
    answerInLines();
    std::signal(SIGPIPE, SIG_IGN); // work on hardware is not left half done for want of a reader
}

AnswerForm Console::form() const {
    if (!isJson_)
        return AnswerForm::Text;
    return isInLines_ ? AnswerForm::JsonLines : AnswerForm::Json;
}

Console::LibraryOutput::LibraryOutput(const Console &console) {
    requireWritten(dup2(console.out_.get(), STDOUT_FILENO) >= 0);
}

Console::LibraryOutput::~LibraryOutput() {
    dup2(STDERR_FILENO, STDOUT_FILENO);
}

ExitCode Console::print(const Report &report, const std::string &text) const {
    printText(isJson_ ? report.toJson(form()) : text);
    if (report.failures.empty())
        return ExitCode::Ok;
    if (const std::string hint = boardlessHint(); !hint.empty())
        std::fprintf(stderr, "iodbg: %s\n", hint.c_str());
    return ExitCode::Board;
}

void Console::printText(const std::string &text) const {
    const ByteView bytes(reinterpret_cast<const uint8_t *>(text.data()), text.size());
    if (isDataGiven_)
        writeAll(STDERR_FILENO, bytes);
    else
        requireWritten(writeAll(out_.get(), bytes));
}

void Console::giveData(ByteView data) {
    isDataGiven_ = true;
    requireWritten(writeAll(out_.get(), data));
}

std::optional<terminal::Size> Console::terminalSize() const {
    return terminal::sizeOf(out_.get());
}

ExitCode Console::print(const Failure &cause) const {
    const std::string hint = cause.code() == ExitCode::Board ? boardlessHint() : "";
    const Failure failure = hint.empty() ? cause : cause.with(hint);
    std::fprintf(stderr, "iodbg: %s\n", failure.what());
    if (isJson_)
        printText(failureToJson(failure, form()));
    return failure.code();
}

} // namespace iodbg
