// The base MAC address in the board's record.

#include "bsp.h"
#include "identity/reported_steps.h"

#include <cstring>

int32_t bspMacAddrGet(uint32_t index, uint8_t *mac) {
    if (mac == nullptr)
        return BSP_E_NULL;
    BspDevinfo record{};
    if (const int32_t status = bsp::readBoardRecord(&record); status != BSP_OK)
        return status;
    std::memcpy(mac, record.mac, sizeof(record.mac));
    // Index 0 is the address above the base. Only the last byte counts up, so the addresses of a
    // unit never leave the block of 256 that its base lies in.
    if (index == BSP_MAC_ABOVE_BASE)
        mac[sizeof(record.mac) - 1]++;
    return BSP_OK;
}

int32_t bspMacAddrSet(uint32_t, const uint8_t *mac) {
    if (mac == nullptr)
        return BSP_E_NULL;
    BspDevinfo record{};
    if (const int32_t status = bsp::readBoardRecord(&record); status != BSP_OK)
        return status;
    std::memcpy(record.mac, mac, sizeof(record.mac));
    return bsp::writeBoardRecord(&record);
}
