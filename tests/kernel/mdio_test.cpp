// The MDIO command register: commands, polls, failures.

#include "bsp.h"
#include "tests/support/answer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kMemory = 1000; // descriptor
constexpr uint32_t kBusy = 1;
constexpr uint32_t kError = 1u << 28;

using Lines = std::vector<std::string>;

/** The processor's memory with the switch controller's registers. */
struct Controller {
    bool isMissing = false;
    bool cannotBeMapped = false;
    bool tellsOfUnmapping = false; // on standard output, among what the library prints
    int donePolls = 1;             // pauses until the register changes
    std::function<uint32_t(uint32_t)> answer = [](uint32_t sent) { return sent & ~kBusy; };

    Lines calls;
    int pauses = 0;
    uint32_t command = 0; // as it was found at the first pause
    alignas(4096) uint8_t page[4096] = {};

    uint32_t word(size_t offset) const {
        uint32_t value = 0;
        std::memcpy(&value, page + offset, sizeof(value));
        return value;
    }
    void setCommandRegister(uint32_t value) { std::memcpy(page + 0x7F4, &value, sizeof(value)); }
};
Controller *controller = nullptr;

std::string format(const char *text, ...) __attribute__((format(printf, 1, 2)));
std::string format(const char *text, ...) {
    char line[128];
    va_list arguments;
    va_start(arguments, text);
    std::vsnprintf(line, sizeof(line), text, arguments);
    va_end(arguments);
    return line;
}

} // namespace

// The linker lets these calls of the program come here first.
extern "C" {
int realOpen(const char *path, int flags, ...) __asm__("__real_open");
int realClose(int fd) __asm__("__real_close");
int wrappedOpen(const char *path, int flags, ...) __asm__("__wrap_open");
int wrappedClose(int fd) __asm__("__wrap_close");
void *wrappedMmap(void *address, size_t size, int access, int flags, int fd,
                  off_t offset) __asm__("__wrap_mmap");
int wrappedMunmap(void *address, size_t size) __asm__("__wrap_munmap");
int wrappedUsleep(useconds_t us) __asm__("__wrap_usleep");
}

int wrappedOpen(const char *path, int flags, ...) {
    if (controller == nullptr || std::strcmp(path, "/dev/mem") != 0) {
        va_list arguments;
        va_start(arguments, flags);
        const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
        va_end(arguments);
        return realOpen(path, flags, mode);
    }
    const bool isAsUsual = (flags & ~(O_CLOEXEC | O_LARGEFILE)) == O_RDWR;
    controller->calls.emplace_back(isAsUsual ? "open" : "open in another way");
    errno = EACCES;
    return controller->isMissing ? -1 : kMemory;
}

int wrappedClose(int fd) {
    if (fd != kMemory)
        return realClose(fd);
    controller->calls.emplace_back("close");
    return 0;
}

void *wrappedMmap(void *address, size_t size, int access, int flags, int fd, off_t offset) {
    controller->calls.push_back(
        format("map %zu at 0x%lx%s%s%s%s", size, static_cast<unsigned long>(offset),
               address == nullptr && fd == kMemory ? "" : " of something else",
               (access & PROT_READ) != 0 ? " read" : "", (access & PROT_WRITE) != 0 ? " write" : "",
               flags == MAP_SHARED ? " shared" : ""));
    errno = EPERM;
    return controller->cannotBeMapped ? MAP_FAILED : controller->page;
}

int wrappedMunmap(void *address, size_t size) {
    if (controller->tellsOfUnmapping)
        std::printf("(unmapped)\n");
    controller->calls.push_back(
        format("unmap %zu%s", size, address == controller->page ? "" : " of something else"));
    return 0;
}

int wrappedUsleep(useconds_t us) {
    EXPECT_EQ(us, 1u);
    if (controller->pauses++ == 0)
        controller->command = controller->word(0x7F4);
    if (controller->pauses == controller->donePolls)
        controller->setCommandRegister(controller->answer(controller->command));
    return 0;
}

namespace {

constexpr char kMap[] = "map 4096 at 0x1b000000 read write shared";
const Lines kWhole = {"open", kMap, "unmap 4096", "close"};
constexpr uint32_t kMark = 0x5A5A5A5A;
constexpr int kNever = -1;

class MdioTest : public ::testing::Test {
  protected:
    MdioTest() { controller = &mdio; }
    ~MdioTest() override { controller = nullptr; }

    Answer read(uint32_t addrA = 3, uint32_t addrB = 5, uint32_t unit = 0, uint32_t reserved = 0) {
        value = kMark;
        mdio.pauses = 0;
        mdio.calls.clear();
        return answerOf([&] { return bsp_smi_read(unit, addrA, reserved, addrB, &value); });
    }
    Answer write(uint32_t data = 0, uint32_t addrA = 3, uint32_t addrB = 5, uint32_t unit = 0,
                 uint32_t reserved = 0) {
        mdio.pauses = 0;
        mdio.calls.clear();
        return answerOf([&] { return bsp_smi_write(unit, addrA, reserved, addrB, data); });
    }

    Controller mdio;
    uint32_t value = kMark;
};

TEST_F(MdioTest, ReadAddressesARegisterAndTakes16Bits) {
    struct Case {
        uint32_t addrA, addrB, command;
    };
    constexpr Case kCases[] = {
        {3, 5, 0x28D},
        {0, 0, 0x001},
        {31, 0, 0x07D},
        {0, 31, 0xF81},
        {32, 32, 0x001},
        {33, 1, 0x085},
        {UINT32_MAX, UINT32_MAX, 0xFFD},
    };
    for (const Case &row : kCases) {
        // What lies around the data is not part of it.
        mdio.answer = [](uint32_t command) { return 0xEABCD000 | (command & ~kBusy); };
        EXPECT_EQ(read(row.addrA, row.addrB, 7, 9), kSilentSuccess);
        EXPECT_EQ(mdio.command, row.command);
        EXPECT_EQ(value, 0xABCDu);
        EXPECT_EQ(mdio.calls, kWhole);
    }
}

TEST_F(MdioTest, WriteCarries16Bits) {
    struct Case {
        uint32_t data, addrA, addrB, command;
    };
    constexpr Case kCases[] = {
        {0x1ABCD, 3, 5, 0x0ABCD28F}, {0, 0, 0, 0x00000003},
        {0xFFFF, 0, 0, 0x0FFFF003},  {UINT32_MAX, UINT32_MAX, UINT32_MAX, 0x0FFFFFFF},
        {1, 33, 34, 0x00001107},
    };
    for (const Case &row : kCases) {
        EXPECT_EQ(write(row.data, row.addrA, row.addrB, 7, 9), kSilentSuccess);
        EXPECT_EQ(mdio.command, row.command);
        EXPECT_EQ(mdio.calls, kWhole);
    }
}

TEST_F(MdioTest, TheWholeCommandReplacesWhatWasInTheRegisterAndNothingElseIsTouched) {
    std::memset(mdio.page, 0xFF, sizeof(mdio.page));
    read();
    EXPECT_EQ(mdio.command, 0x28Du);
    for (size_t offset = 0; offset < sizeof(mdio.page); offset += 4) {
        if (offset != 0x7F4) {
            EXPECT_EQ(mdio.word(offset), 0xFFFFFFFF) << offset;
        }
    }
}

TEST_F(MdioTest, TheRegisterIsReadUpTo19001Times) {
    for (const int polls : {1, 2, 19000}) {
        mdio.donePolls = polls;
        EXPECT_EQ(read(), kSilentSuccess);
        EXPECT_EQ(mdio.pauses, polls);
        EXPECT_EQ(write(), kSilentSuccess);
        EXPECT_EQ(mdio.pauses, polls);
    }
    for (const int polls : {19001, kNever}) { // done behind the last look at it, or never
        mdio.donePolls = polls;
        EXPECT_EQ(read(), (Answer{BSP_E_TIMEOUT, "bsp_smi_read: read timeout \n"}));
        EXPECT_EQ(value, kMark);
        EXPECT_EQ(mdio.pauses, 19001);
        EXPECT_EQ(mdio.calls, kWhole);
        EXPECT_EQ(write(), (Answer{BSP_E_TIMEOUT, "bsp_smi_write: write timeout \n"}));
        EXPECT_EQ(mdio.pauses, 19001);
        EXPECT_EQ(mdio.calls, kWhole);
    }
}

TEST_F(MdioTest, AnErrorEndsTheCommandWhetherOrNotItIsBusy) {
    for (const uint32_t busy : {0u, kBusy}) {
        mdio.donePolls = 3;
        mdio.answer = [busy](uint32_t) { return kError | 0xABCD000 | busy; };
        EXPECT_EQ(read(), (Answer{BSP_E_FAILED, "bsp_smi_read: read failed \n"}));
        EXPECT_EQ(value, kMark);
        EXPECT_EQ(mdio.pauses, 3);
        EXPECT_EQ(mdio.calls, kWhole);
        EXPECT_EQ(write(), Answer{BSP_E_FAILED}) << "without a word";
        EXPECT_EQ(mdio.pauses, 3);
        EXPECT_EQ(mdio.calls, kWhole);
    }
}

TEST_F(MdioTest, FailuresAreToldBeforeThePageIsGivenBack) {
    mdio.tellsOfUnmapping = true;
    mdio.answer = [](uint32_t) { return kError; };
    EXPECT_EQ(read(), (Answer{BSP_E_FAILED, "bsp_smi_read: read failed \n(unmapped)\n"}));
    mdio.donePolls = kNever;
    EXPECT_EQ(read(), (Answer{BSP_E_TIMEOUT, "bsp_smi_read: read timeout \n(unmapped)\n"}));
    EXPECT_EQ(write(), (Answer{BSP_E_TIMEOUT, "bsp_smi_write: write timeout \n(unmapped)\n"}));
}

TEST_F(MdioTest, WithoutTheMemoryNothingIsDone) {
    mdio.isMissing = true;
    const Answer expected = {BSP_E_OPEN, "Can't open /dev/mem \n"};
    EXPECT_EQ(read(), expected);
    EXPECT_EQ(value, kMark);
    EXPECT_EQ(mdio.calls, Lines{"open"});
    EXPECT_EQ(write(), expected);
    EXPECT_EQ(mdio.calls, Lines{"open"});
}

TEST_F(MdioTest, WithoutTheRegistersTheMemoryIsClosed) {
    mdio.cannotBeMapped = true;
    const Answer expected = {BSP_E_MAP, "Can't map physical memory: 0x1b000000\n"};
    EXPECT_EQ(read(), expected);
    EXPECT_EQ(value, kMark);
    EXPECT_EQ(mdio.calls, (Lines{"open", kMap, "close"}));
    EXPECT_EQ(write(), expected);
    EXPECT_EQ(mdio.calls, (Lines{"open", kMap, "close"}));
}

TEST_F(MdioTest, ANullValueIsRefusedBeforeAnything) {
    EXPECT_EQ(answerOf([] { return bsp_smi_read(0, 3, 0, 5, nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(mdio.calls, Lines{});
}

} // namespace
