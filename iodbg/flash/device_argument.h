#pragma once
// How the device of a flash partition is named on the command line.

#include "iodbg/core/command.h"

#include <string>

namespace iodbg {

constexpr char kFlashDeviceHelp[] = "mtd0|mtd4|mtd12|mtd14, or the path of a device";

/** Stores the path of a partition's device. */
Parser flashDevice(std::string &path);

} // namespace iodbg
