// The MDIO command register: commands, polls, failures.

#include "bsp.h"
#include "tests/support/recorder.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>

namespace {

constexpr uint32_t kBusy = 1;
constexpr uint32_t kError = 1u << 28;

/** The switch controller's page of registers. */
struct Controller {
    int donePolls = 1; // pauses until the register changes
    std::function<uint32_t(uint32_t)> answer = [](uint32_t sent) { return sent & ~kBusy; };

    int pauses = 0;
    uint32_t command = 0; // as it was found at the first pause
    alignas(4096) uint8_t page[4096] = {};

    uint32_t word(size_t offset) const {
        uint32_t value = 0;
        std::memcpy(&value, page + offset, sizeof(value));
        return value;
    }
    void setCommandRegister(uint32_t value) { std::memcpy(page + 0x7F4, &value, sizeof(value)); }

    void pause() {
        if (pauses++ == 0)
            command = word(0x7F4);
        if (pauses == donePolls)
            setCommandRegister(answer(command));
    }
};

constexpr char kOpen[] = "open /dev/mem read-write";
constexpr char kMap[] = "map /dev/mem 4096 at 0x1b000000 read write shared";
constexpr char kPause[] = "wait 1 us";
constexpr uint32_t kMark = 0x5A5A5A5A;
constexpr int kNever = -1;

class MdioTest : public ::testing::Test {
  protected:
    MdioTest() {
        recorder.before = [this](const SystemCall &call) -> std::optional<int64_t> {
            if (call.is("open"))
                return open("/dev/null", O_RDWR | O_CLOEXEC);
            if (call.is("mmap"))
                return reinterpret_cast<intptr_t>(mdio.page);
            if (call.is("munmap") && tellsOfUnmapping)
                std::printf("(unmapped)\n");
            if (call.is("munmap"))
                return 0;
            if (!call.is("usleep"))
                return std::nullopt;
            mdio.pause();
            return 0;
        };
    }

    Answer read(uint32_t addrA = 3, uint32_t addrB = 5, uint32_t unit = 0, uint32_t reserved = 0) {
        value = kMark;
        mdio.pauses = 0;
        return recorder.run([&] { return bsp_smi_read(unit, addrA, reserved, addrB, &value); });
    }
    Answer write(uint32_t data = 0, uint32_t addrA = 3, uint32_t addrB = 5, uint32_t unit = 0,
                 uint32_t reserved = 0) {
        mdio.pauses = 0;
        return recorder.run([&] { return bsp_smi_write(unit, addrA, reserved, addrB, data); });
    }

    /** Everything that the last command called, with so many pauses. */
    void expectWhole(int pauses) {
        Calls expected = {kOpen, kMap};
        expected.insert(expected.end(), static_cast<size_t>(pauses), kPause);
        expected.insert(expected.end(), {"unmap 4096", "close /dev/mem"});
        EXPECT_EQ(recorder.calls, expected);
    }

    bool tellsOfUnmapping = false; // on standard output, among what the library prints
    Controller mdio;
    uint32_t value = kMark;
    Recorder recorder;
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
        expectWhole(1);
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
        expectWhole(1);
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
        expectWhole(polls);
        EXPECT_EQ(write(), kSilentSuccess);
        expectWhole(polls);
    }
    for (const int polls : {19001, kNever}) { // done behind the last look at it, or never
        mdio.donePolls = polls;
        EXPECT_EQ(read(), (Answer{BSP_E_TIMEOUT, "bsp_smi_read: read timeout \n"}));
        EXPECT_EQ(value, kMark);
        expectWhole(19001);
        EXPECT_EQ(write(), (Answer{BSP_E_TIMEOUT, "bsp_smi_write: write timeout \n"}));
        expectWhole(19001);
    }
}

TEST_F(MdioTest, AnErrorEndsTheCommandWhetherOrNotItIsBusy) {
    for (const uint32_t busy : {0u, kBusy}) {
        mdio.donePolls = 3;
        mdio.answer = [busy](uint32_t) { return kError | 0xABCD000 | busy; };
        EXPECT_EQ(read(), (Answer{BSP_E_FAILED, "bsp_smi_read: read failed \n"}));
        EXPECT_EQ(value, kMark);
        expectWhole(3);
        EXPECT_EQ(write(), Answer{BSP_E_FAILED}) << "without a word";
        expectWhole(3);
    }
}

TEST_F(MdioTest, FailuresAreToldBeforeThePageIsGivenBack) {
    tellsOfUnmapping = true;
    mdio.answer = [](uint32_t) { return kError; };
    EXPECT_EQ(read(), (Answer{BSP_E_FAILED, "bsp_smi_read: read failed \n(unmapped)\n"}));
    mdio.donePolls = kNever;
    EXPECT_EQ(read(), (Answer{BSP_E_TIMEOUT, "bsp_smi_read: read timeout \n(unmapped)\n"}));
    EXPECT_EQ(write(), (Answer{BSP_E_TIMEOUT, "bsp_smi_write: write timeout \n(unmapped)\n"}));
}

TEST_F(MdioTest, WithoutTheMemoryNothingIsDone) {
    recorder.failAlways("open");
    const Answer expected = {BSP_E_OPEN, "Can't open /dev/mem \n"};
    EXPECT_EQ(read(), expected);
    EXPECT_EQ(value, kMark);
    EXPECT_EQ(recorder.calls, Calls{kOpen});
    EXPECT_EQ(write(), expected);
    EXPECT_EQ(recorder.calls, Calls{kOpen});
}

TEST_F(MdioTest, WithoutTheRegistersTheMemoryIsClosed) {
    recorder.failAlways("map");
    const Answer expected = {BSP_E_MAP, "Can't map physical memory: 0x1b000000\n"};
    EXPECT_EQ(read(), expected);
    EXPECT_EQ(value, kMark);
    EXPECT_EQ(recorder.calls, (Calls{kOpen, kMap, "close /dev/mem"}));
    EXPECT_EQ(write(), expected);
    EXPECT_EQ(recorder.calls, (Calls{kOpen, kMap, "close /dev/mem"}));
}

TEST_F(MdioTest, ANullValueIsRefusedBeforeAnything) {
    EXPECT_EQ(recorder.run([] { return bsp_smi_read(0, 3, 0, 5, nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(recorder.calls, Calls{});
}

} // namespace
