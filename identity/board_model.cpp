// What the catalogue says of a device id.

#include "identity/board_catalogue.h"

const bsp::BoardModel &bsp::boardModel(uint32_t devId) {
    const BoardModel *row = kBoardModels;
    while (row->devId != devId && row->devId != kNoDevId)
        ++row;
    return *row;
}

int32_t bspDevIsFourFanModel(uint32_t devId) {
    return bsp::boardModel(devId).fans.count == 4 ? 1 : 0;
}

// Other models have two fans, too, of which the CPLD sees nothing.
int32_t bspDevIsTwoFanModel(uint32_t devId) {
    const bsp::Fans &fans = bsp::boardModel(devId).fans;
    return fans.count == 2 && fans.presenceRegister != 0 ? 1 : 0;
}
