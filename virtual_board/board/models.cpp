#include "virtual_board/board/models.h"

namespace vb {

const Model kModels[kModelCount] = {
    {0x0109, "24 ports, 6 SFP uplinks", false, 0, SupplyLines::None, 24, 0, 6, 0, false},
    {0x0309, "24 ports, 6 SFP uplinks, 4 fans", false, 0, SupplyLines::FourFan, 24, 0, 6, 4, true},
    {0x0409, "48 ports, 6 SFP uplinks, 4 fans", false, 0, SupplyLines::FourFan, 48, 0, 6, 4, false},
    {0x0509, "24 SFP ports, 8 copper ports, 6 SFP uplinks, 4 fans", false, 0, SupplyLines::FourFan,
     8, 24, 6, 4, true},
    {0x0609, "48 SFP ports, 6 SFP uplinks, 4 fans", false, 0, SupplyLines::FourFan, 0, 48, 6, 4,
     true},
    {0x0709, "48 PoE ports, 6 SFP uplinks, 2 fans", true, 48, SupplyLines::TwoFan, 48, 0, 6, 2,
     true},
    {0x0809, "24 PoE ports, 6 SFP uplinks, 2 fans", true, 24, SupplyLines::TwoFan, 24, 0, 6, 2,
     true},
    {0x8209, "24 ports, 6 SFP uplinks, second variant", false, 0, SupplyLines::None, 24, 0, 6, 0,
     false},
    {0x8309, "48 ports, 6 SFP uplinks, 4 fans, second variant", false, 0, SupplyLines::FourFan, 48,
     0, 6, 4, false},
    {0x8409, "24 ports, 6 SFP uplinks, 4 fans, second variant", false, 0, SupplyLines::FourFan, 24,
     0, 6, 4, true},
    {0x8509, "48 SFP ports, 6 SFP uplinks, 4 fans, second variant", false, 0, SupplyLines::FourFan,
     0, 48, 6, 4, true},
    {0x8609, "24 SFP ports, 8 copper ports, 6 SFP uplinks, 4 fans, second variant", false, 0,
     SupplyLines::FourFan, 8, 24, 6, 4, true},
    {0x8709, "24 PoE ports, 6 SFP uplinks, 2 fans, second variant", true, 24, SupplyLines::TwoFan,
     24, 0, 6, 2, true},
    {0x8809, "48 PoE ports, 6 SFP uplinks, 2 fans, second variant", true, 48, SupplyLines::TwoFan,
     48, 0, 6, 2, true},
};

const Model *findModel(uint32_t devId) {
    for (const Model &model : kModels) {
        if (model.devId == devId)
            return &model;
    }
    return nullptr;
}

} // namespace vb
