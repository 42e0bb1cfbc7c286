// One record layout for the board and its power supplies, selected by an index.

#include "bsp.h"
#include "identity/board_catalogue.h"
#include "identity/reported_steps.h"
#include "language/formats/product_record.h"

namespace {

constexpr bool isSupplyIndex(uint32_t index) {
    return (index & 0xF0) == BSP_DEVINFO_SUPPLY_1;
}

constexpr uint32_t supplyOfIndex(uint32_t index) {
    return index - BSP_DEVINFO_SUPPLY_1 + 1;
}

/** BSP_OK for the index of a supply, on the models whose supplies have records. */
int32_t checkSupplyIndex(uint32_t index, bsp::CallSite site = bsp::CallSite::here()) {
    if (!isSupplyIndex(index))
        return BSP_E_NOT_SUPPORTED;
    uint32_t devId = 0;
    if (const int32_t status = bsp::readDeviceId(&devId, site); status != BSP_OK)
        return status;
    return bsp::boardModel(devId).supplies.haveBus ? BSP_OK : BSP_E_NOT_SUPPORTED;
}

template <typename Record>
uint8_t *bytesOf(Record &record) {
    return reinterpret_cast<uint8_t *>(&record);
}

} // namespace

int32_t bspDevinfoGet(uint32_t index, BspDevinfo *record) {
    if (record == nullptr)
        return BSP_E_NULL;
    if (index == BSP_DEVINFO_BOARD)
        return bspLocalPieGet(record);
    if (const int32_t status = checkSupplyIndex(index); status != BSP_OK)
        return status;
    BspSupplyRecord supplyRecord{};
    if (const int32_t status = bspPowerPieGet(supplyOfIndex(index), &supplyRecord);
        status != BSP_OK)
        return status;
    formats::showSupplyRecord(bytesOf(supplyRecord), bytesOf(*record));
    return BSP_OK;
}

int32_t bspDevinfoSet(uint32_t index, BspDevinfo *record) {
    if (record == nullptr)
        return BSP_E_NULL;
    if (index == BSP_DEVINFO_BOARD)
        return bspLocalPieSet(record);
    if (const int32_t status = checkSupplyIndex(index); status != BSP_OK)
        return status;
    // What the board's layout has no place for is cleared in the supply.
    BspSupplyRecord supplyRecord{};
    formats::takeSupplyRecord(bytesOf(*record), bytesOf(supplyRecord));
    return bspPowerPieSet(supplyOfIndex(index), &supplyRecord);
}

int32_t bspMfgDateGet(char *) {
    return BSP_OK;
}
int32_t bspMfgDateSet(const char *) {
    return BSP_OK;
}
