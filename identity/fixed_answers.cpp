// Questions of chassis with slots and cards, answered for a box that is a single fixed unit.

#include "bsp.h"

namespace {

int32_t answer(uint32_t *output, uint32_t value) {
    if (output == nullptr)
        return BSP_E_NULL;
    *output = value;
    return BSP_OK;
}

} // namespace

int32_t ioProductIdGet(uint32_t, uint32_t *productId) {
    return answer(productId, BSP_PRODUCT_ID);
}
int32_t ioSlotIdGet(uint32_t, uint32_t *slotId) {
    return answer(slotId, BSP_SLOT_ID);
}
int32_t ioCardIdGet(uint32_t, uint32_t *cardId) {
    return answer(cardId, BSP_CARD_ID);
}
int32_t ioFrameTypeGet(uint32_t, uint32_t *type) {
    return answer(type, BSP_FRAME_TYPE);
}
int32_t ioSlotTypeGet(uint32_t, uint32_t *type) {
    return answer(type, BSP_SLOT_TYPE);
}
int32_t ioCardTypeGet(uint32_t, uint32_t *type) {
    return answer(type, BSP_CARD_TYPE);
}

int32_t bspBoardSlotIdGet(uint32_t *slotId) {
    return answer(slotId, BSP_BOARD_SLOT_ID);
}

int32_t bspBoardDescGet(char *) {
    return BSP_E_NOT_SUPPORTED;
}
int32_t bspBoardDescSet(const char *) {
    return BSP_E_NOT_SUPPORTED;
}
int32_t bspBoardPowerInfoGet(uint32_t, void *) {
    return BSP_E_NOT_SUPPORTED;
}
