// I2C transfers, and the SPI transfer that shares their request code.

#include "kernel/request.h"

using bsp::addressSlot;
using bsp::sendRequest;
using bsp::signExtend;
using bsp::zeroExtend;

namespace {

int32_t transfer(BspRequest code, uint32_t busChan, uint32_t devAddr, uint32_t offset,
                 uint32_t offsetLen, const void *buf, int32_t len) {
    return sendRequest(code, {signExtend(busChan), zeroExtend(devAddr), zeroExtend(offset),
                              signExtend(offsetLen), addressSlot(buf),
                              signExtend(static_cast<uint32_t>(len))});
}

/** Bus in bits 0-7, channel in bits 8-15. */
constexpr uint32_t packBusChannel(uint32_t bus, uint32_t channel) {
    return ((channel << 8) & 0xFFFF) | (bus & 0xFF);
}

} // namespace

int32_t bspI2cRead_handle(uint32_t busChan, uint32_t devAddr, uint32_t offset, uint32_t offsetLen,
                          void *buf, int32_t len) {
    return transfer(BSP_REQ_I2C_READ, busChan, devAddr, offset, offsetLen, buf, len);
}

int32_t bspI2cWrite_handle(uint32_t busChan, uint32_t devAddr, uint32_t offset, uint32_t offsetLen,
                           const void *buf, int32_t len) {
    return transfer(BSP_REQ_I2C_WRITE, busChan, devAddr, offset, offsetLen, buf, len);
}

int32_t bspI2cRead(uint32_t bus, uint32_t channel, uint32_t devAddr, uint32_t offset,
                   uint32_t offsetLen, uint8_t *buf, int32_t len) {
    return bspI2cRead_handle(packBusChannel(bus, channel), devAddr, offset, offsetLen, buf, len);
}

int32_t bspI2cWrite(uint32_t bus, uint32_t channel, uint32_t devAddr, uint32_t offset,
                    uint32_t offsetLen, const uint8_t *buf, int32_t len) {
    return bspI2cWrite_handle(packBusChannel(bus, channel), devAddr, offset, offsetLen, buf, len);
}

// The kernel module takes SPI transfers under the code of an I2C write and tells them apart itself.
int32_t bspSpiXfer_handle(uint32_t a1, uint32_t a2, uint32_t a3, uint32_t a4, uint32_t a5,
                          uint32_t a6) {
    return sendRequest(BSP_REQ_SPI_XFER, {signExtend(a1), signExtend(a2), signExtend(a3),
                                          zeroExtend(a4), signExtend(a5), zeroExtend(a6)});
}
