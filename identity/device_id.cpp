// The device id, asked of the CPLD once per boot and then kept in a file for every process.

#include "bsp.h"
#include "support/board_map.h"
#include "support/kept_file.h"
#include "support/owned.h"
#include "support/register_bits.h"

#include <unistd.h>

namespace {
constexpr char kCachePath[] = "/tmp/bsp/devId";
} // namespace

int32_t bspDevIdGet(uint32_t *devId) {
    const bsp::Descriptor cache(bsp::openKeptFile(kCachePath));
    if (!cache.isOpen())
        return BSP_E_OPEN;

    uint32_t cachedId = 0;
    const bool isCached = read(cache.get(), &cachedId, sizeof(cachedId)) == sizeof(cachedId);
    if (isCached && cachedId != 0) {
        *devId = cachedId;
        return BSP_OK;
    }

    uint16_t registerId = 0;
    if (const int32_t status = bspCpldGet(bsp::kCpldDeviceId, &registerId); status != BSP_OK)
        return status;
    const uint32_t id = registerId;
    lseek(cache.get(), 0, SEEK_SET);
    // A cache that could not be written costs the next caller a CPLD read, nothing more.
    [[maybe_unused]] const ssize_t written = write(cache.get(), &id, sizeof(id));
    *devId = id;
    return BSP_OK;
}

int32_t bspDevSerialVerGet(uint32_t *ver) {
    if (ver == nullptr)
        return BSP_E_NULL;
    uint16_t id = 0;
    if (const int32_t status = bspCpldGet(bsp::kCpldDeviceId, &id); status != BSP_OK)
        return status;
    *ver = bsp::fieldOf(id, bsp::kDeviceSerialVersion);
    return BSP_OK;
}
