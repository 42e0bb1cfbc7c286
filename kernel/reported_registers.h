#pragma once
// CPLD registers whose failures are printed under the name of the function that uses them.

#include "bsp.h"
#include "support/message.h"

namespace bsp {

/** As bspCpldGet(). */
int32_t readRegister(uint32_t reg, uint16_t *value, CallSite site = CallSite::here());

/** As bspCpldSet(). */
int32_t writeRegister(uint32_t reg, uint32_t value, CallSite site = CallSite::here());

} // namespace bsp
