#include "fuzz/hostile_system.h"

#include "bsp.h"

#include <array>
#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <iterator>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

// The names that the library has for the calls.
extern "C" {
int hostile_open(const char *path, int flags, ...);
int hostile_close(int fd);
int hostile_fcntl(int fd, int command, ...);
int hostile_flock(int fd, int operation);
int hostile_ioctl(int fd, unsigned long request, ...);
ssize_t hostile_read(int fd, void *data, size_t size);
ssize_t hostile_write(int fd, const void *data, size_t size);
off_t hostile_lseek(int fd, off_t offset, int whence);
int hostile_stat(const char *path, struct stat *info);
std::FILE *hostile_fopen(const char *path, const char *mode);
size_t hostile_fread(void *data, size_t size, size_t count, std::FILE *file);
char *hostile_fgets(char *line, int size, std::FILE *file);
int hostile_fclose(std::FILE *file);
void *hostile_malloc(size_t size);
void *hostile_calloc(size_t count, size_t size);
void hostile_free(void *block);
int hostile_system(const char *command);
void *hostile_mmap(void *address, size_t size, int access, int flags, int fd, off_t offset);
int hostile_munmap(void *address, size_t size);
unsigned hostile_sleep(unsigned seconds);
int hostile_usleep(useconds_t us);
int hostile_clock_settime(clockid_t clock, const void *time);
int hostile_clock_settime64(clockid_t clock, const void *time);
int hostile_printf(const char *format, ...) __attribute__((format(printf, 1, 2)));
int hostile_vprintf(const char *format, va_list arguments) __attribute__((format(printf, 1, 0)));
int hostile_puts(const char *text);
int hostile_putchar(int character);
void hostile_perror(const char *text);
}

namespace {

using fuzz::require;

constexpr size_t kMostMemory = 2u << 20; // at once; the largest buffer for a file has half of it

/** What is behind a descriptor, or a file of the C library's. */
struct Opened {
    enum class Kind { None, Driver, Flash, File, DeviceId } kind = Kind::None;
    off_t position = 0;
};

/** The PoE controller: its answer to a request is what it should be, or what the input says. */
constexpr size_t kFrameSize = 12;
constexpr uint32_t kPoeBus = 16;
constexpr uint32_t kPoeDevice = 0x20;

struct State {
    hostile::System *system = nullptr;
    std::array<Opened, 16> descriptor;
    std::array<Opened, 4> file;
    size_t allocations = 0, mappings = 0;
    std::array<uint8_t, kFrameSize> request{};
    alignas(8) std::array<uint32_t, 1024> page{}; // of the switch controller's registers
} state;

fuzz::Input &answers() {
    return state.system->answers;
}

/** Whether a call fails, and in which of the ways that it has. */
bool fails(uint32_t ways = 1, uint32_t *way = nullptr) {
    constexpr uint8_t kFailure = 0xE0;
    if (!state.system->canFail)
        return false;
    const uint8_t mood = answers().byte();
    if (way != nullptr)
        *way = mood % ways;
    return mood >= kFailure;
}

template <typename Result>
Result failed(Result result) {
    static constexpr int kErrors[] = {EIO, EINTR, EACCES, EBUSY, ENOMEM, ENOSPC, EROFS, EAGAIN};
    errno = kErrors[answers().byte() % std::size(kErrors)];
    return result;
}

Opened::Kind kindOf(const char *path) {
    if (std::strcmp(path, "/dev/bspHandle") == 0)
        return Opened::Kind::Driver;
    if (std::strncmp(path, "/dev/mtd", 8) == 0)
        return Opened::Kind::Flash;
    return std::strcmp(path, "/tmp/bsp/devId") == 0 ? Opened::Kind::DeviceId : Opened::Kind::File;
}

int openAs(Opened::Kind kind) {
    for (size_t i = 0; i < state.descriptor.size(); ++i) {
        if (state.descriptor[i].kind != Opened::Kind::None)
            continue;
        state.descriptor[i] = {kind, 0};
        return state.system->firstDescriptor + static_cast<int>(i);
    }
    fuzz::report("the library leaves descriptors open");
}

Opened &opened(int fd) {
    const int first = state.system->firstDescriptor;
    const auto index = static_cast<size_t>(fd - first);
    require(fd >= first && index < state.descriptor.size() &&
                state.descriptor[index].kind != Opened::Kind::None,
            "a call on a descriptor that is not open");
    return state.descriptor[index];
}

/** What the kernel answers to a number that can be no descriptor: a lock is released so that has
 * been. */
int refuseNone() {
    errno = EBADF;
    return -1;
}

Opened &openedFile(std::FILE *file) {
    auto *found = static_cast<Opened *>(static_cast<void *>(file));
    require(found >= state.file.data() && found < state.file.data() + state.file.size() &&
                found->kind != Opened::Kind::None,
            "a call on a file that is not open");
    return *found;
}

/** The bytes behind a descriptor; none where the answers say what they are. */
std::optional<hostile::Bytes> &contentOf(const Opened &file) {
    return file.kind == Opened::Kind::Flash ? state.system->flash : state.system->file;
}

/** Stores what is read; how much it was. */
size_t deliver(Opened &file, void *data, size_t size) {
    const std::optional<hostile::Bytes> &content = contentOf(file);
    if (file.kind == Opened::Kind::DeviceId || !content) {
        answers().fill(data, size);
        return size;
    }
    const auto start = std::min(static_cast<size_t>(file.position), content->size());
    const size_t count = std::min(size, content->size() - start);
    if (count != 0)
        std::memcpy(data, content->data() + start, count);
    file.position += static_cast<off_t>(count);
    return count;
}

/** Reads memory that the library hands over, so that a sanitizer judges it. */
void lookAt(const void *data, size_t size) {
    static std::array<uint8_t, 4096> copy;
    const auto *next = static_cast<const uint8_t *>(data);
    for (size_t count = 0; size != 0; size -= count, next += count) {
        count = std::min(size, copy.size());
        std::memcpy(copy.data(), next, count);
    }
}

void lookAt(const char *text) {
    lookAt(text, std::strlen(text));
}

/** Overwrites what a memory has from a place on; how much that is. */
size_t overwrite(hostile::Bytes &memory, size_t place, const uint8_t *data, size_t size) {
    const size_t start = std::min(place, memory.size());
    const size_t count = std::min(size, memory.size() - start);
    if (count != 0)
        std::memcpy(memory.data() + start, data, count);
    return count;
}

void write(Opened &file, const uint8_t *data, size_t size) {
    hostile::System &system = *state.system;
    if (file.kind == Opened::Kind::Flash && system.flash)
        file.position += static_cast<off_t>(
            overwrite(*system.flash, static_cast<size_t>(file.position), data, size));
    if (file.kind == Opened::Kind::File && system.output)
        system.output->insert(system.output->end(), data, data + size);
}

// The driver

uint8_t *memoryAt(uint64_t slot) {
    return reinterpret_cast<uint8_t *>(static_cast<uintptr_t>(slot));
}

/** Stores a number as the machine has it, so that an input means the same on all of them. */
void storeWord(void *place, uint32_t word) {
    std::memcpy(place, &word, sizeof(word));
}

/** A controller that keeps to its protocol, in whose answers the input has the payload. */
void answerFrame(uint8_t *frame) {
    frame[0] = state.request[0];
    frame[1] = state.request[1];
    answers().fill(frame + 2, kFrameSize - 3);
    uint8_t sum = 0;
    for (size_t i = 0; i + 1 < kFrameSize; ++i)
        sum = static_cast<uint8_t>(sum + frame[i]);
    frame[kFrameSize - 1] = sum;
}

void transfer(bool isRead, const uint64_t *slot) {
    const bool isPoe = (slot[0] & 0xFF) == kPoeBus && slot[1] == kPoeDevice;
    uint8_t *data = memoryAt(slot[4]);
    const auto length = static_cast<int32_t>(slot[5]);
    if (length <= 0 || !state.system->isMemoryValid)
        return;
    const auto size = static_cast<size_t>(length);
    std::optional<hostile::Bytes> &eeprom = state.system->eeprom;
    // Blocks of 256 bytes have devices of their own.
    const auto start = static_cast<size_t>((slot[1] & 3) * 256 + slot[2] % 256);
    if (!isRead) {
        lookAt(data, size);
        if (isPoe)
            std::copy_n(data, std::min(size, kFrameSize), state.request.begin());
        else if (eeprom)
            overwrite(*eeprom, start, data, size);
        return;
    }
    constexpr uint8_t kNoise = 0xC0;
    if (isPoe && size == kFrameSize && (!state.system->canFail || answers().byte() < kNoise))
        return answerFrame(data);
    if (!eeprom || isPoe)
        return answers().fill(data, size);
    std::memset(data, 0xFF, size);
    if (start < eeprom->size())
        std::memcpy(data, eeprom->data() + start, std::min(size, eeprom->size() - start));
}

int driver(unsigned long request, BspIoctlRecord &record) {
    if (fails()) {
        if (answers().byte() % 2 == 0)
            return failed(-1);
        record.result = answers().number<int32_t>();
        return 0;
    }
    record.result = 0;
    if (!state.system->isMemoryValid)
        return 0;
    switch (request) {
    case BSP_REQ_CPLD_READ:
    case BSP_REQ_GPIO_READ:
        storeWord(memoryAt(record.slot[1]), answers().number<uint32_t>());
        break;
    case BSP_REQ_I2C_READ:
    case BSP_REQ_I2C_WRITE:
        if (memoryAt(record.slot[4]) == nullptr)
            return failed(-1); // the one null that the library leaves to the driver
        transfer(request == BSP_REQ_I2C_READ, record.slot);
        break;
    case BSP_REQ_CPLD_UPGRADE:
        lookAt(memoryAt(record.slot[1]), static_cast<size_t>(record.slot[2]));
        break;
    default:
        break;
    }
    return 0;
}

// Flash

/** Sizes that no chip has, but so few steps that a call ends. */
bsp::FlashGeometry anyGeometry() {
    constexpr uint32_t kMostSteps = 512;
    bsp::FlashGeometry geometry = {};
    const auto sizeOf = [] {
        const uint8_t way = answers().byte();
        return way % 4 == 3 ? answers().number<uint32_t>() : uint32_t{1} << way / 8 % 32;
    };
    geometry.erasesize = answers().byte() == 0xFF ? 0 : sizeOf();
    geometry.writesize = answers().byte() == 0xFF ? 0 : sizeOf();
    geometry.size = answers().number<uint32_t>();
    for (const uint32_t step : {geometry.erasesize, geometry.writesize})
        if (step != 0 && geometry.size / step > kMostSteps)
            geometry.size = step * kMostSteps;
    return geometry;
}

int flashDriver(unsigned long request, void *argument) {
    if (fails())
        return failed(-1);
    if (request == MEMGETINFO) {
        auto *geometry = static_cast<bsp::FlashGeometry *>(argument);
        *geometry = state.system->geometry ? *state.system->geometry : anyGeometry();
        return 0;
    }
    require(request == MEMERASE, "an unknown request to flash");
    const auto *range = static_cast<const erase_info_user *>(argument);
    std::optional<hostile::Bytes> &flash = state.system->flash;
    if (!flash)
        return 0;
    const size_t start = std::min<size_t>(range->start, flash->size());
    const size_t count = std::min<size_t>(range->length, flash->size() - start);
    std::fill_n(flash->begin() + static_cast<ptrdiff_t>(start), count, uint8_t{0xFF});
    return 0;
}

} // namespace

hostile::System::System(fuzz::Input &input) : answers(input) {
    require(state.system == nullptr, "two systems at once");
    state = State{};
    state.system = this;
}

hostile::System::~System() {
    for (const Opened &left : state.descriptor)
        require(left.kind == Opened::Kind::None, "a descriptor is left open");
    for (const Opened &left : state.file)
        require(left.kind == Opened::Kind::None, "a file is left open");
    require(state.allocations == 0, "memory is left allocated");
    require(state.mappings == 0, "a mapping is left");
    state.system = nullptr;
}

int hostile_open(const char *path, int, ...) {
    lookAt(path);
    return fails() ? failed(-1) : openAs(kindOf(path));
}

int hostile_close(int fd) {
    if (fd < 0)
        return refuseNone();
    opened(fd) = {};
    return fails() ? failed(-1) : 0;
}

int hostile_fcntl(int fd, int command, ...) {
    if (fd < 0)
        return refuseNone();
    const Opened::Kind kind = opened(fd).kind;
    if (fails())
        return failed(-1);
    return command == F_DUPFD_CLOEXEC ? openAs(kind) : 0;
}

int hostile_flock(int fd, int) {
    opened(fd);
    return fails() ? failed(-1) : 0;
}

int hostile_ioctl(int fd, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    if (opened(fd).kind == Opened::Kind::Driver)
        return driver(request, *static_cast<BspIoctlRecord *>(argument));
    return flashDriver(request, argument);
}

ssize_t hostile_read(int fd, void *data, size_t size) {
    Opened &file = opened(fd);
    uint32_t way = 0;
    if (fails(3, &way)) {
        if (way == 0)
            return failed(ssize_t{-1});
        return static_cast<ssize_t>(deliver(file, data, way == 1 || size == 0 ? 0 : size - 1));
    }
    if (file.kind == Opened::Kind::DeviceId && size == sizeof(uint32_t)) {
        const uint32_t devId = state.system->devId;
        storeWord(data, devId != 0 ? devId : answers().number<uint32_t>());
        return static_cast<ssize_t>(size);
    }
    return static_cast<ssize_t>(deliver(file, data, size));
}

ssize_t hostile_write(int fd, const void *data, size_t size) {
    Opened &file = opened(fd);
    lookAt(data, size);
    uint32_t way = 0;
    if (fails(2, &way))
        return way == 0 ? failed(ssize_t{-1}) : static_cast<ssize_t>(size / 2);
    write(file, static_cast<const uint8_t *>(data), size);
    return static_cast<ssize_t>(size);
}

off_t hostile_lseek(int fd, off_t offset, int whence) {
    Opened &file = opened(fd);
    if (fails())
        return failed(off_t{-1});
    if (whence == SEEK_END)
        return 0;
    file.position = offset;
    return offset;
}

int hostile_stat(const char *path, struct stat *info) {
    lookAt(path);
    if (fails())
        return failed(-1);
    *info = {};
    if (const std::optional<hostile::Bytes> &file = state.system->file) {
        info->st_size = static_cast<off_t>(file->size());
        return 0;
    }
    constexpr int64_t kSizes[] = {0,
                                  1,
                                  80,
                                  512,
                                  BSP_OS_IMAGE_MIN,
                                  BSP_OS_IMAGE_MAX,
                                  BSP_OS_IMAGE_MAX + 1,
                                  BSP_BOOT_FILE_MAX + 1,
                                  BSP_POE_FIRMWARE_MIN,
                                  BSP_POE_FIRMWARE_MIN + 2,
                                  INT32_MAX,
                                  -1};
    const uint8_t way = answers().byte();
    info->st_size =
        static_cast<off_t>(way < std::size(kSizes) ? kSizes[way] : answers().number<uint16_t>());
    return 0;
}

std::FILE *hostile_fopen(const char *path, const char *) {
    lookAt(path);
    if (fails())
        return failed(static_cast<std::FILE *>(nullptr));
    for (Opened &file : state.file) {
        if (file.kind != Opened::Kind::None)
            continue;
        file = {kindOf(path), 0};
        return static_cast<std::FILE *>(static_cast<void *>(&file));
    }
    fuzz::report("the library leaves files open");
}

size_t hostile_fread(void *data, size_t size, size_t count, std::FILE *file) {
    Opened &source = openedFile(file);
    if (fails())
        count = answers().byte() % (count + 1);
    return deliver(source, data, size * count) / size;
}

char *hostile_fgets(char *line, int size, std::FILE *file) {
    Opened &source = openedFile(file);
    if (fails())
        return failed(static_cast<char *>(nullptr));
    const size_t count =
        deliver(source, line, std::min<size_t>(static_cast<size_t>(size) - 1, 256));
    line[count] = '\0';
    return line;
}

int hostile_fclose(std::FILE *file) {
    openedFile(file) = {};
    return fails() ? failed(EOF) : 0;
}

void *hostile_malloc(size_t size) {
    if (size > kMostMemory || fails())
        return failed(static_cast<void *>(nullptr));
    ++state.allocations;
    return std::malloc(size);
}

void *hostile_calloc(size_t count, size_t size) {
    void *block = hostile_malloc(count * size);
    if (block != nullptr)
        std::memset(block, 0, count * size);
    return block;
}

void hostile_free(void *block) {
    if (block != nullptr)
        --state.allocations;
    std::free(block);
}

int hostile_system(const char *command) {
    lookAt(command);
    return fails() ? answers().number<int32_t>() : 0;
}

void *hostile_mmap(void *, size_t size, int, int, int fd, off_t) {
    opened(fd);
    require(size <= sizeof(state.page), "a mapping that is larger than the page of registers");
    if (fails())
        return failed(MAP_FAILED);
    ++state.mappings;
    return state.page.data();
}

int hostile_munmap(void *, size_t) {
    --state.mappings;
    return fails() ? failed(-1) : 0;
}

unsigned hostile_sleep(unsigned seconds) {
    return fails() ? seconds : 0;
}

// While the registers are mapped, time lets the MDIO controller go on: with an answer, or not at
// all.
int hostile_usleep(useconds_t) {
    if (state.mappings == 0)
        return 0;
    constexpr size_t kCommand = 0x7F4 / sizeof(uint32_t);
    if (answers().byte() % 8 != 7)
        state.page[kCommand] = answers().number<uint32_t>();
    return 0;
}

int hostile_clock_settime(clockid_t, const void *time) {
    lookAt(time, sizeof(uint64_t));
    return fails() ? failed(-1) : 0;
}

// Its name on 32-bit systems.
int hostile_clock_settime64(clockid_t clock, const void *time) {
    return hostile_clock_settime(clock, time);
}

int hostile_vprintf(const char *format, va_list arguments) {
    char text[1024];
    return std::vsnprintf(text, sizeof(text), format, arguments);
}

int hostile_printf(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = hostile_vprintf(format, arguments);
    va_end(arguments);
    return length;
}

int hostile_puts(const char *text) {
    lookAt(text);
    return 0;
}

int hostile_putchar(int character) {
    return character;
}

void hostile_perror(const char *text) {
    lookAt(text);
}
