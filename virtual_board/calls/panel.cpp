#include "virtual_board/calls/panel.h"

#include "virtual_board/drawing/part_json.h"

namespace vboard {

drawing::Readings readingsOf(const Board &board) {
    drawing::Readings readings;
    for (const VBoardProperty &property : board.properties({}))
        readings.emplace(property.name, property.value);
    for (const VBoardProperty &property : board.properties(drawing::kMoreReadings))
        readings.emplace(property.name, property.value);
    return readings;
}

std::string descriptionOf(const std::string &model) {
    const List<VBoardModel> models([](VBoardModel **list, uint32_t *count, VBoardError *error) {
        return vboardModels(list, count, error);
    });
    for (const VBoardModel &one : models) {
        if (one.id == model)
            return one.description;
    }
    return "";
}

Panel panelOf(const Board &board) {
    Panel panel;
    panel.readings = readingsOf(board);
    panel.parts = drawing::partsOf(panel.readings);
    panel.description = descriptionOf(panel.readings.at("model"));
    return panel;
}

nlohmann::ordered_json panelJson(const Panel &panel) {
    return {{"model", panel.readings.at("model")},
            {"description", panel.description},
            {"parts", drawing::partsJson(panel.parts)}};
}

} // namespace vboard
