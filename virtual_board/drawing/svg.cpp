// Where the parts of a panel are, and the drawing of all.

#include "language/numbers.h"
#include "virtual_board/drawing/markup.h"
#include "virtual_board/drawing/panel.h"
#include "virtual_board/drawing/shapes.h"

#include <algorithm>
#include <vector>

namespace vboard::drawing {

namespace {

constexpr double kWidth = 1200;
constexpr double kMargin = 10;
constexpr double kHead = 26; // above the ports, with the names of the lamps and of the model
constexpr double kColumn = kPlace.width + 1;
constexpr double kRow = kPlace.height + 26;
constexpr double kGap = 12; // between blocks
constexpr uint32_t kPortsOfBlock = 24;
constexpr double kFrontHeight = kHead + 2 * kRow + 6;
constexpr double kGaugesTop = kFrontHeight + 2 * kMargin;
constexpr double kRearTop = kGaugesTop + kGauge.height + kMargin;

bool isPlace(const Part &part) {
    return part.kind == "port" || part.kind == "sfp";
}

uint32_t numberIn(const Readings &readings, const char *name) {
    const auto place = readings.find(name);
    return place == readings.end()
               ? 0
               : language::readNumber<uint32_t>(place->second, 0, UINT32_MAX).value_or(0);
}

std::string valueIn(const Readings &readings, const char *name) {
    const auto place = readings.find(name);
    return place == readings.end() ? "" : place->second;
}

std::string group(const Part &part, Point place) {
    return "<g class=\"part " + escaped(part.kind + " " + part.look) + "\" id=\"part-" +
           escaped(part.id) + "\" data-part=\"" + escaped(part.id) + "\" transform=\"translate(" +
           std::to_string(static_cast<int>(place.x)) + " " +
           std::to_string(static_cast<int>(place.y)) + ")\"><title>" + escaped(part.label) +
           "</title>" + shapeOf(part) + "</g>\n";
}

/** Ports and cages: odd ones above even ones, in blocks. What is behind the ports is a block, too.
 */
std::string front(const Readings &readings, const std::vector<Part> &parts) {
    const uint32_t ports = numberIn(readings, "ports.sfp") + numberIn(readings, "ports.copper");
    std::string drawn;
    double left = 2 * kMargin, right = left;
    uint32_t ofBlock = 0, number = 0;
    const char *kind = "";
    for (const Part &part : parts) {
        if (!isPlace(part))
            continue;
        ++number;
        const bool isOther =
            number == ports + 1 || (kind != part.kind && number > 1 && number <= ports);
        if (ofBlock == kPortsOfBlock || isOther) {
            left = right + kGap;
            ofBlock = 0;
        }
        kind = part.kind == "port" ? "port" : "sfp";
        const size_t column = ofBlock / 2;
        const Point place = {left + static_cast<double>(column) * kColumn,
                             kHead + ofBlock % 2 * kRow};
        drawn += group(part, place);
        right = std::max(right, place.x + kColumn);
        ++ofBlock;
    }
    return drawn;
}

std::string lamps(const std::vector<Part> &parts) {
    std::string drawn;
    double left = 2 * kMargin;
    for (const Part &part : parts) {
        if (part.kind != "lamp")
            continue;
        drawn += group(part, {left, 6});
        left += kLamp.width + kMargin;
    }
    return drawn;
}

/** Parts of some kinds beside each other. */
template <typename Belongs>
std::string row(const std::vector<Part> &parts, double top, double gap, Belongs widthOf) {
    std::string drawn;
    double left = 2 * kMargin;
    for (const Part &part : parts) {
        const double width = widthOf(part);
        if (width == 0)
            continue;
        drawn += group(part, {left, top});
        left += width + gap;
    }
    return drawn;
}

double widthBehind(const Part &part) {
    if (part.kind == "fan")
        return kFan.width;
    return part.kind == "supply" ? kSupply.width : 0;
}

double widthOfGauge(const Part &part) {
    return part.kind == "gauge" || part.kind == "clock" ? kGauge.width + 12 : 0;
}

} // namespace

std::string svgOf(const Readings &readings, const std::vector<Part> &parts, Styled styled) {
    const bool hasRear = std::any_of(parts.begin(), parts.end(),
                                     [](const Part &part) { return widthBehind(part) != 0; });
    constexpr double kRearHeight = kFan.height + 30;
    const double height = hasRear ? kRearTop + kRearHeight + kMargin : kRearTop;
    const std::string model = valueIn(readings, "model");
    std::string drawing =
        R"(<svg xmlns="http://www.w3.org/2000/svg" class="panel" viewBox="0 0 )" +
        std::to_string(static_cast<int>(kWidth)) + " " + std::to_string(static_cast<int>(height)) +
        R"(" role="group" aria-label=")" + escaped("Panel of model " + model) + "\">\n";
    if (styled == Styled::Within)
        drawing +=
            "<style>" + panelStyle() + "</style>\n" + rectangle("ground", {0, 0}, {kWidth, height});
    drawing += rectangle("chassis", {kMargin, 0.5}, {kWidth - 2 * kMargin, kFrontHeight}, 6) +
               R"(<text class="model" text-anchor="end" x="1180" y="18">)" + escaped(model) +
               "</text>\n" + front(readings, parts) + lamps(parts) +
               row(parts, kGaugesTop, 0, widthOfGauge);
    if (hasRear)
        drawing +=
            rectangle("chassis", {kMargin, kRearTop}, {kWidth - 2 * kMargin, kRearHeight}, 6) +
            written("model", {2 * kMargin, kRearTop + 17}, "seen from behind") + "\n" +
            row(parts, kRearTop + 24, 14, widthBehind);
    return drawing + "</svg>\n";
}

} // namespace vboard::drawing
