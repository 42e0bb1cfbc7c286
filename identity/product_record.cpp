// The product information records in the EEPROMs of the board and of its power supplies.

#include "bsp.h"
#include "support/byte_order.h"
#include "support/owned.h"

#include <cstddef>
#include <cstring>

namespace {

static_assert(sizeof(BspDevinfo) == 128 && offsetof(BspDevinfo, crc) == 124);
static_assert(sizeof(BspSupplyRecord) == 80 && offsetof(BspSupplyRecord, serial) == 40);

uint8_t *bytesOf(void *record) {
    return static_cast<uint8_t *>(record);
}
const uint8_t *bytesOf(const void *record) {
    return static_cast<const uint8_t *>(record);
}

bool hasMagic(const BspDevinfo &record) {
    return std::memcmp(record.magic, BSP_DEVINFO_MAGIC, sizeof(record.magic)) == 0;
}

uint32_t crcOf(const BspDevinfo &record) {
    return bsp_crc32_cal(0, bytesOf(&record), offsetof(BspDevinfo, crc));
}

} // namespace

int32_t bspLocalPieGet(BspDevinfo *record) {
    if (record == nullptr)
        return BSP_E_NULL;
    const auto stored = bsp::allocateRecord<BspDevinfo>();
    if (stored == nullptr)
        return BSP_E_NO_MEMORY;

    if (const int32_t status =
            bspLocalEepromRead(BSP_DEVINFO_OFFSET, bytesOf(stored.get()), sizeof(*stored));
        status != BSP_OK)
        return status;
    if (!hasMagic(*stored))
        return BSP_E_NO_RECORD;
    if (bsp::loadBe32(stored->crc) != crcOf(*stored))
        return BSP_E_INVALID;
    *record = *stored;
    return BSP_OK;
}

int32_t bspLocalPieSet(BspDevinfo *record) {
    if (record == nullptr)
        return BSP_E_NULL;
    if (!hasMagic(*record))
        return BSP_E_NO_RECORD;
    bsp::storeBe32(record->crc, crcOf(*record));
    return bspLocalEepromWrite(BSP_DEVINFO_OFFSET, bytesOf(record), sizeof(*record));
}

int32_t bspPowerPieGet(uint32_t supply, BspSupplyRecord *record) {
    if (record == nullptr)
        return BSP_E_NULL;
    const auto stored = bsp::allocateRecord<BspSupplyRecord>();
    if (stored == nullptr)
        return BSP_E_NO_MEMORY;

    if (const int32_t status = bspPowerEepromRead(supply, BSP_SUPPLY_RECORD_OFFSET,
                                                  bytesOf(stored.get()), sizeof(*stored));
        status != BSP_OK)
        return status;
    *record = *stored;
    return BSP_OK;
}

int32_t bspPowerPieSet(uint32_t supply, const BspSupplyRecord *record) {
    if (record == nullptr)
        return BSP_E_NULL;
    return bspPowerEepromWrite(supply, BSP_SUPPLY_RECORD_OFFSET, bytesOf(record), sizeof(*record));
}
