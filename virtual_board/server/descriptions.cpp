#include "virtual_board/server/descriptions.h"

#include "virtual_board/calls/board.h"

namespace vboard::server {

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

} // namespace vboard::server
