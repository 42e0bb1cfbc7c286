#pragma once
// How the properties of a board are defined: inside of the words about the world.

#include "virtual_board/board/folder.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vb {

/** What a property's name leads to. */
struct PropertyTarget {
    const BoardFolder &folder;
    uint32_t number;                // the N of "cpld.N"
    std::optional<uint32_t> offset; // behind '@'
    std::optional<uint32_t> length; // behind '+'

    Board &board() const { return *folder.board(); }
    Devices &devices() const { return board().devices; }
    /** The N-th supply. */
    Supply &supply() const { return devices().supply[number - 1]; }
    /** The board's time. */
    uint64_t now() const { return clockNow(board().clock, hostNow()); }
};

using PropertyGetter = std::string (*)(const PropertyTarget &);
using PropertySetter = void (*)(const PropertyTarget &, const std::string &);

/** On which models a property exists. */
enum class Fitted { Always, PlugInSupplies, SupplyLines, Poe, Flash, Fans, ClockChip, Sfp };

/** One property, or a numbered row of them: '#' stands for the number. */
struct PropertyType {
    const char *pattern;
    uint32_t first, last;
    PropertyGetter get;
    PropertySetter set; // null: read only
    const char *idle;   // what an untouched one holds, when that is not worth showing
    bool hasBytes;      // can be asked for a part
    Fitted fitted;
    bool isLong = false;           // too much to be shown unless it is asked for
    PropertyGetter note = nullptr; // what else is to be known of it on this board, if anything
};

/** The bytes that a value of hexadecimal digits sets, all inside of size bytes; or Refused. */
std::vector<uint8_t> bytesToSet(const PropertyTarget &target, const std::string &value,
                                uint32_t size, const std::string &what);

/** The part of size bytes that a name asks for, in hexadecimal digits; or Refused. */
std::string bytesText(const PropertyTarget &target, const uint8_t *bytes, uint32_t size,
                      const std::string &what);

/** Power in and out: supplies, PoE, watchdog and reset. */
std::span<const PropertyType> powerProperties();

/** Fans, temperature and clock. */
std::span<const PropertyType> chassisProperties();

/** SFP cages and what is plugged into them, MDIO. */
std::span<const PropertyType> sfpProperties();
std::span<const PropertyType> mdioRegisterProperties();

/** Flash partitions and console. */
std::span<const PropertyType> flashProperties();

} // namespace vb
