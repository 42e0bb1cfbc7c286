#include "command_line/programs.h"

#include <cerrno>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace command_line {

namespace {

constexpr int kHandledSignals[] = {SIGCHLD, SIGHUP, SIGINT, SIGQUIT, SIGTERM};

/** This program's variables with others in place of its own. */
std::vector<std::string> environmentWith(const std::vector<std::string> &settings) {
    std::vector<std::string> variables = settings;
    const auto isReplaced = [&settings](const std::string &variable) {
        for (const std::string &setting : settings) {
            if (variable.compare(0, setting.find('=') + 1, setting, 0, setting.find('=') + 1) == 0)
                return true;
        }
        return false;
    };
    for (char **variable = environ; *variable != nullptr; ++variable) {
        if (!isReplaced(*variable))
            variables.emplace_back(*variable);
    }
    return variables;
}

std::vector<char *> pointersTo(const std::vector<std::string> &texts) {
    std::vector<char *> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string &text : texts)
        pointers.push_back(const_cast<char *>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

/** How a program's signals begin: a closed pipe ends it, as it ends any. */
class SpawnAttributes {
  public:
    explicit SpawnAttributes(const sigset_t &blocked) {
        sigset_t usual;
        sigemptyset(&usual);
        sigaddset(&usual, SIGPIPE);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setsigdefault(&attributes_, &usual);
        posix_spawnattr_setsigmask(&attributes_, &blocked);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    }
    SpawnAttributes(const SpawnAttributes &) = delete;
    SpawnAttributes &operator=(const SpawnAttributes &) = delete;
    ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }

    const posix_spawnattr_t *get() const { return &attributes_; }

  private:
    posix_spawnattr_t attributes_{};
};

} // namespace

int startProgram(const ProgramLine &line, const sigset_t &blocked, pid_t &pid) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, line.output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, line.errors, STDERR_FILENO);
    const SpawnAttributes attributes(blocked);
    const std::vector<std::string> variables = environmentWith(line.variables);
    const int error = posix_spawnp(&pid, line.words[0].c_str(), &actions, attributes.get(),
                                   pointersTo(line.words).data(), pointersTo(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

int endAs(int status) {
    if (!WIFSIGNALED(status))
        return WEXITSTATUS(status);
    const int signal = WTERMSIG(status);
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none); // the program's own is the one that tells something
    std::signal(signal, SIG_DFL);
    sigset_t own;
    sigemptyset(&own);
    sigaddset(&own, signal);
    sigprocmask(SIG_UNBLOCK, &own, nullptr);
    raise(signal);
    constexpr int kFirstOfSignals = 128; // what shells make of it
    return kFirstOfSignals + signal;
}

ProgramRunner::ProgramRunner() : handled_(kHandledSignals) {
    std::signal(SIGCHLD, SIG_DFL); // ignored, the end of a program would be told to nobody
}

int ProgramRunner::run(const ProgramLine &line) {
    pid_t pid = 0;
    if (const int error = startProgram(line, handled_.before(), pid); error != 0)
        throw std::system_error(error, std::generic_category());
    return await(pid);
}

int ProgramRunner::await(pid_t pid) const {
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) {
        siginfo_t info = {};
        const int signal = sigwaitinfo(&handled_.all(), &info);
        // A terminal's are the program's, too.
        if (signal > 0 && signal != SIGCHLD && info.si_code <= 0)
            kill(pid, signal);
    }
    return status;
}

} // namespace command_line
