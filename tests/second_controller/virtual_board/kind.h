#pragma once
// The quill in software, from what its makers would have written down of it.

#include "virtual_board/devices/poe_kind.h"

namespace vb {

constexpr auto kQuillChip = PoeChip{0x80};

struct QuillPort {
    uint32_t limitMw;
    uint8_t mode; // 0: off, 1: automatic, 2: on command
    uint8_t isOn; // by command
    uint8_t padding[2];
};

/** What it keeps for itself. */
struct QuillMemory {
    uint32_t budgetMw;
    uint8_t isRunning;
    uint8_t padding[3];
    QuillPort port[kPoePorts];
};

QuillMemory &quillMemory(PoeController &poe);

extern const PoeKind kQuillKind;

} // namespace vb
