#pragma once
// What the catalogue of controllers names of this driver; of its first table bsp.h tells.

#include "poe/driver_extension.h"

/** The second table of bspPoeRtl8239Driver. */
extern const BspPoeDriverExtension bspPoeRtl8239DriverExtension;
