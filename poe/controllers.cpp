#include "poe/controllers.h"

#include "poe/rtl8239/driver.h"

namespace {

constexpr bsp::PoeController kControllers[] = {
    {bsp::PoeChip::Rtl8239, {bspPoeRtl8239Driver, &bspPoeRtl8239DriverExtension}},
};

} // namespace

constexpr std::span<const bsp::PoeController> bsp::kPoeControllers = kControllers;
