// Serial EEPROMs: transfers in the chunks that the chips accept, and where each EEPROM sits.

#include "bsp.h"
#include "support/board_map.h"
#include "support/message.h"

#include <algorithm>
#include <unistd.h>

namespace {

constexpr uint32_t kBlockSize = BSP_EEPROM_BLOCK_SIZE;
constexpr uint32_t kPageSize = BSP_EEPROM_PAGE_SIZE; // a write wraps at its end
constexpr useconds_t kChunkPause = 1000;

constexpr bool isSupply(uint32_t supply) {
    return supply >= 1 && supply <= BSP_FIXED_SUPPLIES;
}
constexpr uint32_t supplyChannel(uint32_t supply) {
    return bsp::kSupplyEeprom.channel + supply - 1;
}

bool isNull(const uint8_t *buf, bsp::CallSite site = bsp::CallSite::here()) {
    if (buf == nullptr)
        bsp::reportError(site, "ptr buff is NULL.\n");
    return buf == nullptr;
}

/** Bytes from an offset to the next multiple of size. */
constexpr uint32_t bytesToBoundary(uint32_t offset, uint32_t size) {
    return size - offset % size;
}

/** One transfer that does not cross a boundary; its length, or the failure's status. */
template <typename Byte, typename Transfer>
int32_t transferChunk(uint32_t boundary, uint32_t offset, Byte *buf, uint32_t remaining,
                      Transfer transfer) {
    if (uint64_t{offset} + remaining > BSP_EEPROM_SIZE)
        return BSP_E_EEPROM_SPAN;
    const auto chunk =
        static_cast<int32_t>(std::min({remaining, kPageSize, bytesToBoundary(offset, boundary)}));
    const int32_t status = transfer(offset / kBlockSize, offset % kBlockSize, buf, chunk);
    return status == BSP_OK ? chunk : BSP_E_FAILED;
}

template <typename Byte, typename Transfer>
int32_t transferInChunks(uint32_t boundary, uint32_t offset, Byte *buf, uint32_t len,
                         Transfer transfer) {
    while (len > 0) {
        const int32_t chunk = transferChunk(boundary, offset, buf, len, transfer);
        if (chunk < 1)
            return chunk;
        const auto done = static_cast<uint32_t>(chunk);
        buf += done;
        offset += done;
        len -= done;
        usleep(kChunkPause);
    }
    return BSP_OK;
}

} // namespace

int32_t bspI2cEepromRead(uint32_t bus, uint32_t channel, uint32_t devAddr, uint32_t offset,
                         uint8_t *buf, uint32_t len) {
    if (isNull(buf))
        return BSP_E_NULL;
    return transferInChunks(kBlockSize, offset, buf, len,
                            [=](uint32_t block, uint32_t reg, uint8_t *chunk, int32_t chunkLen) {
                                return bspI2cRead(bus, channel, devAddr + block, reg, 1, chunk,
                                                  chunkLen);
                            });
}

int32_t bspI2cEepromWrite(uint32_t bus, uint32_t channel, uint32_t devAddr, uint32_t offset,
                          const uint8_t *buf, uint32_t len) {
    if (isNull(buf))
        return BSP_E_NULL;
    return transferInChunks(
        kPageSize, offset, buf, len,
        [=](uint32_t block, uint32_t reg, const uint8_t *chunk, int32_t chunkLen) {
            return bspI2cWrite(bus, channel, devAddr + block, reg, 1, chunk, chunkLen);
        });
}

int32_t bspLocalEepromRead(uint32_t offset, uint8_t *buf, uint32_t len) {
    if (isNull(buf))
        return BSP_E_NULL;
    return bspI2cEepromRead(bsp::kBoardEeprom.bus, bsp::kBoardEeprom.channel,
                            bsp::kBoardEeprom.device, offset, buf, len);
}

int32_t bspLocalEepromWrite(uint32_t offset, const uint8_t *buf, uint32_t len) {
    if (isNull(buf))
        return BSP_E_NULL;
    return bspI2cEepromWrite(bsp::kBoardEeprom.bus, bsp::kBoardEeprom.channel,
                             bsp::kBoardEeprom.device, offset, buf, len);
}

int32_t bspPowerEepromRead(uint32_t supply, uint32_t offset, uint8_t *buf, uint32_t len) {
    if (isNull(buf))
        return BSP_E_NULL;
    if (!isSupply(supply))
        return BSP_E_INVALID;
    return bspI2cEepromRead(bsp::kSupplyEeprom.bus, supplyChannel(supply),
                            bsp::kSupplyEeprom.device, offset, buf, len);
}

int32_t bspPowerEepromWrite(uint32_t supply, uint32_t offset, const uint8_t *buf, uint32_t len) {
    if (isNull(buf))
        return BSP_E_NULL;
    if (!isSupply(supply))
        return BSP_E_INVALID;
    return bspI2cEepromWrite(bsp::kSupplyEeprom.bus, supplyChannel(supply),
                             bsp::kSupplyEeprom.device, offset, buf, len);
}
