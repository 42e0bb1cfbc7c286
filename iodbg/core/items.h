#pragma once
// What can be read of the board, one item at a time.

#include "iodbg/core/report.h"

#include <cstdint>
#include <span>

namespace iodbg {

struct Item {
    const char *key;
    const char *label;
    int32_t (*read)(Cell &cell); // the library's status
};

/** Reads items into a section; those that fail are noted in the report. */
void addItems(Report &report, Section &section, std::span<const Item> items);

/** Reads an item with a function of the library that stores a zero-terminated text. */
int32_t readText(int32_t (*get)(char *), Cell &cell);

template <int32_t (*Get)(char *)>
int32_t readText(Cell &cell) {
    return readText(Get, cell);
}

} // namespace iodbg
