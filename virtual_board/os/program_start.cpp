#include "virtual_board/os/program_start.h"

#include "virtual_board/os/seam.h"

#include <alloca.h>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <paths.h>
#include <sys/uio.h>
#include <unistd.h>

namespace vb {

namespace {

/** What is handed on; empty while nothing is. */
char library[PATH_MAX];
char boardFolder[kMaxFolderPath];
bool allowsHost = false;

constexpr char kAllowed[] = "1";
constexpr size_t kOwnVariables = 3;

/** The value in a text that sets a variable; null when it sets another. */
const char *valueIn(const char *setting, const char *name) {
    const size_t length = std::strlen(name);
    const bool isIts = std::strncmp(setting, name, length) == 0 && setting[length] == '=';
    return isIts ? setting + length + 1 : nullptr;
}

bool isSet(const char *value) {
    return value != nullptr && *value != '\0';
}

/** Appends a setting to an array behind which texts are written. */
char *set(char **&next, char *text, const char *name) {
    *next++ = text;
    return stpcpy(stpcpy(text, name), "=");
}

size_t settingSize(const char *name, const char *value) {
    return std::strlen(name) + std::strlen(value) + 2;
}

void say(const Refusal &refusal) {
    iovec parts[Refusal::kParts + 2];
    unsigned count = 0;
    const auto add = [&](const char *text) {
        parts[count++] = {const_cast<char *>(text), std::strlen(text)};
    };
    add("vboard: ");
    for (const char *part : refusal.parts)
        add(part);
    add("\n");
    // Where nobody can be told there is errno.
    [[maybe_unused]] const ssize_t written = writev(STDERR_FILENO, parts, static_cast<int>(count));
}

/** A variable's value in an environment, or null; of several the last one, which the loader takes.
 */
const char *lookUp(const char *const *environment, const char *name) {
    const char *last = nullptr;
    for (; environment != nullptr && *environment != nullptr; ++environment) {
        if (const char *value = valueIn(*environment, name); value != nullptr)
            last = value;
    }
    return last;
}

/**
 * Whether a program is a tool of valgrind's that its launcher starts. They are statically linked,
 * and load the program that they watch as the loader would, with what that preloads.
 */
bool isWatcher(const char *const *environment) {
    return isSet(lookUp(environment, "VALGRIND_LAUNCHER"));
}

bool isHandedOn() {
    return library[0] != '\0';
}

ProgramFile examine(int folder, const char *path, int flags) {
    return isHandedOn() ? examineProgram(folder, path, flags) : ProgramFile{};
}

} // namespace

void handOnBoard(const char *folder) {
    Dl_info info = {};
    const bool isKnown = dladdr(reinterpret_cast<const void *>(&handOnBoard), &info) != 0;
    if (!isKnown || realpath(info.dli_fname, library) == nullptr)
        library[0] = '\0';
    std::strncpy(boardFolder, folder, sizeof(boardFolder) - 1);
    allowsHost = isSet(std::getenv(kAllowHostVariable));
}

ProgramStart::ProgramStart(int folder, const char *path, int flags, const char *const *environment)
    : ProgramStart(path, examine(folder, path, flags), environment) {}

ProgramStart::ProgramStart(const char *path, const ProgramFile &program,
                           const char *const *environment)
    : environment_(environment), preload_(lookUp(environment, kPreloadVariable)),
      folder_(lookUp(environment, kFolderVariable)),
      allowance_(lookUp(environment, kAllowHostVariable)),
      list_(program, library, preload_, PreloadList::Seam::Inherited) {
    for (; environment != nullptr && environment[variables_] != nullptr; ++variables_) {
    }
    const Fitness fitness = list_.fitness();
    const bool isWatched = fitness == Fitness::Static && list_.hasSeam() && isWatcher(environment);
    isRefused_ = isUnfit(fitness) && !isWatched && !allowsHost && !isSet(allowance_);
    if (!isRefused_)
        return;
    say(refusalOf(fitness, program.interpreter, *path != '\0' ? path : "an open file"));
    // At ENOEXEC shells, and make, take a script for one of their own.
    errno = program.interpreter[0] != '\0' ? EACCES : ENOEXEC;
}

/** Whether the environment is as this would make it. */
bool ProgramStart::isComplete() const {
    if (!isSet(preload_) || !isSet(folder_) || (allowsHost && !isSet(allowance_)))
        return false;
    auto *list = static_cast<char *>(alloca(list_.size()));
    list_.write(list);
    return std::strcmp(list, preload_) == 0;
}

size_t ProgramStart::environmentSize() const {
    if (!isHandedOn() || isComplete())
        return 0;
    return (variables_ + kOwnVariables + 1) * sizeof(char *) + sizeof(kPreloadVariable) +
           list_.size() + settingSize(kFolderVariable, boardFolder) +
           settingSize(kAllowHostVariable, kAllowed);
}

char **ProgramStart::makeEnvironment(void *memory) const {
    auto **made = static_cast<char **>(memory);
    char **next = made;
    char *text = reinterpret_cast<char *>(made + variables_ + kOwnVariables + 1);
    const bool lacksFolder = !isSet(folder_);
    const bool lacksAllowance = allowsHost && !isSet(allowance_);
    for (size_t i = 0; i < variables_; ++i) {
        const char *setting = environment_[i];
        const bool isReplaced = valueIn(setting, kPreloadVariable) != nullptr ||
                                (lacksFolder && valueIn(setting, kFolderVariable) != nullptr) ||
                                (lacksAllowance && valueIn(setting, kAllowHostVariable) != nullptr);
        if (!isReplaced)
            *next++ = const_cast<char *>(setting);
    }
    text = list_.write(set(next, text, kPreloadVariable)) + 1;
    if (lacksFolder)
        text = stpcpy(set(next, text, kFolderVariable), boardFolder) + 1;
    if (lacksAllowance)
        stpcpy(set(next, text, kAllowHostVariable), kAllowed);
    *next = nullptr;
    return made;
}

void ProgramStart::applyToOwn() const {
    if (environmentSize() == 0)
        return;
    auto *list = static_cast<char *>(alloca(list_.size()));
    list_.write(list);
    setenv(kPreloadVariable, list, 1);
    if (!isSet(folder_))
        setenv(kFolderVariable, boardFolder, 1);
    if (allowsHost)
        setenv(kAllowHostVariable, kAllowed, 1);
}

bool putShellOnBoard() {
    ProgramStart shell(AT_FDCWD, _PATH_BSHELL, 0, environ);
    if (shell.isRefused())
        return false;
    shell.applyToOwn();
    return true;
}

} // namespace vb
