#pragma once
// What a PoE port says of itself.

#include "iodbg/core/report.h"
#include "poe/guide.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace iodbg {

/** One column of the ports' table. */
struct PoePortItem {
    const char *key;
    const char *label;     // of the table's column
    const char *longLabel; // with room for a unit
    size_t width;          // of the column, which has to be known before the first row is
};

/** Everything that a port tells, in the order in which people read it. */
const std::vector<PoePortItem> &poePortItems();

/**
 * The cells of one port, one for each item. An exchange that fails is noted in the report once,
 * under the first of the items that it would have told. Only a port that delivers power is
 * measured.
 */
std::vector<Cell> readPoePort(Report &report, const bsp::PoeGuide &guide, uint32_t port);

// The table of ports, line by line: it fits into 80 columns. "!" stands for what failed, and "?"
// for an unknown class.

std::string poePortHeadLine();
std::string poePortLine(uint32_t port, const std::vector<Cell> &cells);

} // namespace iodbg
