// The product information records in the EEPROMs of the board and of its power supplies.

#include "language/formats/product_record.h"
#include "bsp.h"
#include "support/owned.h"

#include <cstddef>

namespace {

static_assert(sizeof(BspDevinfo) == formats::kBoardRecordSize &&
              offsetof(BspDevinfo, crc) == formats::kRecordCrc.offset);
static_assert(sizeof(BspSupplyRecord) == formats::kSupplyRecordSize);

uint8_t *bytesOf(void *record) {
    return static_cast<uint8_t *>(record);
}
const uint8_t *bytesOf(const void *record) {
    return static_cast<const uint8_t *>(record);
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
    const uint8_t *bytes = bytesOf(stored.get());
    if (!formats::hasRecordMagic(bytes))
        return BSP_E_NO_RECORD;
    if (formats::storedRecordCrc(bytes) != formats::computedRecordCrc(bytes))
        return BSP_E_INVALID;
    *record = *stored;
    return BSP_OK;
}

int32_t bspLocalPieSet(BspDevinfo *record) {
    if (record == nullptr)
        return BSP_E_NULL;
    if (!formats::hasRecordMagic(bytesOf(record)))
        return BSP_E_NO_RECORD;
    formats::renewRecordCrc(bytesOf(record));
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
