#pragma once
// The operating-system images in flash.

#include "bsp.h"
#include "support/board_map.h"

#include <cstdint>

namespace bsp {

/** The partition of a bank: 0, or any other value for the second. */
constexpr const char *bankDevice(int32_t bank) {
    return bank == BSP_OS_BANK_0 ? kOsBank0Partition : kOsBank1Partition;
}

} // namespace bsp

extern "C" {
/** Writes an image file into a bank's partition, and a copy of its header block where it is found
 * without knowing the image's length.
 */
int32_t bsp_os_image_write(const char *device, const char *file);

/** Copies an image file's header block, its last 512 bytes, to the start of a file. */
int32_t bsp_os_file_header_to_file(const char *imageFile, const char *headerFile);

/** Reads the first 512 bytes of a header file; the buffer is untouched when they are not there. */
int32_t bsp_os_header_file_to_buffer(const char *headerFile, uint8_t *buffer);
}
