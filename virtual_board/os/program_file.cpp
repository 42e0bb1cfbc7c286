#include "virtual_board/os/program_file.h"

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
#include <sys/uio.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace vb {

namespace {

constexpr int kMaxScripts = 5; // that are each other's interpreters, as many as the kernel follows

/** A file in small pieces. */
class Pieces {
  public:
    explicit Pieces(int fd) : fd_(fd) {}

    /** Some bytes of the file, valid until the next ones; null where it has ended. */
    const unsigned char *at(uint64_t offset, size_t length) {
        if (!holds(offset, length))
            load(offset);
        return holds(offset, length) ? bytes_ + (offset - start_) : nullptr;
    }

    /** A text with its end, if it fits. */
    bool copyText(uint64_t offset, char *text, size_t size) {
        load(offset);
        const size_t length = strnlen(reinterpret_cast<const char *>(bytes_), length_);
        if (length == length_ || length >= size)
            return false;
        std::memcpy(text, bytes_, length + 1);
        return true;
    }

  private:
    bool holds(uint64_t offset, size_t length) const {
        return offset >= start_ && offset - start_ <= length_ &&
               length <= length_ - (offset - start_);
    }

    void load(uint64_t offset) {
        // preadv, because rules for reads of the board's files are meant for programs.
        const iovec piece = {bytes_, sizeof(bytes_)};
        const bool isFar = offset > INT32_MAX; // on some systems positions end here
        const ssize_t count = isFar ? 0 : preadv(fd_, &piece, 1, static_cast<off_t>(offset));
        start_ = offset;
        length_ = count > 0 ? static_cast<size_t>(count) : 0;
    }

    int fd_;
    uint64_t start_ = 0;
    size_t length_ = 0;
    unsigned char bytes_[ProgramFile::kMaxInterpreter] = {};
};

/** Where a file of a word size has what matters here. */
struct Layout {
    size_t word;
    size_t header, segments, segmentSize, segmentCount;
    size_t offset, address, size;
};
constexpr Layout kLayouts[] = {{sizeof(Elf32_Word), sizeof(Elf32_Ehdr),
                                offsetof(Elf32_Ehdr, e_phoff), offsetof(Elf32_Ehdr, e_phentsize),
                                offsetof(Elf32_Ehdr, e_phnum), offsetof(Elf32_Phdr, p_offset),
                                offsetof(Elf32_Phdr, p_vaddr), offsetof(Elf32_Phdr, p_filesz)},
                               {sizeof(Elf64_Xword), sizeof(Elf64_Ehdr),
                                offsetof(Elf64_Ehdr, e_phoff), offsetof(Elf64_Ehdr, e_phentsize),
                                offsetof(Elf64_Ehdr, e_phnum), offsetof(Elf64_Phdr, p_offset),
                                offsetof(Elf64_Phdr, p_vaddr), offsetof(Elf64_Phdr, p_filesz)}};

struct Segment {
    uint64_t offset, address, size;
};

/** A program or library of any machine. */
class ElfFile {
  public:
    explicit ElfFile(Pieces &pieces) : pieces_(pieces) {}

    /** False when the file is none. */
    bool readHeader() {
        const unsigned char *ident = pieces_.at(0, sizeof(Elf32_Ehdr));
        if (ident == nullptr || std::memcmp(ident, ELFMAG, SELFMAG) != 0)
            return false;
        machine_.wordSize = ident[EI_CLASS];
        machine_.byteOrder = ident[EI_DATA];
        if (machine_.wordSize != ELFCLASS32 && machine_.wordSize != ELFCLASS64)
            return false;
        layout_ = &kLayouts[machine_.wordSize - ELFCLASS32];
        const unsigned char *header = pieces_.at(0, layout_->header);
        if (header == nullptr)
            return false;
        const uint64_t type = number(header + offsetof(Elf32_Ehdr, e_type), sizeof(Elf32_Half));
        machine_.number = static_cast<uint16_t>(
            number(header + offsetof(Elf32_Ehdr, e_machine), sizeof(Elf32_Half)));
        segments_ = number(header + layout_->segments, layout_->word);
        segmentSize_ = number(header + layout_->segmentSize, sizeof(Elf32_Half));
        segmentCount_ = number(header + layout_->segmentCount, sizeof(Elf32_Half));
        return type == ET_EXEC || type == ET_DYN;
    }

    const Machine &machine() const { return machine_; }

    /** Fills the name of the program's loader. */
    bool findLoader(char *name, size_t size) {
        const Segment segment = findSegment([](uint32_t type, auto) { return type == PT_INTERP; });
        return segment.size > 0 && pieces_.copyText(segment.offset, name, size);
    }

    /** Calls for the tag and the name of each library that this file is, or needs. */
    template <typename Call>
    void eachLibrary(Call call) {
        const Segment dynamic = findSegment([](uint32_t type, auto) { return type == PT_DYNAMIC; });
        uint64_t names = 0;
        eachEntry(dynamic, [&](uint64_t tag, uint64_t value) {
            if (tag == DT_STRTAB)
                names = value;
        });
        const Segment text = findSegment([&](uint32_t type, const Segment &segment) {
            return type == PT_LOAD && names - segment.address < segment.size;
        });
        if (text.size == 0)
            return;
        eachEntry(dynamic, [&](uint64_t tag, uint64_t value) {
            char name[ProgramFile::kMaxRuntime];
            const bool isName = tag == DT_NEEDED || tag == DT_SONAME;
            const uint64_t offset = text.offset + (names - text.address) + value;
            if (isName && pieces_.copyText(offset, name, sizeof(name)))
                call(tag, name);
        });
    }

  private:
    uint64_t number(const unsigned char *bytes, size_t length) const {
        uint64_t value = 0;
        for (size_t i = 0; i < length; ++i)
            value = value << 8 | bytes[machine_.byteOrder == ELFDATA2MSB ? i : length - 1 - i];
        return value;
    }

    /** The first segment that is wanted; one of size 0 when there is none. */
    template <typename Wanted>
    Segment findSegment(Wanted isWanted) {
        for (uint64_t index = 0; index < segmentCount_; ++index) {
            const unsigned char *bytes =
                pieces_.at(segments_ + index * segmentSize_, layout_->size + layout_->word);
            if (bytes == nullptr)
                break;
            const Segment segment = {number(bytes + layout_->offset, layout_->word),
                                     number(bytes + layout_->address, layout_->word),
                                     number(bytes + layout_->size, layout_->word)};
            if (isWanted(static_cast<uint32_t>(number(bytes, sizeof(uint32_t))), segment))
                return segment;
        }
        return {};
    }

    template <typename Call>
    void eachEntry(const Segment &dynamic, Call call) {
        constexpr uint64_t kMost = 4096; // of a file that is as it should be
        const size_t size = 2 * layout_->word;
        for (uint64_t i = 0; i < std::min(dynamic.size / size, kMost); ++i) {
            const unsigned char *bytes = pieces_.at(dynamic.offset + i * size, size);
            if (bytes == nullptr || number(bytes, layout_->word) == DT_NULL)
                return;
            // Both at once: what is called may read other pieces.
            const uint64_t tag = number(bytes, layout_->word);
            call(tag, number(bytes + layout_->word, layout_->word));
        }
    }

    Pieces &pieces_;
    const Layout *layout_ = &kLayouts[0];
    Machine machine_ = {};
    uint64_t segments_ = 0, segmentSize_ = 0, segmentCount_ = 0;
};

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
bool findInterpreter(Pieces &pieces, char (&interpreter)[ProgramFile::kMaxInterpreter]) {
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
    Pieces pieces(opened.get());
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
    Pieces pieces(opened.get());
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
