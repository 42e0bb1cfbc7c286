#pragma once
// Requests to the kernel module, as they leave the library.

#include "bsp.h"
#include "tests/support/recorder.h"

#include <array>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>

constexpr size_t kRecordSize = 72;

/** The kernel module is the test's own. */
class RequestTest : public ::testing::Test {
  protected:
    RequestTest() {
        recorder.before = [this](const SystemCall &call) -> std::optional<int64_t> {
            if (call.is("open"))
                return open("/dev/null", O_RDONLY | O_CLOEXEC);
            if (!call.is("ioctl"))
                return std::nullopt;
            std::memcpy(record.data(), call.argument, kRecordSize);
            driver(*static_cast<BspIoctlRecord *>(call.argument));
            return ioctlResult;
        };
    }

    /** Calls the library on a stack of ones, where it would find what it forgets to clear. */
    Answer ask(const std::function<int32_t()> &call) {
        return recorder.run([&] {
            dirtyStack();
            return call();
        });
    }

    /** The 64-bit unit at a byte offset of the record. */
    uint64_t unit(size_t offset) const {
        uint64_t value = 0;
        std::memcpy(&value, record.data() + offset, sizeof(value));
        return value;
    }

    /** The calls around a request: "0x1001". */
    static Calls requestOf(const std::string &code) {
        return {"open /dev/bspHandle read-only", "request " + code, "close /dev/bspHandle"};
    }

    // What the module does with a record, and what the ioctl answers.
    std::function<void(BspIoctlRecord &)> driver = [](BspIoctlRecord &) {};
    int ioctlResult = 0;

    /** The last record as it left the library, byte for byte. */
    std::array<uint8_t, kRecordSize> record = {};
    Recorder recorder;

  private:
    __attribute__((noinline)) static void dirtyStack() {
        constexpr size_t kDeep = 8192;
        volatile uint8_t ground[kDeep];
        for (volatile uint8_t &byte : ground)
            byte = 0xFF;
    }
};
