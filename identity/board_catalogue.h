#pragma once
// What the library knows about each model of the family: one row per device id.

#include <cstdint>

namespace bsp {

/** Chassis family of a model; fans, power supplies and their records follow from it. */
enum class ChassisClass : uint8_t {
    FourFan, // four fans, two supplies on CPLD register 30
    TwoFan,  // two fans, two supplies with EEPROM and PMBus, PoE controller
    Other,   // two fans, supplies counted in the board's record
};

struct BoardModel {
    uint32_t devId;
    ChassisClass chassis;
    uint8_t poePorts; // 0: no PoE controller
};

/** The row of a device id; the row for unknown ids when it is in none. All 32 bits count. */
const BoardModel &boardModel(uint32_t devId);

} // namespace bsp

extern "C" {
/** 1 for the ids of the four-fan models, else 0. */
int32_t bspDevIsFourFanModel(uint32_t devId);
/** 1 for the ids of the two-fan models, else 0. */
int32_t bspDevIsTwoFanModel(uint32_t devId);
}
