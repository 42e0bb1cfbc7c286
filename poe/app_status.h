#pragma once
// Whether the controller's application is usable, as the last firmware upgrade left it: one byte in
// a file that lives as long as the boot. A failure is reported under the caller's name.

#include "support/message.h"

#include <cstdint>

namespace bsp {

/** Stores a value of ::BspPoeAppStatus; BSP_E_POE_NULL, BSP_E_POE_OPEN. */
int32_t poeAppStatusGet(uint32_t *out, CallSite site = CallSite::here());

/** Keeps the low byte of a value; BSP_E_POE_OPEN. */
int32_t poeAppStatusSet(uint32_t value, CallSite site = CallSite::here());

} // namespace bsp
