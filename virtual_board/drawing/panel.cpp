#include "virtual_board/drawing/panel.h"

namespace vboard::drawing {

std::vector<Part> partsOf(const Readings &readings) {
    std::vector<Part> parts;
    for (int i = 1; readings.count("fan." + std::to_string(i) + ".speed") != 0; ++i) {
        const std::string name = "fan." + std::to_string(i);
        const std::string rpm = readings.at(name + ".speed");
        parts.push_back({name, "fan", "turning", rpm, "Fan " + std::to_string(i) + ": " + rpm,
                         {name + ".*"}, "", static_cast<uint32_t>(std::stoul(rpm))});
    }
    return parts;
}

std::string svgOf(const Readings &, const std::vector<Part> &parts) {
    std::string text = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 100 20\">";
    for (const Part &part : parts)
        text += "<g class=\"part " + part.kind + " " + part.look + "\" data-part=\"" + part.id +
                "\" id=\"part-" + part.id + "\"><title>" + part.label + "</title></g>";
    return text + "</svg>\n";
}

} // namespace vboard::drawing
