#include "tests/support/process.h"

#include "support/owned.h"
#include "tests/support/host_clock.h"
#include "tests/support/patterns.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr int kCannotExecute = 127;
constexpr int kSignalled = 128; // added to a signal's number, as shells do

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

/** Words as system calls take them. */
std::vector<char *> pointersTo(const std::vector<std::string> &words) {
    std::vector<char *> pointers;
    for (const std::string &word : words)
        pointers.push_back(const_cast<char *>(word.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

/** How to start a program of the build, under the emulator where it needs one. */
struct Start {
    std::vector<std::string> argv;
    std::vector<std::string> variables;

    Start(const std::vector<std::string> &program, const Environment &environment)
        : argv(isEmulated() ? emulated(program, environment) : program),
          variables(withOurs(isEmulated() ? Environment{} : environment)) {
        protectHostClock();
    }
};

/** What becomes of descriptors in a program that is started. */
class FileActions {
  public:
    FileActions() { posix_spawn_file_actions_init(&actions_); }
    FileActions(const FileActions &) = delete;
    FileActions &operator=(const FileActions &) = delete;
    ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }

    void duplicate(int from, int to) { posix_spawn_file_actions_adddup2(&actions_, from, to); }
    const posix_spawn_file_actions_t *get() const { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_ = {};
};

/**
 * Runs a program as a shell does, which leads the terminal's session and outlives it: when the
 * leader ends, what the terminal has not delivered yet is lost. This one ends with the other end of
 * a pipe, and as the program did.
 */
[[noreturn]] void leadSession(const Start &start, const bsp::Descriptor &pipe) {
    for (const int typed : {SIGINT, SIGQUIT})
        std::signal(typed, SIG_IGN);
    const pid_t program = fork();
    if (program == 0) {
        for (const int typed : {SIGINT, SIGQUIT})
            std::signal(typed, SIG_DFL);
        execvpe(start.argv[0].c_str(), pointersTo(start.argv).data(),
                pointersTo(start.variables).data());
        _exit(kCannotExecute);
    }
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        close(stream);
    int status = 0;
    if (waitpid(program, &status, 0) < 0)
        _exit(kCannotExecute);
    char nothing = 0;
    while (read(pipe.get(), &nothing, 1) < 0 && errno == EINTR) {
    }
    _exit(exitCodeOf(status));
}

/** What appears on a terminal until no program has it any more, which an error tells. */
std::string dialogue(int terminal, const Typing &typing) {
    std::string text;
    char part[4096];
    ssize_t count = 0;
    bool isTyped = typing.prompt.empty();
    while ((count = read(terminal, part, sizeof(part))) > 0) {
        text.append(part, static_cast<size_t>(count));
        if (isTyped || text.find(typing.prompt) == std::string::npos)
            continue;
        isTyped = true;
        if (write(terminal, typing.answer.data(), typing.answer.size()) < 0)
            break;
    }
    return text;
}

} // namespace

int exitCodeOf(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
}

Environment withOurs(const Environment &environment) {
    Environment all = environment;
    for (char *const *variable = environ; *variable != nullptr; ++variable) {
        const std::string ours = *variable;
        const std::string name = ours.substr(0, ours.find('=') + 1);
        const bool isReplaced =
            std::any_of(environment.begin(), environment.end(),
                        [&](const std::string &other) { return other.starts_with(name); });
        if (!isReplaced)
            all.push_back(ours);
    }
    return all;
}

StreamFile::StreamFile(const std::string &content) : fd_(memfd_create("stream", MFD_CLOEXEC)) {
    const auto size = static_cast<ssize_t>(content.size());
    if (fd_ < 0 || pwrite(fd_, content.data(), content.size(), 0) != size)
        throw std::runtime_error("no file for a stream: " + std::string(std::strerror(errno)));
}

StreamFile::~StreamFile() {
    close(fd_);
}

std::string StreamFile::content() const {
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
    const Start start(argv, environment);
    FileActions streams;
    streams.duplicate(in_.descriptor(), STDIN_FILENO);
    streams.duplicate(out_.descriptor(), STDOUT_FILENO);
    streams.duplicate(err_.descriptor(), STDERR_FILENO);
    // Not a fork, which would copy the page tables of a test under a sanitizer.
    const int error =
        posix_spawnp(&pid_, start.argv[0].c_str(), streams.get(), nullptr,
                     pointersTo(start.argv).data(), pointersTo(start.variables).data());
    if (error != 0)
        throw std::runtime_error(start.argv[0] + ": " + std::strerror(error));
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
    const Start start(argv, variables);
    const winsize size = {kind.rows, kind.columns, 0, 0};
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("pipe2: " + std::string(std::strerror(errno)));
    const bsp::Descriptor leadersEnd(ends[0]);
    std::optional<bsp::Descriptor> ourEnd(ends[1]);
    int terminal = -1;
    const pid_t pid = forkpty(&terminal, nullptr, nullptr, &size);
    if (pid < 0)
        throw std::runtime_error("forkpty: " + std::string(std::strerror(errno)));
    if (pid == 0) {
        ourEnd.reset();
        leadSession(start, leadersEnd);
    }
    const std::string text = dialogue(terminal, typing);
    termios left = {};
    tcgetattr(terminal, &left);
    ourEnd.reset();
    int status = 0;
    waitpid(pid, &status, 0);
    close(terminal);
    if (end != nullptr)
        *end = {exitCodeOf(status), (left.c_lflag & ECHO) != 0,
                left.c_cc[VSUSP] != _POSIX_VDISABLE};
    return text;
}

std::string withoutEscapes(const std::string &text) {
    return replaced(text, "\x1b\\[[0-9;]*[A-Za-z]|\r", "");
}

ProcessResult runOnBoard(const std::string &boardFolder, const std::vector<std::string> &argv,
                         const std::string &input) {
    return run(argv, boardEnvironment(boardFolder), input);
}

/** As vboard prints it. */
static Environment printedEnvironment(const std::string &boardFolder) {
    const ProcessResult answer = run({builtProgram("vboard"), "env", boardFolder});
    if (answer.exitCode != 0)
        throw std::runtime_error(answer.err);
    Environment environment = linesOf(answer.out);
    // The board's library comes before the sanitizer's, which would refuse that.
    environment.emplace_back("ASAN_OPTIONS=verify_asan_link_order=0");
    return environment;
}

Environment boardEnvironment(const std::string &boardFolder) {
    // It is asked for with every test, and differs between boards in their folders alone.
    static const std::string firstFolder = boardFolder;
    static const Environment first = printedEnvironment(boardFolder);
    Environment environment = first;
    for (std::string &variable : environment) {
        const size_t place = variable.find(firstFolder);
        if (place != std::string::npos)
            variable.replace(place, firstFolder.size(), boardFolder);
    }
    return environment;
}

std::string builtProgram(const std::string &name) {
    return std::string(BSP_TEST_PROGRAMS) + "/" + name;
}

bool isEmulated() {
    return *BSP_TEST_EMULATOR != '\0';
}
