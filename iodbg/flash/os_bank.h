#pragma once
// The banks of operating-system images.

#include "iodbg/core/format.h"

#include <cstdint>
#include <string>

namespace iodbg {

/** "/dev/mtd12" */
std::string bankDevice(uint32_t bank);

/**
 * Reads a bank's header block; the library's status. Throws where others could put their own header
 * in its place, on its way through the shared folder.
 */
int32_t readOsHeader(uint32_t bank, Bytes &header);
/** The same, and again when it is not the expected one: another program's may have come instead. */
int32_t readOsHeader(uint32_t bank, const Bytes &expected, Bytes &header);

} // namespace iodbg
