#include "virtual_board/drawing/shapes.h"

#include <iterator>

namespace vboard::drawing {

namespace {

/** What stands behind the point of an id: "49". */
std::string numberOf(const Part &part) {
    return part.id.substr(part.id.find('.') + 1);
}

/** The jack, with the plug in it, its lamp, and a mark for each state. */
std::string port(const Part &part) {
    constexpr double kMiddle = kPlace.width / 2;
    return rectangle("body", {1, 1}, {kPlace.width - 2, kPlace.height - 2}, 3) +
           path("jack", "M8 5h24v14h-4v4h-4v3h-8v-3h-4v-4h-4z") +
           path("plug", "M11 8h18v9h-4v4h-10v-4h-4z") +
           path("mark delivering", "M21.5 6l-6 9h4l-1.5 7 6-9h-4z") +
           path("mark fault", "M19 7h2.6v8h-2.6zM19 17h2.6v2.6h-2.6z") +
           path("mark denied", "M15 12h10v2.6h-10z") +
           path("mark disabled", "M15 8l1.5-1.5 9 10-1.5 1.5z") + circle("lamp", {5, 29}, 2.6) +
           centred("number", {kMiddle, kPlace.height + 9}, numberOf(part)) +
           centred("value", {kMiddle, kPlace.height + 20}, part.text);
}

/** The cage, with the module in it and a mark for each signal. */
std::string cage(const Part &part) {
    constexpr double kMiddle = kPlace.width / 2;
    return rectangle("body", {1, 1}, {kPlace.width - 2, kPlace.height - 2}, 1) +
           rectangle("hole", {4, 5}, {kPlace.width - 8, kPlace.height - 14}) +
           rectangle("module", {6, 7}, {kPlace.width - 12, kPlace.height - 18}, 1) +
           path("mark good", "M14 15.5l3.5 3.5 8-8-1.7-1.7-6.3 6.3-1.8-1.8z") +
           path("mark lost", "M20 10l5 8h-10zM20 13l-2.6 4h5.2z") +
           path("mark off", "M15 9l1.5-1.5 9 10-1.5 1.5z") +
           path("mark tx-fault", "M18.7 8h2.6v6h-2.6zM18.7 16h2.6v2.6h-2.6z") +
           rectangle("latch", {14, 26}, {12, 3}, 1) +
           centred("number", {kMiddle, kPlace.height + 9}, numberOf(part)) +
           centred("value", {kMiddle, kPlace.height + 20}, part.text);
}

std::string fan(const Part &part) {
    constexpr Point kHub = {kFan.width / 2, 46};
    std::string blades;
    for (const char *turn : {"0", "72", "144", "216", "288"})
        blades += R"(<path class="blade" transform="rotate()" + std::string(turn) +
                  ")\" d=\"M0-6C14-12 22-24 12-36 2-40-8-30-6-18-5-12-3-8 0-6z\"/>";
    return rectangle("body", {1, 1}, {kFan.width - 2, kFan.height - 2}, 6) +
           circle("hole", kHub, 41) + "<g transform=\"translate(52 46)\"><g class=\"rotor\">" +
           circle("swing", {0, 0}, 40) + blades + circle("hub", {0, 0}, 9) + "</g></g>" +
           path("cross", "M28 22l48 48M76 22l-48 48") + written("number", {7, 14}, numberOf(part)) +
           centred("value", {kFan.width / 2, kFan.height - 6}, part.text);
}

std::string supply(const Part &part) {
    return rectangle("body", {1, 1}, {kSupply.width - 2, kSupply.height - 2}, 6) +
           rectangle("socket", {14, 24}, {56, 40}, 8) +
           path("pins", "M28 40v10M42 34v10M56 40v10") +
           path("vents", "M86 28h88M86 36h88M86 44h88M86 52h88M86 60h88") +
           path("cross", "M14 24l160 40M174 24l-160 40") +
           circle("lamp", {kSupply.width - 16, 13}, 4) +
           written("number", {10, 16}, "supply " + numberOf(part)) +
           centred("value", {kSupply.width / 2, kSupply.height - 12}, part.text);
}

std::string lamp(const Part &part) {
    const std::string name = numberOf(part);
    return circle("bulb", {8, 8}, 6) +
           (part.id == "lamp.system" ? centred("value", {8, 11.5}, part.text) : "") +
           written("number", {18, 11.5}, name == "system" ? "SYS" : name);
}

struct GaugeName {
    const char *id, *name;
};
constexpr GaugeName kGaugeNames[] = {{"temperature", "temperature"},
                                     {"poe", "PoE power"},
                                     {"watchdog", "watchdog"},
                                     {"calendar", "calendar"},
                                     {"clock", "board's clock"}};

std::string segments() {
    constexpr int kSegments = 10;
    constexpr double kWidth = 19.2;
    std::string all;
    for (int i = 0; i < kSegments; ++i)
        all += rectangle("segment", {10 + kWidth * i, 36}, {kWidth - 2, 4});
    return "<g class=\"segments\">" + all + "</g>";
}

std::string gauge(const Part &part) {
    std::string name = part.id;
    for (const GaugeName &row : kGaugeNames) {
        if (part.id == row.id)
            name = row.name;
    }
    return rectangle("body", {1, 1}, {kGauge.width - 2, kGauge.height - 2}, 5) +
           written("number", {10, 14}, name) + written("value", {10, 31}, part.text) +
           (part.id == "poe" ? segments() : "");
}

struct Shape {
    const char *kind;
    std::string (*draw)(const Part &);
};
constexpr Shape kShapes[] = {{"port", port}, {"sfp", cage},    {"fan", fan},    {"supply", supply},
                             {"lamp", lamp}, {"gauge", gauge}, {"clock", gauge}};

} // namespace

std::string shapeOf(const Part &part) {
    for (const Shape &shape : kShapes) {
        if (part.kind == shape.kind)
            return shape.draw(part);
    }
    return "";
}

} // namespace vboard::drawing
