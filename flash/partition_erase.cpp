#include "bsp.h"
#include "flash/partition.h"

#include <cstdio>

int32_t bsp_mtd_erase(const char *device) {
    if (device == nullptr)
        return BSP_E_NULL;
    const bsp::Descriptor partition(bsp::openSynchronous(device, O_RDWR));
    if (!partition.isOpen())
        return BSP_E_OPEN;
    bsp::FlashGeometry geometry = {};
    if (bsp::queryGeometry(partition.get(), geometry) < 0) {
        bsp::reportNoGeometry(device, partition.get(), BSP_E_ERASE);
        return BSP_E_ERASE;
    }
    constexpr uint32_t kStart = 0;
    if (const int result = bsp::eraseRange(partition.get(), kStart, geometry.erasesize);
        result < 0) {
        std::printf("erase %s error, addr %d, erasesize %#x, ret = %d\n", device,
                    static_cast<int>(kStart), geometry.erasesize, result);
        return BSP_E_ERASE;
    }
    return BSP_OK;
}
