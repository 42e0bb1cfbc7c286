#include "virtual_board/board/models.h"

namespace vb {

const Model *findModel(uint32_t devId) {
    for (const Model &model : kModels) {
        if (model.devId == devId)
            return &model;
    }
    return nullptr;
}

} // namespace vb
