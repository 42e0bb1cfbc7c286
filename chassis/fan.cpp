// Fans: the speed of each, whether it is there, and the level that all of them share.

#include "bsp.h"
#include "identity/board_catalogue.h"
#include "identity/reported_steps.h"
#include "support/board_map.h"
#include "support/register_bits.h"

namespace {

using bsp::kFanLevel;
using bsp::kFanSpeed;

constexpr uint32_t kFansPerPair = 2; // share a register, and a presence line

/** A fan's place: its pair, and which of the two it is. */
struct FanPlace {
    uint32_t pair, fanOfPair;
};

constexpr FanPlace placeOf(uint32_t fan) {
    return {(fan - 1) / kFansPerPair, (fan - 1) % kFansPerPair};
}

/** The fans of the board, if it has one of that number. */
int32_t findFan(uint32_t fan, const bsp::Fans **fans, bsp::CallSite site = bsp::CallSite::here()) {
    uint32_t devId = 0;
    if (const int32_t status = bsp::readDeviceId(&devId, site); status != BSP_OK)
        return status;
    *fans = &bsp::boardModel(devId).fans;
    return fan >= 1 && fan <= (*fans)->count ? BSP_OK : BSP_E_INVALID;
}

} // namespace

int32_t bspFanSpeedGet(uint32_t fan, uint32_t *rpm) {
    if (rpm == nullptr)
        return BSP_E_NULL;
    const bsp::Fans *fans = nullptr;
    if (const int32_t status = findFan(fan, &fans); status != BSP_OK)
        return status;
    const FanPlace place = placeOf(fan);
    uint16_t reg = 0;
    if (const int32_t status = bspCpldGet(kFanSpeed.reg + place.pair, &reg); status != BSP_OK)
        return status;
    const uint32_t before = fans->haveOwnTachometers ? place.fanOfPair * kFanSpeed.width : 0;
    *rpm = bsp::fieldOf(reg, {kFanSpeed.reg, kFanSpeed.lowestBit + before, kFanSpeed.width}) *
           BSP_FAN_STEP_RPM;
    return BSP_OK;
}

int32_t bspFanSpeedSet(uint32_t, int32_t level) {
    if (level < BSP_FAN_LEVEL_MIN || level > BSP_FAN_LEVEL_MAX)
        return BSP_E_INVALID;
    uint16_t reg = 0;
    if (const int32_t status = bspCpldGet(kFanLevel.reg, &reg); status != BSP_OK)
        return status;
    const auto code = static_cast<uint32_t>(level - BSP_FAN_LEVEL_MIN);
    return bspCpldSet(kFanLevel.reg,
                      bsp::withField(reg, kFanLevel.lowestBit, kFanLevel.width, code));
}

int32_t bspFanPresentGet(int32_t fan, uint32_t *out) {
    if (out == nullptr)
        return BSP_E_NULL;
    const auto number = static_cast<uint32_t>(fan); // a negative one is above every count
    const bsp::Fans *fans = nullptr;
    if (const int32_t status = findFan(number, &fans); status != BSP_OK)
        return status;
    uint16_t reg = 0;
    if (fans->presenceRegister != 0) {
        if (const int32_t status = bspCpldGet(fans->presenceRegister, &reg); status != BSP_OK)
            return status;
    }
    *out = bsp::hasBit(reg, fans->presenceBit + placeOf(number).pair) ? BSP_FAN_PRESENT
                                                                      : BSP_FAN_MISSING;
    return BSP_OK;
}
