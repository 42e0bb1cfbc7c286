// The catalogue of controllers.

#include "virtual_board/devices/poe_kind.h"
#include "virtual_board/devices/rtl8239/kind.h"

namespace vb {

namespace {

constexpr PoeKindRow kRows[] = {{PoeChip::Rtl8239, kRtl8239Kind}};

} // namespace

constexpr std::span<const PoeKindRow> kPoeKinds = kRows;

} // namespace vb
