#include "tests/support/recorder.h"

#include "bsp.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <mtd/mtd-user.h>
#include <set>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::vector<Recorder *> recorders; // the youngest last

// What the library has from the system.
struct OpenFile {
    std::string path;
    bool isOpen = true;
};
std::map<int, OpenFile> descriptors;
std::map<std::FILE *, std::string> streams;
std::set<void *> buffers;
std::map<void *, bool> mappings; // whether they were made
std::set<std::string> locked;
size_t strayCloses = 0;

std::string formatted(const char *format, ...) __attribute__((format(printf, 1, 2)));
std::string formatted(const char *format, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    return text;
}

/** Shows a call to all; what it answers when it is not to be made, or not whole. */
template <typename Description>
std::optional<int64_t> answered(SystemCall call, const Description &description) {
    call.described = &description;
    call.describe = [](const void *what) { return (*static_cast<const Description *>(what))(); };
    for (Recorder *recorder : recorders)
        recorder->note(call);
    for (auto recorder = recorders.rbegin(); recorder != recorders.rend(); ++recorder) {
        if (const auto answer = (*recorder)->answerTo(call))
            return answer;
    }
    return std::nullopt;
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

std::string nameOf(int fd) {
    if (fd == -1)
        return "no descriptor";
    const auto found = descriptors.find(fd);
    if (found == descriptors.end())
        return "unknown descriptor";
    return found->second.path + (found->second.isOpen ? "" : " after its close");
}

int opened(int fd, const std::string &path) {
    if (fd >= 0)
        descriptors[fd] = {path};
    return fd;
}

std::string accessOf(int flags, mode_t mode) {
    std::string text = (flags & O_ACCMODE) == O_RDONLY ? "read-only"
                       : (flags & O_ACCMODE) == O_RDWR ? "read-write"
                                                       : "write-only";
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
    // Nothing else may be asked for: no truncation, no appending.
    constexpr int kKnown = O_ACCMODE | O_CREAT | O_SYNC | O_NOFOLLOW | O_CLOEXEC | O_LARGEFILE;
    return text + ((flags & ~kKnown) != 0 ? " and more" : "");
}

std::string ioctlText(int fd, unsigned long request, const void *argument) {
    if (nameOf(fd) == "/dev/bspHandle")
        return formatted("request %#lx", request);
    if (request == MEMGETINFO)
        return "geometry " + nameOf(fd);
    if (request == MEMERASE) {
        const auto *range = static_cast<const erase_info_user *>(argument);
        return "erase " + nameOf(fd) + formatted(" %u+%u", range->start, range->length);
    }
    return formatted("ioctl %#lx ", request) + nameOf(fd);
}

std::string recordLockText(int fd, int command, const struct flock &lock) {
    std::string text = lock.l_type == F_WRLCK   ? "lock "
                       : lock.l_type == F_UNLCK ? "unlock "
                                                : "share ";
    text += nameOf(fd);
    if (command != F_SETLKW)
        text += " without waiting";
    if (lock.l_whence != SEEK_SET || lock.l_start != 0 || lock.l_len != 0)
        text += " in part";
    if (lock.l_pid != -1)
        text += " for a process";
    return text;
}

void noteLock(int fd, bool isTaken) {
    if (isTaken)
        locked.insert(nameOf(fd));
    else
        locked.erase(nameOf(fd));
}

std::string seekText(int fd, int64_t offset, int whence) {
    const auto number = static_cast<long long>(offset);
    return "seek " + nameOf(fd) +
           (whence == SEEK_SET                  ? formatted(" %lld", number)
            : whence == SEEK_END && offset == 0 ? " end"
                                                : formatted(" %lld from %d", number, whence));
}

std::string mapText(const void *address, size_t size, int access, int flags, int fd,
                    int64_t offset) {
    return "map " + nameOf(fd) +
           formatted(" %zu at 0x%llx%s%s%s%s", size, static_cast<unsigned long long>(offset),
                     address == nullptr ? "" : " to a place",
                     (access & PROT_READ) != 0 ? " read" : "",
                     (access & PROT_WRITE) != 0 ? " write" : "",
                     flags == MAP_SHARED ? " shared" : " otherwise");
}

/** The mapping that a call made, or that stands in for it. */
template <typename Map>
void *mapped(const std::optional<int64_t> &answer, Map map) {
    void *address = answer ? reinterpret_cast<void *>(static_cast<intptr_t>(*answer)) : map();
    if (address != MAP_FAILED)
        mappings[address] = !answer;
    return address;
}

/** A time of 64-bit seconds, as all systems pass it to the call that takes those. */
std::string clockText(clockid_t clock, const void *time) {
    constexpr bool isBig32 =
        sizeof(long) == 4 && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__; // padded in front
    int64_t seconds = 0;
    int32_t nanoseconds = 0;
    std::memcpy(&seconds, time, sizeof(seconds));
    std::memcpy(&nanoseconds, static_cast<const char *>(time) + (isBig32 ? 12 : 8),
                sizeof(nanoseconds));
    return formatted("set %sclock %lld s %ld ns", clock == CLOCK_REALTIME ? "" : "another ",
                     static_cast<long long>(seconds), static_cast<long>(nanoseconds));
}

std::string transferText(const char *what, int fd, size_t size) {
    return what + (" " + nameOf(fd)) + formatted(" %zu", size);
}

/** Memory as it may come: with the remains of others. */
void *allocated(void *memory, size_t size) {
    if (memory == nullptr)
        return nullptr;
    std::memset(memory, 0x5A, size);
    buffers.insert(memory);
    return memory;
}

} // namespace

// What the library calls. The calls below are made to the board, since nobody else's are led here.
extern "C" {
int recorded_open(const char *path, int flags, ...);
int recorded_close(int fd);
int recorded_fcntl(int fd, int command, ...);
int recorded_flock(int fd, int operation);
int recorded_ioctl(int fd, unsigned long request, ...);
ssize_t recorded_read(int fd, void *data, size_t size);
ssize_t recorded___read_chk(int fd, void *data, size_t size, size_t room);
ssize_t recorded_write(int fd, const void *data, size_t size);
off_t recorded_lseek(int fd, off_t offset, int whence);
off64_t recorded_lseek64(int fd, off64_t offset, int whence);
int recorded_stat(const char *path, struct stat *info);
int recorded_stat64(const char *path, struct stat64 *info);
std::FILE *recorded_fopen(const char *path, const char *mode);
size_t recorded_fread(void *data, size_t size, size_t count, std::FILE *file);
size_t recorded___fread_chk(void *data, size_t room, size_t size, size_t count, std::FILE *file);
char *recorded_fgets(char *line, int size, std::FILE *file);
char *recorded___fgets_chk(char *line, size_t room, int size, std::FILE *file);
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
int recorded___clock_settime64(clockid_t clock, const void *time);

// The same functions under other names.
int recorded_open64(const char *path, int flags, ...) __attribute__((alias("recorded_open")));
int recorded___open_2(const char *path, int flags);
int recorded___open64_2(const char *path, int flags);
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
        {"open"}, [&] { return std::string("open ") + path + " " + accessOf(flags, mode); });
    return opened(resultOf<int>(answer, [&] { return open(path, flags, mode); }), path);
}

int recorded___open_2(const char *path, int flags) {
    return recorded_open(path, flags);
}

int recorded___open64_2(const char *path, int flags) {
    return recorded_open(path, flags);
}

int recorded_close(int fd) {
    const auto answer = answered({"close", fd}, [&] { return "close " + nameOf(fd); });
    const int error = errno;
    const auto found = descriptors.find(fd);
    if (found != descriptors.end() && found->second.isOpen)
        found->second.isOpen = false;
    else if (fd >= 0)
        ++strayCloses;
    return resultOfRelease(answer, close(fd), error);
}

int recorded_fcntl(int fd, int command, ...) {
    va_list rest;
    va_start(rest, command);
    void *argument = va_arg(rest, void *);
    va_end(rest);
    const bool isLock = command == F_SETLK || command == F_SETLKW || command == F_GETLK;
    const auto answer = answered({"fcntl", fd}, [&] {
        return isLock ? recordLockText(fd, command, *static_cast<struct flock *>(argument))
               : command == F_DUPFD_CLOEXEC ? "move up " + nameOf(fd)
                                            : formatted("fcntl %d ", command) + nameOf(fd);
    });
    const int result = resultOf<int>(answer, [&] { return fcntl(fd, command, argument); });
    if (command == F_DUPFD_CLOEXEC)
        return opened(result, nameOf(fd));
    if (isLock && result >= 0)
        noteLock(fd, static_cast<struct flock *>(argument)->l_type == F_WRLCK);
    return result;
}

int recorded_flock(int fd, int operation) {
    const auto answer = answered({"flock", fd}, [&] {
        return (operation == LOCK_EX   ? "flock "
                : operation == LOCK_UN ? "unflock "
                                       : formatted("flock %d ", operation)) +
               nameOf(fd);
    });
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

ssize_t recorded___read_chk(int fd, void *data, size_t size, size_t) {
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
        streams[file] = path;
    return file;
}

size_t recorded_fread(void *data, size_t size, size_t count, std::FILE *file) {
    const auto answer = answered({"fread", -1, 0, nullptr, count}, [&] {
        return "fread " + streams[file] + formatted(" %zu x %zu", size, count);
    });
    if (answer && *answer <= 0)
        return 0; // of which a negative number would be a huge one
    return std::fread(data, size, answer ? static_cast<size_t>(*answer) : count, file);
}

size_t recorded___fread_chk(void *data, size_t, size_t size, size_t count, std::FILE *file) {
    return recorded_fread(data, size, count, file);
}

char *recorded_fgets(char *line, int size, std::FILE *file) {
    const auto answer =
        answered({"fgets"}, [&] { return "fgets " + streams[file] + formatted(" %d", size); });
    return answer ? nullptr : std::fgets(line, size, file);
}

char *recorded___fgets_chk(char *line, size_t, int size, std::FILE *file) {
    return recorded_fgets(line, size, file);
}

int recorded_fclose(std::FILE *file) {
    const auto answer = answered({"fclose"}, [&] { return "fclose " + streams[file]; });
    const int error = errno;
    streams.erase(file);
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
        buffers.insert(memory);
    return memory;
}

void recorded_free(void *memory) {
    if (buffers.erase(memory) != 0)
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
                         mappings.count(address) != 0 ? "" : " of something else");
    });
    const int error = errno;
    const auto found = mappings.find(address);
    const bool standsIn = found != mappings.end() && !found->second;
    mappings.erase(address);
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
int recorded___clock_settime64(clockid_t clock, const void *time) {
    const auto answer = answered({"clock_settime"}, [&] { return clockText(clock, time); });
    return resultOf<int>(answer, [&] { return setClock64(clock, time); });
}

Recorder::Recorder() {
    recorders.push_back(this);
}

Recorder::~Recorder() {
    std::erase(recorders, this);
}

void Recorder::fail(const std::string &call, int nth, int64_t result, int times, int error) {
    failures_.push_back({call, nth, times, result, error});
}

bool Recorder::allFailed() const {
    return std::all_of(failures_.begin(), failures_.end(),
                       [](const Failure &failure) { return failure.seen >= failure.nth; });
}

void Recorder::note(const SystemCall &call) {
    if (isRunning_)
        calls.push_back(call.text());
}

std::optional<int64_t> Recorder::answerTo(const SystemCall &call) {
    const std::string text = failures_.empty() ? "" : call.text();
    for (Failure &failure : failures_) {
        if (!text.starts_with(failure.call))
            continue;
        const int seen = ++failure.seen;
        if (seen >= failure.nth && seen - failure.nth < failure.times) {
            errno = failure.error;
            return failure.result;
        }
    }
    return before ? before(call) : std::nullopt;
}

Answer Recorder::run(const std::function<int32_t()> &call) {
    calls.clear();
    forgetHoldings();
    Answer answer = {};
    complaints = complainedBy([&] {
        answer = answerOf([&] {
            isRunning_ = true;
            const int32_t status = call();
            isRunning_ = false;
            return status;
        });
    });
    for (const auto &[fd, file] : descriptors)
        EXPECT_FALSE(file.isOpen) << file.path << " is still open";
    EXPECT_EQ(streams.size(), 0u) << "files are not closed";
    EXPECT_EQ(buffers.size(), 0u) << "buffers are not freed";
    EXPECT_EQ(mappings.size(), 0u) << "mappings are not given back";
    EXPECT_EQ(strayCloses, 0u) << "other descriptors were closed";
    // A close gives up the process's locks on the file, so a lock must have been released before.
    for (const std::string &path : locked)
        ADD_FAILURE() << path << " is still locked";
    return answer;
}

Calls Recorder::work() const {
    Calls found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [](const std::string &call) {
                     return call != "free" && !call.starts_with("close ") &&
                            !call.starts_with("fclose ") && !call.starts_with("unmap ");
                 });
    return found;
}

Calls Recorder::callsOf(std::string_view words) const {
    Calls found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [&](const std::string &call) { return call.starts_with(words); });
    return found;
}

Holdings libraryHoldings() {
    const auto open = std::count_if(descriptors.begin(), descriptors.end(),
                                    [](const auto &entry) { return entry.second.isOpen; });
    return {static_cast<size_t>(open), streams.size(), buffers.size(), mappings.size(),
            strayCloses};
}

void forgetHoldings() {
    descriptors.clear();
    streams.clear();
    buffers.clear();
    mappings.clear();
    locked.clear();
    strayCloses = 0;
}

int descriptorOf(const std::string &path) {
    for (const auto &[fd, file] : descriptors)
        if (file.path == path)
            return fd;
    return -1;
}
