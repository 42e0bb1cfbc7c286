// Programs that a program of the board starts: each is looked at first, and handed the board. One
// that the seam cannot be loaded into would be loose on the host, so it is refused.

#include "virtual_board/os/program_start.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/os/search_path.h"

#include <alloca.h>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <paths.h>
#include <unistd.h>

namespace {

using Words = char *const *;

constexpr int kFailed = -1; // of functions that set errno

/** The environment that the C library hands on by itself. */
Words ownEnvironment() {
    return environ;
}

/**
 * Starts the file that execveat would start, with the C library's function for it. refused is what
 * that answers when it fails with ENOEXEC. Nothing here allocates: children of vfork come this way.
 */
template <typename Start>
int startFile(int folder, const char *path, int flags, Words environment, int refused,
              Start start) {
    const vb::ProgramStart program(folder, path, flags, environment);
    if (program.isRefused())
        return refused;
    const size_t size = program.environmentSize();
    return start(size == 0 ? environment : program.makeEnvironment(alloca(size)));
}

/** The same of a path; the C library's function takes it as the host has it. */
template <typename Start>
int startPath(const char *path, Words environment, int refused, Start start) {
    const vb::HostPath target(path);
    if (path == nullptr)
        return start(path, environment);
    return startFile(AT_FDCWD, target.get(), 0, environment, refused,
                     [&](Words handedOn) { return start(target.get(), handedOn); });
}

/**
 * The same of a name that is looked for as shells do. The first file that the kernel would start
 * is looked at; finding it again, or saying why there is none, is the C library's.
 */
template <typename Start>
int startName(const char *name, Words environment, int refused, Start start) {
    if (name == nullptr || *name == '\0' || std::strchr(name, '/') != nullptr)
        return startPath(name, environment, refused, start);
    const vb::SearchPath places(name);
    auto *path = static_cast<char *>(alloca(places.size()));
    const auto isProgram = [](const char *place) {
        return vb::isExecutable(AT_FDCWD, vb::HostPath(place).get());
    };
    if (!places.find(path, isProgram))
        return start(name, environment);
    const vb::HostPath target(path);
    return startFile(AT_FDCWD, target.get(), 0, environment, refused, [&](Words handedOn) {
        return start(target.isOfBoard() ? target.get() : name, handedOn);
    });
}

} // namespace

VB_SEAM(int, execve, const char *path, Words arguments, Words environment) {
    return startPath(path, environment, kFailed, [=](const char *host, Words handedOn) {
        return VB_NEXT(execve)(host, arguments, handedOn);
    });
}

VB_SEAM(int, execvpe, const char *name, Words arguments, Words environment) {
    return startName(name, environment, kFailed, [=](const char *host, Words handedOn) {
        return VB_NEXT(execvpe)(host, arguments, handedOn);
    });
}

VB_SEAM(int, execv, const char *path, Words arguments) {
    return vbSeam_execve(path, arguments, ownEnvironment());
}

VB_SEAM(int, execvp, const char *name, Words arguments) {
    return vbSeam_execvpe(name, arguments, ownEnvironment());
}

VB_SEAM(int, fexecve, int file, Words arguments, Words environment) {
    return startFile(file, "", AT_EMPTY_PATH, environment, kFailed,
                     [=](Words handedOn) { return VB_NEXT(fexecve)(file, arguments, handedOn); });
}

VB_SEAM(int, execveat, int folder, const char *path, Words arguments, Words environment,
        int flags) {
    const vb::HostPath target(path);
    return startFile(folder, target.get(), flags, environment, kFailed, [&](Words handedOn) {
        return VB_NEXT(execveat)(folder, target.get(), arguments, handedOn, flags);
    });
}

// The arguments of these are a list that ends with a null pointer; behind it one has the
// environment.
#define VB_SEAM_LIST(symbol, call, environment)                                                    \
    VB_SEAM(int, symbol, const char *path, const char *first, ...) {                               \
        va_list list;                                                                              \
        size_t count = 0;                                                                          \
        va_start(list, first);                                                                     \
        for (const char *word = first; word != nullptr; word = va_arg(list, const char *))         \
            ++count;                                                                               \
        va_end(list);                                                                              \
        auto **words = static_cast<char **>(alloca((count + 1) * sizeof(char *)));                 \
        va_start(list, first);                                                                     \
        words[0] = const_cast<char *>(first);                                                      \
        for (size_t i = 1; i <= count; ++i)                                                        \
            words[i] = va_arg(list, char *);                                                       \
        Words variables = environment;                                                             \
        va_end(list);                                                                              \
        return call(path, words, variables);                                                       \
    }
VB_SEAM_LIST(execl, vbSeam_execve, ownEnvironment())
VB_SEAM_LIST(execle, vbSeam_execve, va_arg(list, Words))
VB_SEAM_LIST(execlp, vbSeam_execvpe, ownEnvironment())

VB_SEAM(int, posix_spawn, void *child, const char *path, const void *actions,
        const void *attributes, Words arguments, Words environment) {
    return startPath(path, environment, ENOEXEC, [=](const char *host, Words handedOn) {
        return VB_NEXT(posix_spawn)(child, host, actions, attributes, arguments, handedOn);
    });
}

VB_SEAM(int, posix_spawnp, void *child, const char *name, const void *actions,
        const void *attributes, Words arguments, Words environment) {
    return startName(name, environment, ENOEXEC, [=](const char *host, Words handedOn) {
        return VB_NEXT(posix_spawnp)(child, host, actions, attributes, arguments, handedOn);
    });
}

VB_SEAM(FILE *, popen, const char *command, const char *type) {
    return vb::putShellOnBoard() ? VB_NEXT(popen)(command, type) : nullptr;
}
