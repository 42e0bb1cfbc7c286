// The panel: its parts, the drawing of them, and the flash behind it.

#include "virtual_board/calls/panel.h"
#include "virtual_board/server/answers.h"
#include "virtual_board/server/asked.h"
#include "virtual_board/server/target.h"

namespace vboard::server {

Response getPanel(Services &services, const Asked &asked) {
    const Board board(boardFolder(services, asked));
    return jsonResponse(panelJson(panelOf(board)));
}

Response drawPanel(Services &services, const Asked &asked) {
    const Board board(boardFolder(services, asked));
    const Panel panel = panelOf(board);
    const auto styled = valueOf(asked.query, "style") == "no" ? drawing::Styled::Elsewhere
                                                              : drawing::Styled::Within;
    return {kOk, "image/svg+xml", drawing::svgOf(panel.readings, panel.parts, styled), ""};
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
