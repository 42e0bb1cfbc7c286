#pragma once
// A board's panel: its parts, each with how it looks and what is said of it, and the drawing of
// them.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vboard::drawing {

/** What a board holds: names of properties and values. */
using Readings = std::map<std::string, std::string>;

/** A part of a panel. */
struct Part {
    std::string id;    // its place: "port.3", "sfp.49", "fan.1"
    std::string kind;  // "port", "sfp", "lamp", "gauge", "clock", "fan", "supply"
    std::string look;  // words that the drawing's style knows: "delivering lit"
    std::string text;  // short, seen on it: "15.4 W"
    std::string label; // a sentence of it: "Port 3: delivers 15.4 W to a device of class 4"
    std::vector<std::string> properties = {}; // patterns of what it is made of
    std::string bus = {};                     // as rules for faults name it; empty: none
    std::optional<uint32_t> rpm = {};         // of fans

    bool operator==(const Part &) const = default;
};

/** The properties that the parts need and that are not among those that a board tells unasked. */
extern const std::vector<std::string> kMoreReadings;

/** All parts, in the order in which people look at a panel. */
std::vector<Part> partsOf(const Readings &readings);

/** The style of the drawing, for light and for dark surroundings. */
std::string panelStyle();

enum class Styled {
    Within,    // the drawing stands alone
    Elsewhere, // it is part of a page that has the style
};

/** The drawing, as SVG: the front, what is measured, and the rear. Parts have their ids with them.
 */
std::string svgOf(const Readings &readings, const std::vector<Part> &parts, Styled styled);

} // namespace vboard::drawing
