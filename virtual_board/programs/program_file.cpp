#include "virtual_board/programs/program_file.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <elf.h>
#include <fcntl.h>
#include <iterator>
#include <limits>
#include <paths.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace vb {

namespace {

constexpr int kMaxScripts = 5; // that are each other's interpreters, as many as the kernel follows

bool startsWith(const char *text, const char *start) {
    return std::strncmp(text, start, std::strlen(start)) == 0;
}

/** Whether a loader is the GNU C library's, which preloads; by its name, which is part of each ABI.
 */
bool isGnuLoader(const char *path) {
    const char *slash = std::strrchr(path, '/');
    const char *name = slash != nullptr ? slash + 1 : path;
    return startsWith(name, "ld-linux") || startsWith(name, "ld.so.") ||
           startsWith(name, "ld64.so.");
}

/** Whether a library wants to see a program's calls before all others do. */
bool isSanitizer(const char *library) {
    constexpr const char *kNames[] = {"libasan.so", "libtsan.so", "liblsan.so", "libhwasan.so",
                                      "libclang_rt."};
    return std::any_of(std::begin(kNames), std::end(kNames),
                       [=](const char *name) { return startsWith(library, name); });
}

/** Whether a program gets ids of its file that make its loader careful. */
bool changesIds(int fd, const struct stat64 &info) {
    struct statvfs64 volume = {};
    const bool isIgnored = prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 1 ||
                           (fstatvfs64(fd, &volume) == 0 && (volume.f_flag & ST_NOSUID) != 0);
    constexpr mode_t kSetGroup = S_ISGID | S_IXGRP;
    const bool setsUser = !isIgnored && (info.st_mode & S_ISUID) != 0;
    const bool setsGroup = !isIgnored && (info.st_mode & kSetGroup) == kSetGroup;
    const uid_t user = setsUser ? info.st_uid : geteuid();
    const gid_t group = setsGroup ? info.st_gid : getegid();
    return user != getuid() || user != geteuid() || group != getgid() || group != getegid();
}

/** Whether a program gets capabilities from its file; they are nothing new for root. */
bool gainsCapabilities(int fd) {
    struct statvfs64 volume = {};
    if (getuid() == 0 || fgetxattr(fd, "security.capability", nullptr, 0) <= 0)
        return false;
    return fstatvfs64(fd, &volume) != 0 || (volume.f_flag & ST_NOSUID) == 0;
}

Fitness fitnessOf(int fd, ElfFile &file, char (&runtime)[ProgramFile::kMaxRuntime]) {
    char loader[ProgramFile::kMaxInterpreter];
    const bool isLinked = file.findLoader(loader, sizeof(loader));
    bool isLoader = false;
    file.eachLibrary([&](uint64_t tag, const char *name) {
        isLoader |= tag == DT_SONAME && isGnuLoader(name);
        if (tag == DT_NEEDED && isSanitizer(name) && runtime[0] == '\0')
            stpcpy(runtime, name);
    });
    // A loader that is started as a program preloads as well.
    if (!isLinked && !isLoader)
        return Fitness::Static;
    if (isLinked && !isGnuLoader(loader))
        return Fitness::OtherLoader;
    struct stat64 info = {};
    if (fstat64(fd, &info) != 0)
        return Fitness::Unreadable;
    if (changesIds(fd, info))
        return Fitness::OtherIds;
    return gainsCapabilities(fd) ? Fitness::Capabilities : Fitness::Fits;
}

/** Finds the interpreter in the first line of a script, as the kernel does; false when it has none.
 */
bool findInterpreter(FilePieces &pieces, char (&interpreter)[ProgramFile::kMaxInterpreter]) {
    const unsigned char *mark = pieces.at(0, 2);
    if (mark == nullptr || mark[0] != '#' || mark[1] != '!')
        return false;
    size_t offset = 2;
    size_t length = 0;
    const unsigned char *byte = nullptr;
    while ((byte = pieces.at(offset, 1)) != nullptr && (*byte == ' ' || *byte == '\t'))
        ++offset;
    for (; offset < ProgramFile::kMaxInterpreter; ++offset) {
        byte = pieces.at(offset, 1);
        if (byte == nullptr || std::strchr(" \t\n", *byte) != nullptr)
            break;
        interpreter[length++] = static_cast<char>(*byte);
    }
    interpreter[length] = '\0';
    return length > 0 && offset < ProgramFile::kMaxInterpreter;
}

/** A descriptor of a file by its place, to look into it. */
class OpenProgram {
  public:
    OpenProgram(int folder, const char *path, int flags) {
        constexpr char kLinks[] = "/proc/self/fd/";
        char link[sizeof(kLinks) + std::numeric_limits<int>::digits10 + 1] = {};
        if ((flags & AT_EMPTY_PATH) != 0 && path[0] == '\0') {
            // Its own descriptor may be one that cannot be read.
            std::to_chars(stpcpy(link, kLinks), std::end(link) - 1, folder);
            path = link;
        }
        constexpr int kHow = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
        fd_ = openat64(folder, path, kHow);
    }
    OpenProgram(const OpenProgram &) = delete;
    OpenProgram &operator=(const OpenProgram &) = delete;
    ~OpenProgram() {
        if (fd_ >= 0)
            close(fd_);
    }

    int get() const { return fd_; }

  private:
    int fd_;
};

/** Looks at one file; true when another one, its interpreter, stands for it. */
bool isScript(int folder, const char *path, int flags, ProgramFile &program) {
    program.fitness = Fitness::NotStarted;
    if (!isExecutable(folder, path, flags))
        return false;
    const OpenProgram opened(folder, path, flags);
    if (opened.get() < 0) {
        program.fitness = Fitness::Unreadable;
        return false;
    }
    FilePieces pieces(opened.get());
    ElfFile file(pieces);
    if (file.readHeader()) {
        program.machine = file.machine();
        program.fitness = fitnessOf(opened.get(), file, program.runtime);
        return false;
    }
    if (!findInterpreter(pieces, program.interpreter))
        stpcpy(program.interpreter, _PATH_BSHELL);
    return true;
}

} // namespace

bool isExecutable(int folder, const char *path, int flags) {
    struct stat64 info = {};
    if (fstatat64(folder, path, &info, flags) != 0 || !S_ISREG(info.st_mode))
        return false;
    return path[0] == '\0' || faccessat(folder, path, X_OK, AT_EACCESS) == 0 || errno != EACCES;
}

ProgramFile examineProgram(int folder, const char *path, int flags) {
    ProgramFile program;
    bool goesOn = isScript(folder, path, flags, program);
    for (int scripts = 0; goesOn && scripts < kMaxScripts; ++scripts) {
        char script[ProgramFile::kMaxInterpreter];
        stpcpy(script, program.interpreter);
        goesOn = isScript(AT_FDCWD, script, 0, program);
    }
    return program;
}

bool isOfMachine(const char *path, const Machine &machine) {
    const OpenProgram opened(AT_FDCWD, path, 0);
    FilePieces pieces(opened.get());
    ElfFile file(pieces);
    return opened.get() >= 0 && file.readHeader() && file.machine() == machine;
}

Refusal refusalOf(Fitness fitness, const char *interpreter, const char *path) {
    const char *reason = "";
    switch (fitness) {
    case Fitness::NotStarted:
    case Fitness::Fits:
        break;
    case Fitness::NoSeam:
        reason = " is for a machine of which no libvboard.so is beside this one";
        break;
    case Fitness::Static:
        reason = " is statically linked";
        break;
    case Fitness::OtherLoader:
        reason = " is not linked with the GNU C library";
        break;
    case Fitness::OtherIds:
        reason = " is started with other rights (set-user-id or set-group-id), without the board's "
                 "library";
        break;
    case Fitness::Capabilities:
        reason = " has file capabilities, which keep the board's library away";
        break;
    case Fitness::Unreadable:
        reason = " cannot be read, so that nobody can tell what it is";
        break;
    }
    const bool isScript = *interpreter != '\0';
    return {{path, isScript ? " needs " : "", interpreter, isScript ? ", which" : "", reason,
             ": it would run on the host, not on the board; 'vboard run --allow-host' lets it"}};
}

} // namespace vb
