#pragma once
// What those who look on know of the RTL8239.

#include "poe/guide.h"

namespace bsp::rtl8239 {

extern const PoeGuide kGuide;

} // namespace bsp::rtl8239
