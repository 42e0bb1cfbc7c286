#include "tests/support/process.h"

#include "tests/support/host_clock.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <pty.h>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr int kCannotExecute = 127;
constexpr int kSignalled = 128; // added to a signal's number, as shells do

int exitCodeOf(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
}

/** The command line that runs a program of the build with more variables. */
std::vector<std::string> emulated(const std::vector<std::string> &argv,
                                  const Environment &environment) {
    std::istringstream words(BSP_TEST_EMULATOR);
    std::vector<std::string> command;
    for (std::string word; words >> word;)
        command.push_back(word);
    // The variables are for the program: the emulator is another machine's.
    for (const std::string &variable : environment)
        command.insert(command.end(), {"-E", variable});
    command.insert(command.end(), argv.begin(), argv.end());
    return command;
}

[[noreturn]] void execute(const std::vector<std::string> &argv, const Environment &environment) {
    for (const std::string &variable : environment) {
        const size_t equals = variable.find('=');
        setenv(variable.substr(0, equals).c_str(), variable.substr(equals + 1).c_str(), 1);
    }
    std::vector<char *> words;
    for (const std::string &word : argv)
        words.push_back(const_cast<char *>(word.c_str()));
    words.push_back(nullptr);
    execvp(words[0], words.data());
    _exit(kCannotExecute);
}

/** Executes a program of the build, under the emulator where it needs one. */
[[noreturn]] void executeBuilt(const std::vector<std::string> &argv,
                               const Environment &environment) {
    protectHostClock();
    if (isEmulated())
        execute(emulated(argv, environment), {});
    execute(argv, environment);
}

} // namespace

Process::Stream::Stream(const std::string &content) : fd_(memfd_create("stream", MFD_CLOEXEC)) {
    const auto size = static_cast<ssize_t>(content.size());
    if (fd_ < 0 || pwrite(fd_, content.data(), content.size(), 0) != size)
        throw std::runtime_error("no file for a stream: " + std::string(std::strerror(errno)));
}

Process::Stream::~Stream() {
    close(fd_);
}

std::string Process::Stream::content() const {
    std::string text;
    char part[4096];
    ssize_t count = 0;
    while ((count = pread(fd_, part, sizeof(part), static_cast<off_t>(text.size()))) > 0)
        text.append(part, static_cast<size_t>(count));
    return text;
}

Process::Process(const std::vector<std::string> &argv, const Environment &environment,
                 const std::string &input)
    : in_(input) {
    pid_ = fork();
    if (pid_ < 0)
        throw std::runtime_error("fork: " + std::string(std::strerror(errno)));
    if (pid_ > 0)
        return;
    dup2(in_.descriptor(), STDIN_FILENO);
    dup2(out_.descriptor(), STDOUT_FILENO);
    dup2(err_.descriptor(), STDERR_FILENO);
    executeBuilt(argv, environment);
}

Process::~Process() {
    if (pid_ < 0)
        return;
    signal(SIGKILL);
    wait();
}

std::string Process::output() const {
    return out_.content();
}

std::string Process::errors() const {
    return err_.content();
}

void Process::signal(int number) const {
    kill(pid_, number);
}

ProcessResult Process::wait() {
    int status = 0;
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    return {exitCodeOf(status), out_.content(), err_.content()};
}

bool comesTrue(const std::function<bool()> &condition) {
    constexpr int kTries = 6000;
    constexpr int kPauseMs = 10;
    for (int i = 0; i < kTries; ++i) {
        if (condition())
            return true;
        poll(nullptr, 0, kPauseMs);
    }
    return false;
}

ProcessResult run(const std::vector<std::string> &argv, const Environment &environment,
                  const std::string &input) {
    return Process(argv, environment, input).wait();
}

std::string runOnTerminal(const std::vector<std::string> &argv, const Environment &environment,
                          const Typing &typing, const TerminalKind &kind, TerminalEnd *end) {
    Environment variables = kind.variables;
    variables.insert(variables.end(), environment.begin(), environment.end());
    const winsize size = {kind.rows, kind.columns, 0, 0};
    int terminal = -1;
    const pid_t pid = forkpty(&terminal, nullptr, nullptr, &size);
    if (pid < 0)
        throw std::runtime_error("forkpty: " + std::string(std::strerror(errno)));
    if (pid == 0)
        executeBuilt(argv, variables);
    std::string text;
    char part[4096];
    ssize_t count = 0;
    bool isTyped = typing.prompt.empty();
    // The terminal of a program that has ended answers with an error.
    while ((count = read(terminal, part, sizeof(part))) > 0) {
        text.append(part, static_cast<size_t>(count));
        if (isTyped || text.find(typing.prompt) == std::string::npos)
            continue;
        isTyped = true;
        if (write(terminal, typing.answer.data(), typing.answer.size()) < 0)
            break;
    }
    termios left = {};
    tcgetattr(terminal, &left);
    close(terminal);
    int status = 0;
    waitpid(pid, &status, 0);
    if (end != nullptr)
        *end = {exitCodeOf(status), (left.c_lflag & ECHO) != 0,
                left.c_cc[VSUSP] != _POSIX_VDISABLE};
    return text;
}

std::string withoutEscapes(const std::string &text) {
    return std::regex_replace(text, std::regex("\x1b\\[[0-9;]*[A-Za-z]|\r"), "");
}

ProcessResult runOnBoard(const std::string &boardFolder, const std::vector<std::string> &argv,
                         const std::string &input) {
    return run(argv, boardEnvironment(boardFolder), input);
}

Environment boardEnvironment(const std::string &boardFolder) {
    const ProcessResult answer = run({builtProgram("vboard"), "env", boardFolder});
    if (answer.exitCode != 0)
        throw std::runtime_error(answer.err);
    Environment environment = linesOf(answer.out);
    // The board's library comes before the sanitizer's, which would refuse that.
    environment.emplace_back("ASAN_OPTIONS=verify_asan_link_order=0");
    return environment;
}

std::string builtProgram(const std::string &name) {
    return std::string(BSP_TEST_PROGRAMS) + "/" + name;
}

bool isEmulated() {
    return *BSP_TEST_EMULATOR != '\0';
}

std::vector<std::string> linesOf(const std::string &text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}
