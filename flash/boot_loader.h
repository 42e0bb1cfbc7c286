#pragma once
// The boot loader's upgrade.

#include <cstdint>

extern "C" {
/** Judges a boot-loader upgrade file in memory: 0, or -1 after a message that tells what is wrong.
 */
int32_t bsp_bios_file_check(const uint8_t *data, uint32_t size);
}

namespace bsp {

/** Replaces the boot loader by an upgrade file. */
int32_t upgradeBootLoader(const char *file);

} // namespace bsp
