// Programs that a program of the board starts: each is looked at first, and handed the board. One
// that the seam cannot be loaded into would be loose on the host, so it is refused.

#include "virtual_board/os/program_start.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/programs/search_path.h"

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

/** How a function tells why it fails. */
enum class Failure { InErrno, AsResult };

int fail(Failure failure, int error) {
    return failure == Failure::AsResult ? error : vb::failWith(error);
}

/** The environment that the C library hands on by itself. */
Words ownEnvironment() {
    return environ;
}

/**
 * Starts the file that execveat would start, with the C library's function for it. Nothing here
 * allocates: children of vfork come this way, and never come back.
 */
template <typename Start>
int startFile(int folder, const char *path, int flags, Words environment, Failure failure,
              Start start) {
    const vb::ProgramStart program(folder, path, flags, environment);
    if (program.isRefused())
        return fail(failure, errno);
    const size_t size = program.environmentSize();
    return start(size == 0 ? environment : program.makeEnvironment(alloca(size)));
}

/** The same of a path; the C library's function takes it as the host has it. */
template <typename Start>
int startPath(int folder, const char *path, int flags, Words environment, Failure failure,
              Start start) {
    if (path != nullptr && !vb::kernel::isReadable(path))
        return fail(failure, EFAULT);
    if (path == nullptr || *path == '\0')
        return startFile(folder, path != nullptr ? path : "", flags, environment, failure,
                         [&](Words handedOn) { return start(path, handedOn); });
    char *host = nullptr;
    {
        const vb::HostPath target(path, vb::lastLinkAt(flags), folder);
        if (target.error() != 0)
            return fail(failure, target.error());
        host = static_cast<char *>(alloca(std::strlen(target.get()) + 1));
        stpcpy(host, target.get());
    }
    return startFile(folder, host, flags, environment, failure,
                     [&](Words handedOn) { return start(host, handedOn); });
}

/**
 * The same of a name that is looked for as shells do. The first file that the kernel would start
 * is looked at; finding it again, or saying why there is none, is the C library's.
 */
template <typename Start>
int startName(const char *name, Words environment, Failure failure, Start start) {
    if (name != nullptr && !vb::kernel::isReadable(name))
        return fail(failure, EFAULT);
    if (name == nullptr || *name == '\0' || std::strchr(name, '/') != nullptr)
        return startPath(AT_FDCWD, name, 0, environment, failure, start);
    const vb::SearchPath places(name);
    auto *path = static_cast<char *>(alloca(places.size()));
    bool isOnBoard = false;
    const auto isProgram = [&](const char *place) {
        const vb::HostPath target(place);
        isOnBoard = target.isOfBoard();
        return target.error() == 0 && vb::isExecutable(AT_FDCWD, target.get());
    };
    if (!places.find(path, isProgram))
        return start(name, environment);
    return startPath(
        AT_FDCWD, path, 0, environment, failure,
        [&](const char *host, Words handedOn) { return start(isOnBoard ? host : name, handedOn); });
}

} // namespace

VB_SEAM(int, execve, const char *path, Words arguments, Words environment) {
    return startPath(AT_FDCWD, path, 0, environment, Failure::InErrno,
                     [=](const char *host, Words handedOn) {
                         return VB_NEXT(execve)(host, arguments, handedOn);
                     });
}

VB_SEAM(int, execvpe, const char *name, Words arguments, Words environment) {
    return startName(name, environment, Failure::InErrno, [=](const char *host, Words handedOn) {
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
    return startFile(file, "", AT_EMPTY_PATH, environment, Failure::InErrno,
                     [=](Words handedOn) { return VB_NEXT(fexecve)(file, arguments, handedOn); });
}

VB_SEAM(int, execveat, int folder, const char *path, Words arguments, Words environment,
        int flags) {
    return startPath(folder, path, flags, environment, Failure::InErrno,
                     [=](const char *host, Words handedOn) {
                         return VB_NEXT(execveat)(folder, host, arguments, handedOn, flags);
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
    return startPath(
        AT_FDCWD, path, 0, environment, Failure::AsResult, [=](const char *host, Words handedOn) {
            return VB_NEXT(posix_spawn)(child, host, actions, attributes, arguments, handedOn);
        });
}

VB_SEAM(int, posix_spawnp, void *child, const char *name, const void *actions,
        const void *attributes, Words arguments, Words environment) {
    return startName(name, environment, Failure::AsResult, [=](const char *host, Words handedOn) {
        return VB_NEXT(posix_spawnp)(child, host, actions, attributes, arguments, handedOn);
    });
}

VB_SEAM(FILE *, popen, const char *command, const char *type) {
    return vb::putShellOnBoard() ? VB_NEXT(popen)(command, type) : nullptr;
}
