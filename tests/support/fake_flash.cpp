#include "tests/support/fake_flash.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <mtd/mtd-abi.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

FakeFlash *running = nullptr; // the flash whose run() is calling the library

std::string formatted(const char *format, ...) __attribute__((format(printf, 1, 2)));
std::string formatted(const char *format, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    return text;
}

int refused(int error) {
    errno = error;
    return -1;
}

std::string accessOf(int flags, mode_t mode) {
    std::string text = (flags & O_ACCMODE) == O_RDONLY ? "read-only" : "read-write";
    if ((flags & O_CREAT) != 0)
        text += formatted(" create %04o", static_cast<unsigned>(mode));
    if ((flags & O_SYNC) == O_SYNC)
        text += " sync";
    else if ((flags & O_DSYNC) != 0)
        text += " data-sync";
    if ((flags & O_NOFOLLOW) != 0)
        text += " no-link";
    if ((flags & O_CLOEXEC) == 0)
        text += " inherited";
    constexpr int kKnown = O_ACCMODE | O_CREAT | O_SYNC | O_NOFOLLOW | O_CLOEXEC | O_LARGEFILE;
    return text + ((flags & ~kKnown) != 0 ? " and more" : "");
}

/** What a stream of the fake points to. */
struct alignas(std::max_align_t) Stream {
    std::string path;
    size_t position;
};

} // namespace

/** The library's system calls, whatever their names are in a build. */
struct FakeCalls {
    static FakeFlash::OpenFile *find(int fd) {
        const auto found = running->opened_.find(fd);
        return found != running->opened_.end() ? &found->second : nullptr;
    }

    static std::string nameOf(int fd) {
        if (fd == -1)
            return "no descriptor";
        const auto *file = find(fd);
        if (file == nullptr)
            return "unknown descriptor";
        return file->path + (file->isOpen ? "" : " after its close");
    }

    static FakeFile *contentOf(int fd) {
        const auto *file = find(fd);
        return file != nullptr && file->isOpen ? &running->files[file->path] : nullptr;
    }

    static int open(const char *path, int flags, mode_t mode) {
        if (const auto *failure =
                running->note(std::string("open ") + path + " " + accessOf(flags, mode)))
            return refused(failure->error);
        const bool isNode = std::strcmp(path, "/dev/bspHandle") == 0;
        if (running->files.count(path) == 0 && (flags & O_CREAT) == 0 && !isNode)
            return refused(ENOENT);
        running->files[path];
        const int fd = running->nextDescriptor_;
        running->nextDescriptor_ = std::max(running->nextDescriptor_ + 1, 1000);
        running->opened_[fd] = {path};
        return fd;
    }

    static int close(int fd) {
        const std::string name = nameOf(fd);
        auto *file = find(fd);
        const auto *failure = running->note("close " + name);
        if (file == nullptr || !file->isOpen)
            return refused(EBADF);
        file->isOpen = false;
        return failure != nullptr ? refused(failure->error) : 0;
    }

    static ssize_t read(int fd, void *data, size_t count) {
        const auto *failure = running->note("read " + nameOf(fd) + formatted(" %zu", count));
        FakeFile *file = contentOf(fd);
        if (file == nullptr)
            return refused(EBADF);
        if (failure != nullptr && failure->result <= 0)
            return failure->result < 0 ? refused(failure->error) : 0;
        if (failure != nullptr)
            count = static_cast<size_t>(failure->result);
        size_t &position = find(fd)->position;
        const size_t size = file->content.size();
        count = std::min(count, size - std::min(size, position));
        std::copy_n(file->content.begin() + static_cast<ptrdiff_t>(std::min(position, size)), count,
                    static_cast<uint8_t *>(data));
        position += count;
        return static_cast<ssize_t>(count);
    }

    static ssize_t write(int fd, const void *data, size_t count) {
        const auto *failure = running->note("write " + nameOf(fd) + formatted(" %zu", count));
        FakeFile *file = contentOf(fd);
        if (file == nullptr)
            return refused(EBADF);
        size_t &position = find(fd)->position;
        const auto result = failure != nullptr ? failure->result
                            : file->badPages.count(static_cast<uint32_t>(position)) != 0
                                ? -1
                                : static_cast<int64_t>(count);
        if (file->isPartition)
            file->pageResults.push_back(result);
        if (result < 0)
            return refused(EIO);
        const auto *bytes = static_cast<const uint8_t *>(data);
        for (int64_t i = 0; i < result; ++i, ++position) {
            if (!file->isPartition && position >= file->content.size())
                file->content.resize(position + 1);
            if (position >= file->content.size())
                return refused(ENOSPC);
            uint8_t &cell = file->content[position];
            // Flash cells go from 1 to 0; an erase brings them back.
            cell = file->isPartition ? cell & bytes[i] : bytes[i];
        }
        return static_cast<ssize_t>(result);
    }

    static int64_t lseek(int fd, int64_t offset, int whence) {
        const auto *failure = running->note(
            "seek " + nameOf(fd) +
            (whence == SEEK_END ? " end" : formatted(" %lld", static_cast<long long>(offset))));
        const FakeFile *file = contentOf(fd);
        if (file == nullptr)
            return refused(EBADF);
        if (failure != nullptr) {
            errno = failure->error;
            return failure->result;
        }
        const int64_t end = whence == SEEK_END ? static_cast<int64_t>(file->content.size()) : 0;
        if (end + offset < 0)
            return refused(EINVAL);
        find(fd)->position = static_cast<size_t>(end + offset);
        return end + offset;
    }

    template <typename Stat>
    static int stat(const char *path, Stat *info) {
        if (const auto *failure = running->note(std::string("stat ") + path))
            return refused(failure->error);
        const auto found = running->files.find(path);
        if (found == running->files.end())
            return refused(ENOENT);
        std::memset(info, 0, sizeof(*info));
        info->st_mode = S_IFREG | 0644;
        info->st_size = static_cast<decltype(info->st_size)>(found->second.content.size());
        return 0;
    }

    static int ioctl(int fd, unsigned long request, void *argument) {
        FakeFile *file = contentOf(fd);
        const std::string name = nameOf(fd);
        if (name == "/dev/bspHandle") {
            auto *record = static_cast<BspIoctlRecord *>(argument);
            const auto *failure = running->note(formatted("request %#lx", request));
            if (failure != nullptr)
                return refused(failure->error);
            record->result = running->onRequest(*record);
            return 0;
        }
        if (request == MEMGETINFO) {
            if (const auto *failure = running->note("geometry " + name)) {
                errno = failure->error;
                return static_cast<int>(failure->result);
            }
            if (file == nullptr || !file->isPartition)
                return refused(ENOTTY);
            auto *info = static_cast<mtd_info_user *>(argument);
            std::memset(info, 0, sizeof(*info));
            info->size = static_cast<uint32_t>(file->content.size());
            info->erasesize = file->eraseSize;
            info->writesize = file->pageSize;
            return 0;
        }
        if (request == MEMERASE) {
            const auto *range = static_cast<const erase_info_user *>(argument);
            const auto *failure =
                running->note("erase " + name + formatted(" %u+%u", range->start, range->length));
            if (failure != nullptr) {
                errno = failure->error;
                return static_cast<int>(failure->result);
            }
            if (file == nullptr || range->start + range->length > file->content.size())
                return refused(EINVAL);
            file->erased.push_back(range->start);
            std::fill_n(file->content.begin() + static_cast<ptrdiff_t>(range->start), range->length,
                        uint8_t{0xFF});
            return 0;
        }
        running->note(formatted("ioctl %#lx", request) + " " + name);
        return refused(ENOTTY);
    }

    static int fcntl(int fd, int command, void *argument) {
        if (command == F_DUPFD_CLOEXEC) {
            if (const auto *failure = running->note("move up " + nameOf(fd)))
                return refused(failure->error);
            const int moved = running->nextDescriptor_++;
            running->opened_[moved] = running->opened_[fd];
            return moved;
        }
        const auto *lock = static_cast<const struct flock *>(argument);
        const bool isTaken = lock->l_type == F_WRLCK;
        std::string call = isTaken ? "lock " : lock->l_type == F_UNLCK ? "unlock " : "share ";
        call += nameOf(fd);
        if (command != F_SETLKW)
            call += " without waiting";
        if (lock->l_whence != SEEK_SET || lock->l_start != 0 || lock->l_len != 0)
            call += " in part";
        if (lock->l_pid != -1)
            call += " for a process";
        const auto *failure = running->note(call);
        if (contentOf(fd) == nullptr)
            return refused(EBADF);
        if (failure != nullptr)
            return refused(failure->error);
        if (isTaken)
            running->locked_.insert(find(fd)->path);
        else
            running->locked_.erase(find(fd)->path);
        return 0;
    }

    static int system(const char *command) {
        const auto *failure = running->note(std::string("system ") + command);
        return failure != nullptr ? static_cast<int>(failure->result) : running->onCommand(command);
    }

    static int wait(const std::string &call) {
        running->note(call);
        return 0;
    }

    static std::FILE *fopen(const char *path, const char *mode) {
        const auto *failure = running->note(std::string("fopen ") + path + " " + mode);
        if (failure != nullptr || running->files.count(path) == 0) {
            refused(failure != nullptr ? failure->error : ENOENT);
            return nullptr;
        }
        ++running->openStreams_;
        return reinterpret_cast<std::FILE *>(new Stream{path, 0});
    }

    static size_t fread(void *data, size_t size, size_t count, std::FILE *file) {
        auto *stream = reinterpret_cast<Stream *>(file);
        const auto *failure =
            running->note("fread " + stream->path + formatted(" %zu x %zu", size, count));
        const Bytes &content = running->files[stream->path].content;
        size_t got = std::min(size * count, content.size() - stream->position);
        if (failure != nullptr)
            got = static_cast<size_t>(std::max<int64_t>(failure->result, 0));
        std::copy_n(content.begin() + static_cast<ptrdiff_t>(stream->position), got,
                    static_cast<uint8_t *>(data));
        stream->position += got;
        return got / size;
    }

    static int fclose(std::FILE *file) {
        auto *stream = reinterpret_cast<Stream *>(file);
        running->note("fclose " + stream->path);
        --running->openStreams_;
        delete stream;
        return 0;
    }

    static void *malloc(size_t size, void *(*allocate)(size_t)) {
        FakeFlash *flash = std::exchange(running, nullptr); // the notes need memory, too
        const bool isRefused = flash->note(formatted("malloc %zu", size)) != nullptr;
        void *memory = isRefused ? nullptr : allocate(size);
        if (memory != nullptr) {
            std::memset(memory, 0x5A, size);
            flash->buffers_.insert(memory);
        }
        running = flash;
        return memory;
    }

    static void free(void *memory) {
        FakeFlash *flash = std::exchange(running, nullptr);
        if (flash->buffers_.erase(memory) != 0)
            flash->note("free");
        running = flash;
    }
};

// The linker lets the program's calls come here first. Each is the fake's while the library is
// called, and the system's own otherwise.
#define WRAPPED(name, result, parameters, arguments, answer)                                       \
    extern "C" result real_##name parameters __asm__("__real_" #name);                             \
    extern "C" result wrapped_##name parameters __asm__("__wrap_" #name);                          \
    result wrapped_##name parameters {                                                             \
        if (running == nullptr)                                                                    \
            return real_##name arguments;                                                          \
        return answer;                                                                             \
    }

#define WRAPPED_OPEN(name)                                                                         \
    extern "C" int real_##name(const char *path, int flags, ...) __asm__("__real_" #name);         \
    extern "C" int wrapped_##name(const char *path, int flags, ...) __asm__("__wrap_" #name);      \
    int wrapped_##name(const char *path, int flags, ...) {                                         \
        va_list rest;                                                                              \
        va_start(rest, flags);                                                                     \
        const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;                     \
        va_end(rest);                                                                              \
        return running != nullptr ? FakeCalls::open(path, flags, mode)                             \
                                  : real_##name(path, flags, mode);                                \
    }

// One more argument behind the fixed ones, a pointer or a number that fits into one.
#define WRAPPED_WITH_ARGUMENT(name, Command, function)                                             \
    extern "C" int real_##name(int fd, Command command, ...) __asm__("__real_" #name);             \
    extern "C" int wrapped_##name(int fd, Command command, ...) __asm__("__wrap_" #name);          \
    int wrapped_##name(int fd, Command command, ...) {                                             \
        va_list rest;                                                                              \
        va_start(rest, command);                                                                   \
        void *argument = va_arg(rest, void *);                                                     \
        va_end(rest);                                                                              \
        return running != nullptr ? FakeCalls::function(fd, command, argument)                     \
                                  : real_##name(fd, command, argument);                            \
    }

WRAPPED_OPEN(open)
WRAPPED_OPEN(open64)
WRAPPED(__open_2, int, (const char *path, int flags), (path, flags),
        FakeCalls::open(path, flags, 0))
WRAPPED(__open64_2, int, (const char *path, int flags), (path, flags),
        FakeCalls::open(path, flags, 0))
WRAPPED(close, int, (int fd), (fd), FakeCalls::close(fd))
WRAPPED(read, ssize_t, (int fd, void *data, size_t count), (fd, data, count),
        FakeCalls::read(fd, data, count))
WRAPPED(__read_chk, ssize_t, (int fd, void *data, size_t count, size_t room),
        (fd, data, count, room), FakeCalls::read(fd, data, count))
WRAPPED(write, ssize_t, (int fd, const void *data, size_t count), (fd, data, count),
        FakeCalls::write(fd, data, count))
WRAPPED(lseek, off_t, (int fd, off_t offset, int whence), (fd, offset, whence),
        static_cast<off_t>(FakeCalls::lseek(fd, offset, whence)))
WRAPPED(lseek64, off64_t, (int fd, off64_t offset, int whence), (fd, offset, whence),
        FakeCalls::lseek(fd, offset, whence))
WRAPPED(stat, int, (const char *path, struct stat *info), (path, info), FakeCalls::stat(path, info))
WRAPPED(stat64, int, (const char *path, struct stat64 *info), (path, info),
        FakeCalls::stat(path, info))
WRAPPED_WITH_ARGUMENT(ioctl, unsigned long, ioctl)
WRAPPED_WITH_ARGUMENT(fcntl, int, fcntl)
WRAPPED_WITH_ARGUMENT(fcntl64, int, fcntl)
WRAPPED(system, int, (const char *command), (command), FakeCalls::system(command))
WRAPPED(usleep, int, (useconds_t us), (us), FakeCalls::wait(formatted("wait %u us", us)))
WRAPPED(sleep, unsigned, (unsigned seconds), (seconds),
        static_cast<unsigned>(FakeCalls::wait(formatted("wait %u s", seconds))))
WRAPPED(fopen, std::FILE *, (const char *path, const char *mode), (path, mode),
        FakeCalls::fopen(path, mode))
WRAPPED(fopen64, std::FILE *, (const char *path, const char *mode), (path, mode),
        FakeCalls::fopen(path, mode))
WRAPPED(fread, size_t, (void *data, size_t size, size_t count, std::FILE *file),
        (data, size, count, file), FakeCalls::fread(data, size, count, file))
WRAPPED(__fread_chk, size_t, (void *data, size_t room, size_t size, size_t count, std::FILE *file),
        (data, room, size, count, file), FakeCalls::fread(data, size, count, file))
WRAPPED(fclose, int, (std::FILE * file), (file), FakeCalls::fclose(file))
WRAPPED(malloc, void *, (size_t size), (size), FakeCalls::malloc(size, real_malloc))

extern "C" void realFree(void *memory) __asm__("__real_free");
extern "C" void wrappedFree(void *memory) __asm__("__wrap_free");
void wrappedFree(void *memory) {
    if (running != nullptr)
        FakeCalls::free(memory);
    realFree(memory);
}

void FakeFlash::addPartition(const std::string &path, uint32_t size, uint32_t eraseSize,
                             uint32_t pageSize) {
    files[path] = {Bytes(size, 0xFF), true, eraseSize, pageSize};
}

void FakeFlash::fail(const std::string &call, int nth, int64_t result, int times, int error) {
    failures_.push_back({call, nth, times, result, error});
}

bool FakeFlash::allFailed() const {
    return std::all_of(failures_.begin(), failures_.end(),
                       [](const Failure &failure) { return failure.seen >= failure.nth; });
}

const FakeFlash::Failure *FakeFlash::note(const std::string &call) {
    calls.push_back(call);
    for (Failure &failure : failures_)
        if (call.compare(0, failure.call.size(), failure.call) == 0) {
            const int seen = ++failure.seen;
            if (seen >= failure.nth && seen - failure.nth < failure.times)
                return &failure;
        }
    return nullptr;
}

Answer FakeFlash::run(const std::function<int32_t()> &call) {
    calls.clear();
    opened_.clear();
    locked_.clear();
    buffers_.clear();
    nextDescriptor_ = firstDescriptor;
    openStreams_ = 0;
    Answer answer = {};
    complaints = complainedBy([&] {
        answer = answerOf([&] {
            running = this;
            const int32_t status = call();
            running = nullptr;
            return status;
        });
    });
    for (const auto &[fd, file] : opened_)
        EXPECT_FALSE(file.isOpen) << file.path << " is still open";
    EXPECT_EQ(openStreams_, 0);
    EXPECT_EQ(buffers_.size(), 0u) << "buffers are not freed";
    // A close gives up the process's locks on the file, so a lock must have been released before.
    for (const std::string &path : locked_)
        ADD_FAILURE() << path << " is still locked";
    return answer;
}

Calls FakeFlash::callsOf(const std::string &words) const {
    Calls found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [&](const std::string &call) { return call.find(words) == 0; });
    return found;
}

Bytes patterned(size_t size) {
    Bytes bytes(size);
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<uint8_t>(i % 251);
    return bytes;
}

Bytes bytesOf(const std::string &text) {
    return {text.begin(), text.end()};
}

namespace {

template <typename List>
List joinedLists(std::initializer_list<List> lists) {
    List all;
    for (const List &list : lists)
        all.insert(all.end(), list.begin(), list.end());
    return all;
}

} // namespace

Calls joined(std::initializer_list<Calls> steps) {
    return joinedLists(steps);
}

Bytes joined(std::initializer_list<Bytes> pieces) {
    return joinedLists(pieces);
}

const Calls kLocking = {"open /tmp/bspFlashLockFile read-write create 0644 no-link",
                        "lock /tmp/bspFlashLockFile"};
const Calls kUnlocking = {"unlock /tmp/bspFlashLockFile", "close /tmp/bspFlashLockFile"};

Calls hundredTimes(const std::string &call) {
    Calls calls;
    for (int i = 0; i < 100; ++i)
        calls.insert(calls.end(), {call, "wait 2 us"});
    return calls;
}
