#include "iodbg/trace/traced_program.h"

#include "command_line/programs.h"
#include "tracer/ring.h"
#include "virtual_board/programs/preload_list.h"
#include "virtual_board/programs/program_file.h"
#include "virtual_board/programs/search_path.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace iodbg {

namespace {

namespace fs = std::filesystem;

constexpr char kListSeparators[] = ": \t\n"; // of a list of libraries to preload

// Signals, for as long as there is a program: those that a terminal sends are for it, too, and
// others are handed on to it.
volatile pid_t tracedProgram = 0;
volatile sig_atomic_t endIsWanted = 0;

void onSignal(int signal) {
    const int savedErrno = errno;
    if (tracedProgram == 0)
        endIsWanted = 1;
    else if (signal == SIGTERM || signal == SIGHUP)
        kill(tracedProgram, signal);
    errno = savedErrno;
}

void takeSignalsFor(pid_t program) {
    tracedProgram = program;
    struct sigaction action = {};
    action.sa_handler = onSignal;
    for (const int signal : command_line::kEndingSignals)
        sigaction(signal, &action, nullptr);
}

/** The library that is preloaded: beside this program, or where it belongs as seen from there. */
fs::path findLibrary() {
    std::error_code failure;
    const fs::path here = fs::read_symlink("/proc/self/exe", failure).parent_path();
    for (const char *folder : {"..", IODBG_LIBRARIES_FROM_PROGRAMS}) {
        fs::path library = (here / folder / tracer::kLibrary).lexically_normal();
        if (fs::exists(library, failure))
            return library;
    }
    throw Failure(kNotTraced,
                  std::string(tracer::kLibrary) + " is not where it belongs, in " +
                      (here / IODBG_LIBRARIES_FROM_PROGRAMS).lexically_normal().string(),
                  "install it again");
}

vb::ProgramFile examine(const std::string &name) {
    const vb::SearchPath places(name.c_str());
    std::string path(places.size(), '\0');
    const auto isProgram = [](const char *place) { return vb::isExecutable(AT_FDCWD, place); };
    return places.find(path.data(), isProgram) ? vb::examineProgram(AT_FDCWD, path.c_str())
                                               : vb::ProgramFile{};
}

/** Why nobody would see what a program sends; null when it can be seen. */
const char *reasonAgainst(vb::Fitness fitness) {
    switch (fitness) {
    case vb::Fitness::NotStarted:
    case vb::Fitness::Fits:
        return nullptr;
    case vb::Fitness::NoSeam:
        return "is for another machine or word size than iodbg";
    case vb::Fitness::Static:
        return "is statically linked";
    case vb::Fitness::OtherLoader:
        return "is not linked with the GNU C library";
    case vb::Fitness::OtherIds:
        return "is started with other rights (set-user-id or set-group-id)";
    case vb::Fitness::Capabilities:
        return "has file capabilities";
    case vb::Fitness::Unreadable:
        return "cannot be read, so that nobody can tell what it is";
    }
    return nullptr;
}

void requireFit(const std::string &name, const vb::ProgramFile &program, const fs::path &library) {
    const bool isOther =
        program.fitness == vb::Fitness::Fits && !vb::isOfMachine(library.c_str(), program.machine);
    const char *reason = reasonAgainst(isOther ? vb::Fitness::NoSeam : program.fitness);
    if (reason == nullptr)
        return;
    const std::string script = program.interpreter;
    throw Failure(kNotTraced,
                  name + (script.empty() ? " " : " needs " + script + ", which ") + reason +
                      ": what it sends to the board would not be seen",
                  "trace a program that is linked dynamically, as this user");
}

/** The list of libraries to preload: a sanitizer's has to be the first. */
std::string preloadList(const vb::ProgramFile &program, const fs::path &library) {
    if (library.string().find_first_of(kListSeparators) != std::string::npos)
        throw Failure(kNotTraced,
                      library.string() + " cannot be preloaded: a path with a colon or a blank in "
                                         "it would be taken for two",
                      "install iodbg elsewhere");
    std::string list = program.runtime;
    list += (list.empty() ? "" : ":") + library.string();
    const char *inherited = std::getenv(vb::kPreloadVariable);
    return inherited != nullptr && *inherited != '\0' ? list + ":" + inherited : list;
}

} // namespace

TracedProgram::TracedProgram(const std::vector<std::string> &words, const std::string &recording,
                             int output) {
    const fs::path library = findLibrary();
    const vb::ProgramFile program = examine(words[0]);
    requireFit(words[0], program, library);
    const std::vector<std::string> variables = {
        std::string(vb::kPreloadVariable) + "=" + preloadList(program, library),
        std::string(tracer::kRingVariable) + "=" + recording};
    // What its children start when it has ended is still this process's to wait for.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    int error = 0;
    {
        const command_line::BlockedSignals ending(
            command_line::kEndingSignals); // until there is somebody to hand them to
        error = command_line::startProgram({words, variables, output, STDERR_FILENO},
                                           ending.before(), pid_);
        if (error == 0)
            takeSignalsFor(pid_);
    }
    if (error != 0)
        throw Failure(kNotTraced, "cannot start " + words[0] + ": " + std::strerror(error),
                      "give a program that can be started");
}

TracedProgram::~TracedProgram() {
    tracedProgram = 0;
    for (const int signal : command_line::kEndingSignals)
        std::signal(signal, SIG_IGN); // how this ends is told by the program's end
}

bool TracedProgram::wantsEnd() const {
    return hasEnded_ && endIsWanted != 0;
}

bool TracedProgram::isThere() {
    int status = 0;
    pid_t ended = 0;
    while ((ended = waitpid(-1, &status, WNOHANG)) > 0) {
        if (ended != pid_)
            continue;
        status_ = status;
        hasEnded_ = true;
        tracedProgram = 0;
    }
    return ended == 0 && !wantsEnd();
}

int TracedProgram::end() const {
    return command_line::endAs(status_);
}

} // namespace iodbg
