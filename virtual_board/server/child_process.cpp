#include "virtual_board/server/child_process.h"

#include "virtual_board/calls/board.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace vboard::server {

namespace {

constexpr size_t kMostKept = size_t{1} << 20; // of what it prints without an end of line
constexpr int kCannotStart = 127;

[[noreturn]] void failStart() {
    throw CallFailed(VBOARD_E_SYSTEM,
                     std::string("cannot start 'vboard play': ") + std::strerror(errno));
}

/** A pipe whose ends close themselves. */
struct Pipe {
    int ends[2] = {-1, -1};

    Pipe() {
        if (pipe2(ends, O_CLOEXEC) != 0)
            failStart();
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;
    ~Pipe() {
        for (const int end : ends) {
            if (end >= 0)
                close(end);
        }
    }
    int release(int end) { return std::exchange(ends[end], -1); }
};

/** What follows fork: nothing but calls that may. */
[[noreturn]] void become(const char *program, char *const *words, int output, int errors) {
    constexpr int kMostDescriptors = 4096;
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGUSR1})
        std::signal(number, SIG_DFL);
    const int nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    // Connections of others would stay open with it.
    for (int fd = STDERR_FILENO + 1; fd < kMostDescriptors; ++fd)
        close(fd);
    execv(program, words);
    _exit(kCannotStart);
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string> &words) {
    std::error_code failure;
    const std::string program = std::filesystem::read_symlink("/proc/self/exe", failure);
    std::vector<std::string> all = {"vboard"};
    all.insert(all.end(), words.begin(), words.end());
    std::vector<char *> pointers;
    pointers.reserve(all.size() + 1);
    for (std::string &word : all)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    Pipe output, errors;
    pid_ = fork();
    if (pid_ < 0)
        failStart();
    if (pid_ == 0)
        become(program.c_str(), pointers.data(), output.ends[1], errors.ends[1]);
    output_ = output.release(0);
    errors_ = errors.release(0);
}

ChildProcess::~ChildProcess() {
    signal(SIGKILL);
    for (int *pipe : {&output_, &errors_}) {
        if (*pipe >= 0)
            close(*pipe);
    }
    if (!hasEnded_)
        waitpid(pid_, nullptr, 0);
}

void ChildProcess::signal(int number) const {
    if (!hasEnded_)
        kill(pid_, number);
}

/** Reads what is there; false at its end. */
bool ChildProcess::readFrom(int &pipe, std::string &text) {
    char bytes[4096];
    const ssize_t got = read(pipe, bytes, sizeof(bytes));
    if (got < 0 && (errno == EINTR || errno == EAGAIN))
        return true;
    if (got <= 0) {
        close(pipe);
        pipe = -1;
        return false;
    }
    if (text.size() < kMostKept)
        text.append(bytes, static_cast<size_t>(got));
    return true;
}

bool ChildProcess::work(int timeoutMs) {
    pollfd pipes[] = {{output_, POLLIN, 0}, {errors_, POLLIN, 0}};
    const bool isSilent = output_ < 0 && errors_ < 0;
    const int ready = poll(pipes, 2, timeoutMs); // what is closed is not looked at
    if (ready > 0) {
        if (pipes[0].revents != 0)
            readFrom(output_, printed_);
        if (pipes[1].revents != 0)
            readFrom(errors_, complained_);
        return true;
    }
    int status = 0;
    if (!hasEnded_ && waitpid(pid_, &status, isSilent ? 0 : WNOHANG) == pid_) {
        hasEnded_ = true;
        exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }
    return !hasEnded_;
}

bool ChildProcess::takeLine(std::string &line) {
    const size_t end = printed_.find('\n');
    if (end == std::string::npos)
        return false;
    line = printed_.substr(0, end);
    printed_.erase(0, end + 1);
    return true;
}

std::string ChildProcess::complaint() const {
    constexpr char kName[] = "vboard: ";
    std::string text = complained_;
    if (text.rfind(kName, 0) == 0)
        text.erase(0, sizeof(kName) - 1);
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

} // namespace vboard::server
