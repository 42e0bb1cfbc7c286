// One record layout for the board and its power supplies, selected by an index.

#include "bsp.h"
#include "identity/board_catalogue.h"
#include "identity/reported_steps.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr bool isSupplyIndex(uint32_t index) {
    return (index & 0xF0) == BSP_DEVINFO_SUPPLY_1;
}

constexpr uint32_t supplyOfIndex(uint32_t index) {
    return index - BSP_DEVINFO_SUPPLY_1 + 1;
}

/** BSP_OK on the models whose supplies have records. */
int32_t checkModelHasSupplyRecords(bsp::CallSite site = bsp::CallSite::here()) {
    uint32_t devId = 0;
    if (const int32_t status = bsp::readDeviceId(&devId, site); status != BSP_OK)
        return status;
    return bspDevIsTwoFanModel(devId) != 0 ? BSP_OK : BSP_E_NOT_SUPPORTED;
}

/** Copies between two fields of the same meaning, as much as both hold. */
template <typename To, typename From>
void copyField(To &to, const From &from) {
    std::memcpy(to, from, std::min(sizeof(to), sizeof(from)));
}

/** Copies what the two record layouts have in common. */
template <typename To, typename From>
void copySharedFields(To &to, const From &from) {
    copyField(to.productData1, from.productData1);
    copyField(to.productData2, from.productData2);
    copyField(to.productData3, from.productData3);
    copyField(to.serial, from.serial);
}

} // namespace

int32_t bspDevinfoGet(uint32_t index, BspDevinfo *record) {
    if (record == nullptr)
        return BSP_E_NULL;
    if (index == BSP_DEVINFO_BOARD)
        return bspLocalPieGet(record);
    if (!isSupplyIndex(index))
        return BSP_E_NOT_SUPPORTED;

    if (const int32_t status = checkModelHasSupplyRecords(); status != BSP_OK)
        return status;
    BspSupplyRecord supplyRecord{};
    if (const int32_t status = bspPowerPieGet(supplyOfIndex(index), &supplyRecord);
        status != BSP_OK)
        return status;
    copySharedFields(*record, supplyRecord);
    return BSP_OK;
}

int32_t bspDevinfoSet(uint32_t index, BspDevinfo *record) {
    if (record == nullptr)
        return BSP_E_NULL;
    if (index == BSP_DEVINFO_BOARD)
        return bspLocalPieSet(record);
    if (!isSupplyIndex(index))
        return BSP_E_NOT_SUPPORTED;

    if (const int32_t status = checkModelHasSupplyRecords(); status != BSP_OK)
        return status;
    // What the board's layout has no place for is cleared in the supply.
    BspSupplyRecord supplyRecord{};
    copySharedFields(supplyRecord, *record);
    return bspPowerPieSet(supplyOfIndex(index), &supplyRecord);
}

int32_t bspMfgDateGet(char *) {
    return BSP_OK;
}
int32_t bspMfgDateSet(const char *) {
    return BSP_OK;
}
