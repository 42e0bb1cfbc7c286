// CPLD registers and CPLD programming. The requests are named after an FPGA that this board family
// does not have; on its boards they reach the CPLD.

#include "kernel/request.h"

#include <cstring>

using bsp::addressSlot;
using bsp::sendRequest;
using bsp::zeroExtend;

int32_t bspFpgaGet_handle(uint32_t reg, uint32_t *value) {
    if (value == nullptr)
        return BSP_E_NULL;
    return sendRequest(BSP_REQ_CPLD_READ, {zeroExtend(reg), addressSlot(value)});
}

int32_t bspFpgaSet_handle(uint32_t reg, uint32_t value) {
    return sendRequest(BSP_REQ_CPLD_WRITE, {zeroExtend(reg), zeroExtend(value)});
}

int32_t bspCpldUpgrade_handle(const void *params, const char *path) {
    if (params == nullptr || path == nullptr)
        return BSP_E_NULL;
    const auto pathLength = static_cast<uint32_t>(std::strlen(path));
    return sendRequest(BSP_REQ_CPLD_UPGRADE,
                       {addressSlot(params), addressSlot(path), zeroExtend(pathLength)});
}

int32_t bspCpldGet(uint32_t reg, uint16_t *value) {
    if (value == nullptr)
        return BSP_E_NULL;
    uint32_t word = 0;
    if (const int32_t status = bspFpgaGet_handle(reg, &word); status != BSP_OK)
        return status;
    *value = static_cast<uint16_t>(word);
    return BSP_OK;
}

int32_t bspCpldSet(uint32_t reg, uint32_t value) {
    return bspFpgaSet_handle(reg, value & BSP_CPLD_VALUE_MAX);
}

int32_t bspFpgaGet(uint32_t, uint16_t *) {
    return BSP_E_NOT_SUPPORTED;
}

int32_t bspFpgaSet(uint32_t, uint32_t) {
    return BSP_E_NOT_SUPPORTED;
}
