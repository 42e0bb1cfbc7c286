#pragma once
// The RTL8239: a microcontroller with a loader and an application. A frame that is written is
// answered by the bytes that the following reads return.

#include "virtual_board/devices/poe_kind.h"

namespace vb {

extern const PoeKind kRtl8239Kind;

} // namespace vb
