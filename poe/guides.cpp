#include "poe/guide.h"
#include "poe/rtl8239/guide.h"

namespace {

constexpr bsp::PoeGuideRow kGuides[] = {{bsp::PoeChip::Rtl8239, bsp::rtl8239::kGuide}};

} // namespace

constexpr std::span<const bsp::PoeGuideRow> bsp::kPoeGuides = kGuides;
