#pragma once
// How the properties of a board are defined: inside of the words about the world.

#include "virtual_board/board/folder.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace vb {

/** What a property's name leads to. */
struct PropertyTarget {
    const BoardFolder &folder;
    uint32_t number;                // the N of "cpld.N"
    std::optional<uint32_t> offset; // behind '@'
    std::optional<uint32_t> length; // behind '+'

    Board &board() const { return *folder.board(); }
    Devices &devices() const { return board().devices; }
    /** The board's time. */
    uint64_t now() const { return clockNow(board().clock, hostNow()); }
};

using PropertyGetter = std::string (*)(const PropertyTarget &);
using PropertySetter = void (*)(const PropertyTarget &, const std::string &);

/** On which models a property exists. */
enum class Fitted { Always, PlugInSupplies, SupplyLines, Poe };

/** One property, or a numbered row of them: '#' stands for the number. */
struct PropertyType {
    const char *pattern;
    uint32_t first, last;
    PropertyGetter get;
    PropertySetter set; // null: read only
    const char *idle;   // what an untouched one holds, when that is not worth showing
    bool hasBytes;      // can be asked for a part
    Fitted fitted;
};

/** Power in and out: supplies, PoE, watchdog and reset. */
std::span<const PropertyType> powerProperties();

} // namespace vb
