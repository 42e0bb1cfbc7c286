// One entry for every image that the board keeps.

#include "bsp.h"
#include "flash/boot_loader.h"
#include "flash/cpld_upgrade.h"
#include "flash/os_image.h"

int32_t bspImageUpgrade(int32_t kind, const char *file, int32_t bank) {
    switch (kind) {
    case BSP_IMAGE_OS:
        return bsp_os_image_write(bsp::bankDevice(bank), file);
    case BSP_IMAGE_BOOT:
        return bsp::upgradeBootLoader(file);
    case BSP_IMAGE_CPLD:
        return bsp::upgradeCpld(file);
    default:
        return BSP_E_NOT_SUPPORTED;
    }
}
