#include "virtual_board/command/program.h"

#include "language/refused.h"
#include "virtual_board/command/environment.h"
#include "virtual_board/command/interruption.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" {
#include <sys/pidfd.h> // has no names of C++ in it, and does not say so
}

namespace vboard {

namespace {

[[noreturn]] void failToStart(const std::string &program) {
    throw language::Refused("cannot start " + program + ": " + std::strerror(errno));
}

/** The environment of a program on a board, and room for the pointers to it. */
class Surroundings {
  public:
    Surroundings(VBoard *board, const char *program) {
        std::map<std::string, std::string> variables;
        for (char **setting = environ; *setting != nullptr; ++setting) {
            const std::string text = *setting;
            variables[text.substr(0, text.find('='))] = text;
        }
        for (const VBoardVariable &variable : environmentOf(board, program))
            variables[variable.name] = std::string(variable.name) + "=" + variable.value;
        for (auto &[name, setting] : variables)
            settings_.push_back(std::move(setting));
        for (std::string &setting : settings_)
            pointers_.push_back(setting.data());
        pointers_.push_back(nullptr);
    }

    char **get() { return pointers_.data(); }

  private:
    std::vector<std::string> settings_;
    std::vector<char *> pointers_;
};

std::vector<char *> pointersTo(const std::vector<std::string> &words) {
    std::vector<char *> pointers;
    pointers.reserve(words.size() + 1);
    for (const std::string &word : words)
        pointers.push_back(const_cast<char *>(word.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

/** What a new process does: becomes the program, or tells why it cannot. */
[[noreturn]] void become(const std::vector<char *> &words, char **surroundings, int output,
                         int errors, int complaints) {
    prctl(PR_SET_PDEATHSIG, SIGKILL); // it does not outlive the play, however that ends
    setpgid(0, 0);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
        std::signal(signal, SIG_DFL);
    const int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (dup2(input, STDIN_FILENO) >= 0 && dup2(output, STDOUT_FILENO) >= 0 &&
        dup2(errors, STDERR_FILENO) >= 0) {
        environ = surroundings;
        execvp(words[0], words.data());
    }
    const int reason = errno;
    _exit(write(complaints, &reason, sizeof(reason)) < 0 ? 1 : 0); // which nobody looks at
}

/** Starts a program in a group of its own. */
pid_t start(VBoard *board, const std::vector<std::string> &words, int output, int errors) {
    Surroundings surroundings(board, words[0].c_str());
    const std::vector<char *> line = pointersTo(words);
    int ends[2] = {-1, -1};
    if (output < 0 || errors < 0 || pipe2(ends, O_CLOEXEC) != 0)
        failToStart(words[0]);
    const OpenFile reader(ends[0]);
    pid_t id = 0;
    {
        const OpenFile writer(ends[1]);
        id = fork();
        if (id == 0)
            become(line, surroundings.get(), output, errors, writer.get());
    }
    int reason = errno;
    if (id > 0 && read(reader.get(), &reason, sizeof(reason)) == 0)
        return id; // the pipe was closed by the program's start
    if (id > 0)
        waitpid(id, nullptr, 0);
    errno = reason;
    failToStart(words[0]);
}

/** A file in memory that programs can share: what they write is put behind the rest. */
int newFile(const char *name) {
    const int file = memfd_create(name, MFD_CLOEXEC);
    return file >= 0 && fcntl(file, F_SETFL, O_APPEND) == 0 ? file : -1;
}

} // namespace

OpenFile::~OpenFile() {
    if (descriptor_ >= 0)
        close(descriptor_);
}

std::string OpenFile::content(size_t from) const {
    constexpr size_t kPiece = 65536;
    std::string content;
    for (;;) {
        const size_t size = content.size();
        content.resize(size + kPiece);
        const ssize_t count =
            pread(descriptor_, content.data() + size, kPiece, static_cast<off_t>(from + size));
        content.resize(size + static_cast<size_t>(count > 0 ? count : 0));
        if (count <= 0)
            return content;
    }
}

Program::Program(VBoard *board, const std::vector<std::string> &words)
    : output_(newFile("output")), errors_(newFile("errors")),
      id_(start(board, words, output_.get(), errors_.get())), process_(pidfd_open(id_, 0)) {
    const int reason = errno;
    if (process_.get() >= 0 && addGroup(id_)) {
        vboardExpectProgram(board, id_, nullptr); // the next call tells of a board that is gone
        return;
    }
    noteEnd();
    errno = process_.get() < 0 ? reason : EAGAIN;
    failToStart(words[0]);
}

Program::~Program() {
    end();
}

void Program::noteEnd() {
    hasEnded_ = true;
    kill(-id_, SIGKILL); // with what it has left; the group is there as long as its leader is
    removeGroup(id_);
    int status = 0;
    waitpid(id_, &status, 0);
    constexpr int kSignal = 128;
    exitCode_ = WIFSIGNALED(status) ? kSignal + WTERMSIG(status) : WEXITSTATUS(status);
}

bool Program::awaitEnd(int milliseconds) {
    pollfd process = {process_.get(), POLLIN, 0};
    if (!hasEnded_ && poll(&process, 1, milliseconds) == 1)
        noteEnd();
    return hasEnded_;
}

void Program::end() {
    constexpr int kPatienceMs = 2000;
    if (hasEnded_)
        return;
    kill(-id_, SIGTERM);
    kill(-id_, SIGCONT); // one that is stopped could not
    if (!awaitEnd(kPatienceMs))
        noteEnd();
}

} // namespace vboard
