// The panel: its parts, the drawing of them, and the flash behind it.

#include "virtual_board/server/answers.h"
#include "virtual_board/server/asked.h"
#include "virtual_board/server/descriptions.h"
#include "virtual_board/server/snapshot.h"
#include "virtual_board/server/target.h"

namespace vboard::server {

Response getPanel(Services &services, const Asked &asked) {
    const Board board(boardFolder(services, asked));
    const drawing::Readings readings = readingsOf(board);
    const std::string &model = readings.at("model");
    return jsonResponse({{"model", model},
                         {"description", descriptionOf(model)},
                         {"parts", partsJson(drawing::partsOf(readings))}});
}

Response drawPanel(Services &services, const Asked &asked) {
    const Board board(boardFolder(services, asked));
    const drawing::Readings readings = readingsOf(board);
    const auto styled = valueOf(asked.query, "style") == "no" ? drawing::Styled::Elsewhere
                                                              : drawing::Styled::Within;
    return {kOk, "image/svg+xml", drawing::svgOf(readings, drawing::partsOf(readings), styled), ""};
}

Response getFlash(Services &services, const Asked &asked) {
    const Board board(boardFolder(services, asked));
    const List<VBoardPartition> partitions(
        [&](VBoardPartition **list, uint32_t *count, VBoardError *error) {
            return vboardFlash(board, list, count, error);
        });
    Json array = Json::array();
    for (const VBoardPartition &partition : partitions)
        array.push_back(Json::parse(partition.json));
    return jsonResponse({{"partitions", array}});
}

} // namespace vboard::server
