#pragma once
// The quill's tables, which the catalogues of this build name.

#include "poe/driver_extension.h"
#include "poe/guide.h"

namespace quill {

constexpr auto kChip = bsp::PoeChip{0x80};

extern const BspPoeDriver kDriver;
extern const BspPoeDriverExtension kExtension;
extern const bsp::PoeGuide kGuide;

constexpr unsigned kResetSeconds = 1; // in reset, and after it

} // namespace quill
