#pragma once
// What the board says of itself, one item at a time.

#include "iodbg/core/items.h"

#include <span>

namespace iodbg {

/** The boot loader's version, from the kernel's command line. */
int32_t readBootLoaderVersion(Cell &cell);

/** Model and versions. */
extern const std::span<const Item> kVersionItems;
/** The serial number in the board's record. */
extern const std::span<const Item> kSerialItems;
/** The MAC addresses that come from the board's record. */
extern const std::span<const Item> kMacItems;

} // namespace iodbg
