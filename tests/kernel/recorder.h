#pragma once
// The operating system as the library's requests meet it: open, ioctl and close answer what a test
// sets and keep what they were given.

#include "bsp.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

constexpr size_t kRecordSize = 72;

struct Recorder {
    // What the operating system answers.
    int openResult = 100;
    int ioctlResult = 0;
    std::function<void(BspIoctlRecord &)> driver = [](BspIoctlRecord &) {};

    // What it was asked: "open /dev/bspHandle read-only", "ioctl 0x1001", "close".
    std::vector<std::string> calls = {};
    // The request record as it left the library, byte for byte.
    std::array<uint8_t, kRecordSize> record = {};

    /** The 64-bit unit at a byte offset of the record. */
    uint64_t unit(size_t offset) const;
};

/** Every test starts with a fresh recorder. */
extern Recorder recorder;

/** Leaves ones on the stack where the next call keeps its variables. */
void dirtyStack();
