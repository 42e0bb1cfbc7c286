#include "virtual_board/drawing/part_json.h"

namespace vboard::drawing {

nlohmann::ordered_json partJson(const Part &part) {
    nlohmann::ordered_json object = {{"id", part.id},       {"kind", part.kind},
                                     {"look", part.look},   {"text", part.text},
                                     {"label", part.label}, {"properties", part.properties}};
    if (!part.bus.empty())
        object["bus"] = part.bus;
    if (part.rpm.has_value())
        object["rpm"] = *part.rpm;
    return object;
}

nlohmann::ordered_json partsJson(const std::vector<Part> &parts) {
    auto array = nlohmann::ordered_json::array();
    for (const Part &part : parts)
        array.push_back(partJson(part));
    return array;
}

} // namespace vboard::drawing
