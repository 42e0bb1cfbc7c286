#pragma once
// Running programs of the build and seeing what they answer. Where the build's programs need an
// emulator, they are run under it.

#include "language/texts.h"

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

/** Variables that a program gets in addition to the test's own: "NAME=VALUE". */
using Environment = std::vector<std::string>;

struct ProcessResult {
    int exitCode; // 128 + the signal's number when a signal ended the program
    std::string out;
    std::string err;
};

/** An unnamed file that a standard stream of a program is connected to. */
class StreamFile {
  public:
    explicit StreamFile(const std::string &content = "");
    StreamFile(const StreamFile &) = delete;
    StreamFile &operator=(const StreamFile &) = delete;
    ~StreamFile();

    int descriptor() const { return fd_; }
    std::string content() const;

  private:
    int fd_;
};

/** A program that has been started. One that still runs when this object goes is killed. */
class Process {
  public:
    explicit Process(const std::vector<std::string> &argv, const Environment &environment = {},
                     const std::string &input = "");
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;
    ~Process();

    /** What it has printed so far, on standard output and on standard error. */
    std::string output() const;
    std::string errors() const;
    void signal(int number) const;
    pid_t pid() const { return pid_; }
    /** Waits for its end. */
    ProcessResult wait();

  private:
    StreamFile in_, out_, err_;
    pid_t pid_ = -1; // -1 once its end has been seen
};

/** Waits, in real time, until a condition holds; false when it does not within a minute. */
bool comesTrue(const std::function<bool()> &condition);

/** Runs a program of the build to its end. */
ProcessResult run(const std::vector<std::string> &argv, const Environment &environment = {},
                  const std::string &input = "");

/** The same, with the program's requests answered by the board in a folder. */
ProcessResult runOnBoard(const std::string &boardFolder, const std::vector<std::string> &argv,
                         const std::string &input = "");

/** What somebody types on a terminal once a prompt is there. */
struct Typing {
    std::string prompt = {};
    std::string answer = {};
};

/** What terminal a program runs on. */
struct TerminalKind {
    unsigned short rows = 24, columns = 80;
    Environment variables = {"TERM=xterm", "NO_COLOR="};
};

/** What a program leaves behind that had a terminal. */
struct TerminalEnd {
    int exitCode = -1; // 128 + the signal's number when a signal ended the program
    bool isEchoing = false;
    bool isSuspending = false; // Ctrl-Z does what it usually does
};

/** Runs a program with a terminal for all its streams; what appears there. */
std::string runOnTerminal(const std::vector<std::string> &argv, const Environment &environment,
                          const Typing &typing = {}, const TerminalKind &kind = {},
                          TerminalEnd *end = nullptr);

/** A text without what moves a terminal's cursor and colours its characters. */
std::string withoutEscapes(const std::string &text);

/** What a program needs to be started on a board other than through `vboard run`. */
Environment boardEnvironment(const std::string &boardFolder);

/** Variables with the test's own, but for those that have another value among them. */
Environment withOurs(const Environment &environment);

/** What a program's end, as waiting for it tells, is as an exit code. */
int exitCodeOf(int status);

/** The path of a program of the build by its name. */
std::string builtProgram(const std::string &name);

/** Whether the build's programs run under an emulator, and so cannot execute each other. */
bool isEmulated();

using language::linesOf;
