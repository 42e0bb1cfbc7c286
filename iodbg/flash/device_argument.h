#pragma once
// How the device of a flash partition is named on the command line.

#include "iodbg/core/command.h"

#include <string>

namespace iodbg {

std::string flashDeviceHelp();

/** Stores the path of a partition's device. */
Parser flashDevice(std::string &path);

} // namespace iodbg
