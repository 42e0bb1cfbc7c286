#include "identity/board_catalogue.h"

namespace {

using bsp::BoardModel;
using bsp::ChassisClass;

constexpr BoardModel kModels[] = {
    {0x0109, ChassisClass::Other, 0},   //
    {0x0309, ChassisClass::FourFan, 0}, //
    {0x0409, ChassisClass::FourFan, 0}, //
    {0x0509, ChassisClass::FourFan, 0}, //
    {0x0609, ChassisClass::FourFan, 0}, //
    {0x0709, ChassisClass::TwoFan, 48}, //
    {0x0809, ChassisClass::TwoFan, 24}, //
    {0x8209, ChassisClass::Other, 0},   //
    {0x8309, ChassisClass::FourFan, 0}, //
    {0x8409, ChassisClass::FourFan, 0}, //
    {0x8509, ChassisClass::FourFan, 0}, //
    {0x8609, ChassisClass::FourFan, 0}, //
    {0x8709, ChassisClass::TwoFan, 24}, //
    {0x8809, ChassisClass::TwoFan, 48}, //
};

// No id is refused: a board that the table does not know is driven like this.
constexpr BoardModel kUnknownModel = {0, ChassisClass::Other, 0};

} // namespace

const BoardModel &bsp::boardModel(uint32_t devId) {
    for (const BoardModel &model : kModels) {
        if (model.devId == devId)
            return model;
    }
    return kUnknownModel;
}

int32_t bspDevIsFourFanModel(uint32_t devId) {
    return bsp::boardModel(devId).chassis == ChassisClass::FourFan ? 1 : 0;
}

int32_t bspDevIsTwoFanModel(uint32_t devId) {
    return bsp::boardModel(devId).chassis == ChassisClass::TwoFan ? 1 : 0;
}
