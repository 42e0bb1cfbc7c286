// The functions that the library calls instead of the system's. What they call themselves is the
// board's, since nobody else's calls are led here.

#include "tests/support/call_texts.h"
#include "tests/support/library_holdings.h"
#include "tests/support/recorder.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/** Describes a call and shows it; what it answers when it is not to be made, or not whole. */
template <typename Description>
std::optional<int64_t> answered(SystemCall call, const Description &description) {
    call.described = &description;
    call.describe = [](const void *what) { return (*static_cast<const Description *>(what))(); };
    return Recorder::answerOf(call);
}

/** The answer of a call: the one that stands in for it, or its own. */
template <typename Result, typename Call>
Result resultOf(const std::optional<int64_t> &answer, Call call) {
    return answer ? static_cast<Result>(*answer) : call();
}

/** The same of a transfer, which can be made in part. */
template <typename Result, typename Transfer>
Result resultOfTransfer(const std::optional<int64_t> &answer, size_t size, Transfer transfer) {
    if (answer && *answer <= 0)
        return static_cast<Result>(*answer);
    return transfer(answer ? static_cast<size_t>(*answer) : size);
}

/** The same of giving something back: what is answered comes on top. */
int resultOfRelease(const std::optional<int64_t> &answer, int done, int error) {
    if (!answer)
        return done;
    errno = error;
    return static_cast<int>(*answer);
}

int opened(int fd, const std::string &path) {
    if (fd >= 0)
        libraryHas.descriptors[fd] = {path};
    return fd;
}

void noteLock(int fd, bool isTaken) {
    if (isTaken)
        libraryHas.locks.insert(libraryHas.nameOf(fd));
    else
        libraryHas.locks.erase(libraryHas.nameOf(fd));
}

/** The mapping that a call made, or that stands in for it. */
template <typename Map>
void *mapped(const std::optional<int64_t> &answer, Map map) {
    void *address = answer ? reinterpret_cast<void *>(static_cast<intptr_t>(*answer)) : map();
    if (address != MAP_FAILED)
        libraryHas.mappings[address] = !answer;
    return address;
}

/** Memory as it may come: with the remains of others. */
void *allocated(void *memory, size_t size) {
    if (memory == nullptr)
        return nullptr;
    std::memset(memory, 0x5A, size);
    libraryHas.buffers.insert(memory);
    return memory;
}

} // namespace

extern "C" {
int recorded_open(const char *path, int flags, ...);
int recorded_close(int fd);
int recorded_fcntl(int fd, int command, ...);
int recorded_flock(int fd, int operation);
int recorded_ioctl(int fd, unsigned long request, ...);
ssize_t recorded_read(int fd, void *data, size_t size);
ssize_t recorded_read_chk(int fd, void *data, size_t size, size_t room);
ssize_t recorded_write(int fd, const void *data, size_t size);
off_t recorded_lseek(int fd, off_t offset, int whence);
off64_t recorded_lseek64(int fd, off64_t offset, int whence);
int recorded_stat(const char *path, struct stat *info);
int recorded_stat64(const char *path, struct stat64 *info);
std::FILE *recorded_fopen(const char *path, const char *mode);
size_t recorded_fread(void *data, size_t size, size_t count, std::FILE *file);
size_t recorded_fread_chk(void *data, size_t room, size_t size, size_t count, std::FILE *file);
char *recorded_fgets(char *line, int size, std::FILE *file);
char *recorded_fgets_chk(char *line, size_t room, int size, std::FILE *file);
int recorded_fclose(std::FILE *file);
void *recorded_malloc(size_t size);
void *recorded_calloc(size_t count, size_t size);
void recorded_free(void *memory);
int recorded_system(const char *command);
void *recorded_mmap(void *address, size_t size, int access, int flags, int fd, off_t offset);
void *recorded_mmap64(void *address, size_t size, int access, int flags, int fd, off64_t offset);
int recorded_munmap(void *address, size_t size);
int recorded_usleep(useconds_t us);
unsigned recorded_sleep(unsigned seconds);
int recorded_clock_settime(clockid_t clock, const void *time);
int recorded_clock_settime64(clockid_t clock, const void *time);

// The same functions under other names.
int recorded_open64(const char *path, int flags, ...) __attribute__((alias("recorded_open")));
int recorded_open_2(const char *path, int flags);
int recorded_open64_2(const char *path, int flags);
int recorded_fcntl64(int fd, int command, ...) __attribute__((alias("recorded_fcntl")));
std::FILE *recorded_fopen64(const char *path, const char *mode)
    __attribute__((alias("recorded_fopen")));

// The board's, whose times are of the size that the name stands for.
int setClock(clockid_t clock, const void *time) __asm__("clock_settime");
int setClock64(clockid_t clock, const void *time) __asm__("__clock_settime64");
}

int recorded_open(const char *path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    const auto answer = answered(
        {"open"}, [&] { return std::string("open ") + path + " " + accessText(flags, mode); });
    return opened(resultOf<int>(answer, [&] { return open(path, flags, mode); }), path);
}

int recorded_open_2(const char *path, int flags) {
    return recorded_open(path, flags);
}

int recorded_open64_2(const char *path, int flags) {
    return recorded_open(path, flags);
}

int recorded_close(int fd) {
    const auto answer = answered({"close", fd}, [&] { return "close " + libraryHas.nameOf(fd); });
    const int error = errno;
    const auto found = libraryHas.descriptors.find(fd);
    if (found != libraryHas.descriptors.end() && found->second.isOpen)
        found->second.isOpen = false;
    else if (fd >= 0)
        ++libraryHas.strayCloses;
    return resultOfRelease(answer, close(fd), error);
}

int recorded_fcntl(int fd, int command, ...) {
    va_list rest;
    va_start(rest, command);
    void *argument = va_arg(rest, void *);
    va_end(rest);
    const bool isLock = command == F_SETLK || command == F_SETLKW;
    const auto answer = answered({"fcntl", fd}, [&] {
        return isLock ? recordLockText(fd, command, *static_cast<struct flock *>(argument))
               : command == F_DUPFD_CLOEXEC
                   ? "move up " + libraryHas.nameOf(fd)
                   : formatted("fcntl %d ", command) + libraryHas.nameOf(fd);
    });
    const int result = resultOf<int>(answer, [&] { return fcntl(fd, command, argument); });
    if (command == F_DUPFD_CLOEXEC)
        return opened(result, libraryHas.nameOf(fd));
    if (isLock && result >= 0)
        noteLock(fd, static_cast<struct flock *>(argument)->l_type == F_WRLCK);
    return result;
}

int recorded_flock(int fd, int operation) {
    const auto answer = answered({"flock", fd}, [&] { return flockText(fd, operation); });
    const int result = resultOf<int>(answer, [&] { return flock(fd, operation); });
    if (result == 0)
        noteLock(fd, operation != LOCK_UN);
    return result;
}

int recorded_ioctl(int fd, unsigned long request, ...) {
    va_list rest;
    va_start(rest, request);
    void *argument = va_arg(rest, void *);
    va_end(rest);
    const auto answer = answered({"ioctl", fd, request, argument},
                                 [&] { return ioctlText(fd, request, argument); });
    return resultOf<int>(answer, [&] { return ioctl(fd, request, argument); });
}

ssize_t recorded_read(int fd, void *data, size_t size) {
    const auto answer =
        answered({"read", fd, 0, nullptr, size}, [&] { return transferText("read", fd, size); });
    return resultOfTransfer<ssize_t>(answer, size,
                                     [&](size_t part) { return read(fd, data, part); });
}

ssize_t recorded_read_chk(int fd, void *data, size_t size, size_t) {
    return recorded_read(fd, data, size);
}

ssize_t recorded_write(int fd, const void *data, size_t size) {
    const auto answer =
        answered({"write", fd, 0, nullptr, size}, [&] { return transferText("write", fd, size); });
    return resultOfTransfer<ssize_t>(answer, size,
                                     [&](size_t part) { return write(fd, data, part); });
}

off_t recorded_lseek(int fd, off_t offset, int whence) {
    const auto answer =
        answered({"lseek", fd}, [&] { return seekText(fd, int64_t{offset}, whence); });
    return resultOf<off_t>(answer, [&] { return lseek(fd, offset, whence); });
}

off64_t recorded_lseek64(int fd, off64_t offset, int whence) {
    const auto answer =
        answered({"lseek", fd}, [&] { return seekText(fd, int64_t{offset}, whence); });
    return resultOf<off64_t>(answer, [&] { return lseek64(fd, offset, whence); });
}

int recorded_stat(const char *path, struct stat *info) {
    const auto answer =
        answered({"stat", -1, 0, info}, [&] { return std::string("stat ") + path; });
    return resultOf<int>(answer, [&] { return stat(path, info); });
}

int recorded_stat64(const char *path, struct stat64 *info) {
    const auto answer =
        answered({"stat", -1, 0, info}, [&] { return std::string("stat ") + path; });
    return resultOf<int>(answer, [&] { return stat64(path, info); });
}

std::FILE *recorded_fopen(const char *path, const char *mode) {
    if (answered({"fopen"}, [&] { return std::string("fopen ") + path + " " + mode; }))
        return nullptr;
    std::FILE *file = std::fopen(path, mode);
    if (file != nullptr)
        libraryHas.files[file] = path;
    return file;
}

size_t recorded_fread(void *data, size_t size, size_t count, std::FILE *file) {
    const auto answer = answered({"fread", -1, 0, nullptr, count}, [&] {
        return "fread " + libraryHas.files[file] + formatted(" %zu x %zu", size, count);
    });
    if (answer && *answer <= 0)
        return 0; // of which a negative number would be a huge one
    return std::fread(data, size, answer ? static_cast<size_t>(*answer) : count, file);
}

size_t recorded_fread_chk(void *data, size_t, size_t size, size_t count, std::FILE *file) {
    return recorded_fread(data, size, count, file);
}

char *recorded_fgets(char *line, int size, std::FILE *file) {
    const auto answer = answered(
        {"fgets"}, [&] { return "fgets " + libraryHas.files[file] + formatted(" %d", size); });
    return answer ? nullptr : std::fgets(line, size, file);
}

char *recorded_fgets_chk(char *line, size_t, int size, std::FILE *file) {
    return recorded_fgets(line, size, file);
}

int recorded_fclose(std::FILE *file) {
    const auto answer = answered({"fclose"}, [&] { return "fclose " + libraryHas.files[file]; });
    const int error = errno;
    libraryHas.files.erase(file);
    return resultOfRelease(answer, std::fclose(file), error);
}

void *recorded_malloc(size_t size) {
    const auto answer =
        answered({"malloc", -1, 0, nullptr, size}, [&] { return formatted("malloc %zu", size); });
    return answer ? nullptr : allocated(std::malloc(size), size);
}

void *recorded_calloc(size_t count, size_t size) {
    const auto answer = answered({"calloc", -1, 0, nullptr, count * size},
                                 [&] { return formatted("calloc %zu x %zu", count, size); });
    void *memory = answer ? nullptr : std::calloc(count, size);
    if (memory != nullptr)
        libraryHas.buffers.insert(memory);
    return memory;
}

void recorded_free(void *memory) {
    if (libraryHas.buffers.erase(memory) != 0)
        answered({"free"}, [] { return std::string("free"); });
    std::free(memory);
}

int recorded_system(const char *command) {
    const auto answer = answered({"system"}, [&] { return std::string("system ") + command; });
    return resultOf<int>(answer, [&] { return std::system(command); });
}

void *recorded_mmap(void *address, size_t size, int access, int flags, int fd, off_t offset) {
    const auto answer = answered(
        {"mmap", fd}, [&] { return mapText(address, size, access, flags, fd, int64_t{offset}); });
    return mapped(answer, [&] { return mmap(address, size, access, flags, fd, offset); });
}

void *recorded_mmap64(void *address, size_t size, int access, int flags, int fd, off64_t offset) {
    const auto answer = answered(
        {"mmap", fd}, [&] { return mapText(address, size, access, flags, fd, int64_t{offset}); });
    return mapped(answer, [&] { return mmap64(address, size, access, flags, fd, offset); });
}

int recorded_munmap(void *address, size_t size) {
    const auto answer = answered({"munmap", -1, 0, address, size}, [&] {
        return formatted("unmap %zu%s", size,
                         libraryHas.mappings.contains(address) ? "" : " of something else");
    });
    const int error = errno;
    const auto found = libraryHas.mappings.find(address);
    const bool standsIn = found != libraryHas.mappings.end() && !found->second;
    libraryHas.mappings.erase(address);
    return resultOfRelease(answer, standsIn ? 0 : munmap(address, size), error);
}

int recorded_usleep(useconds_t us) {
    const auto answer = answered({"usleep"}, [&] { return formatted("wait %u us", us); });
    return resultOf<int>(answer, [&] { return usleep(us); });
}

unsigned recorded_sleep(unsigned seconds) {
    const auto answer = answered({"sleep"}, [&] { return formatted("wait %u s", seconds); });
    return resultOf<unsigned>(answer, [&] { return sleep(seconds); });
}

int recorded_clock_settime(clockid_t clock, const void *time) {
    const auto answer = answered({"clock_settime"}, [&] {
        return sizeof(time_t) == 8 ? clockText(clock, time) : "set clock in 32 bits";
    });
    return resultOf<int>(answer, [&] { return setClock(clock, time); });
}

// Its name on 32-bit systems.
int recorded_clock_settime64(clockid_t clock, const void *time) {
    const auto answer = answered({"clock_settime"}, [&] { return clockText(clock, time); });
    return resultOf<int>(answer, [&] { return setClock64(clock, time); });
}
