#pragma once
// What the board says of itself, one item at a time.

#include "iodbg/report.h"

#include <cstdint>
#include <span>

namespace iodbg {

struct Item {
    const char *key;
    const char *label;
    int32_t (*read)(Cell &cell); // the library's status
};

/** Model and versions. */
extern const std::span<const Item> kVersionItems;
/** The serial number in the board's record. */
extern const std::span<const Item> kSerialItems;
/** The MAC addresses that come from the board's record. */
extern const std::span<const Item> kMacItems;

/** Reads items into a section; those that fail are noted in the report. */
void addItems(Report &report, Section &section, std::span<const Item> items);

} // namespace iodbg
