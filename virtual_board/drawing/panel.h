#pragma once
// A board's panel: its parts, and the drawing of them.

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
    std::string id, kind, look, text, label;
    std::vector<std::string> properties;
    std::string bus;             // empty: none
    std::optional<uint32_t> rpm; // of fans

    bool operator==(const Part &) const = default;
};

std::vector<Part> partsOf(const Readings &readings);
std::string svgOf(const Readings &readings, const std::vector<Part> &parts);

} // namespace vboard::drawing
