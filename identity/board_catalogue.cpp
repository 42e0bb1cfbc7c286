#include "identity/board_catalogue.h"

namespace {

using bsp::BoardModel;
using bsp::CageLines;
using bsp::CageRange;
using bsp::ChassisClass;
using bsp::Fans;

constexpr bool kClock = true;
constexpr bool kNoClock = false;

// Count, own tachometers, presence: register and bit.
constexpr Fans kFourFans = {4, true, 30, 0};
constexpr Fans kTwoFans = {2, false, 31, 8};
constexpr Fans kUnseenFans = {2, true, 0, 0};

// First port, ports, bus, first channel.
constexpr CageRange kNoCages = {0, 0, 0, 0};
constexpr CageRange k24FrontCages = {1, 24, 1, 8};
constexpr CageRange k48FrontCages = {1, 48, 1, 8};
constexpr CageRange kCagesAt25 = {25, 6, 1, 0};
constexpr CageRange kCagesAt33 = {33, 6, 1, 0};
constexpr CageRange kCagesAt49 = {49, 6, 1, 0};
constexpr CageRange kUnknownCages = {49, 6, 0, 2};

// Front ports, first uplink, bit of its status lines, and which ports count as uplinks: on boards
// whose only cages are uplinks all do. The boards with 24 front cages have the uplinks' receive
// loss and fault on the very bits of presence and transmitter disable.
constexpr CageLines kLinesAt25 = {0, 25, 0, 0, UINT32_MAX};
constexpr CageLines kLinesAt49 = {0, 49, 0, 0, UINT32_MAX};
constexpr CageLines kFibre24Lines = {24, 33, 6, 33, 38};
constexpr CageLines kFibre48Lines = {48, 49, 0, 49, UINT32_MAX};

constexpr BoardModel kModels[] = {
    {0x0109, ChassisClass::Other, 0, kNoClock, kUnseenFans, kNoCages, kCagesAt25, kLinesAt25},
    {0x0309, ChassisClass::FourFan, 0, kClock, kFourFans, kNoCages, kCagesAt25, kLinesAt25},
    {0x0409, ChassisClass::FourFan, 0, kNoClock, kFourFans, kNoCages, kCagesAt49, kLinesAt49},
    {0x0509, ChassisClass::FourFan, 0, kClock, kFourFans, k24FrontCages, kCagesAt33, kFibre24Lines},
    {0x0609, ChassisClass::FourFan, 0, kClock, kFourFans, k48FrontCages, kCagesAt49, kFibre48Lines},
    {0x0709, ChassisClass::TwoFan, 48, kClock, kTwoFans, kNoCages, kCagesAt49, kLinesAt49},
    {0x0809, ChassisClass::TwoFan, 24, kClock, kTwoFans, kNoCages, kCagesAt25, kLinesAt25},
    {0x8209, ChassisClass::Other, 0, kNoClock, kUnseenFans, kNoCages, kCagesAt25, kLinesAt25},
    {0x8309, ChassisClass::FourFan, 0, kNoClock, kFourFans, kNoCages, kCagesAt49, kLinesAt49},
    {0x8409, ChassisClass::FourFan, 0, kClock, kFourFans, kNoCages, kCagesAt25, kLinesAt25},
    {0x8509, ChassisClass::FourFan, 0, kClock, kFourFans, k48FrontCages, kCagesAt49, kFibre48Lines},
    {0x8609, ChassisClass::FourFan, 0, kClock, kFourFans, k24FrontCages, kCagesAt33, kFibre24Lines},
    {0x8709, ChassisClass::TwoFan, 24, kClock, kTwoFans, kNoCages, kCagesAt25, kLinesAt25},
    {0x8809, ChassisClass::TwoFan, 48, kClock, kTwoFans, kNoCages, kCagesAt49, kLinesAt49},
};

// No id is refused: a board that the table does not know is driven like this.
constexpr BoardModel kUnknownModel = {
    0, ChassisClass::Other, 0, kNoClock, kUnseenFans, kNoCages, kUnknownCages, kLinesAt49};

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
