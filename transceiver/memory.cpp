// The memories of pluggable transceivers, and the PHYs of those with a copper port.

#include "bsp.h"
#include "identity/board_catalogue.h"
#include "language/formats/byte_order.h"

namespace {

/** The I2C branch that a cage is on. */
struct Branch {
    uint32_t bus, channel;
};

bool findInRange(const bsp::CageRange &range, uint32_t port, Branch *branch) {
    const uint32_t index = port - range.firstPort; // a port before the range is far behind its end
    if (index >= range.ports)
        return false;
    *branch = {range.bus, range.firstChannel + index};
    return true;
}

int32_t findCage(uint32_t port, Branch *branch) {
    uint32_t devId = 0;
    if (const int32_t status = bspDevIdGet(&devId); status != BSP_OK)
        return status;
    const bsp::BoardModel &model = bsp::boardModel(devId);
    const bool isCage =
        findInRange(model.frontCages, port, branch) || findInRange(model.uplinkCages, port, branch);
    return isCage ? BSP_OK : BSP_E_INVALID;
}

/** Transfers bytes of a cage's device by one of the two functions for EEPROMs. */
template <typename Byte, typename Transfer>
int32_t transferBytes(Transfer transfer, uint32_t port, uint32_t devAddr, uint32_t offset,
                      Byte *buf, uint32_t len) {
    if (buf == nullptr)
        return BSP_E_NULL;
    if (len == 0 || uint64_t{offset} + len > BSP_SFP_MEMORY_SIZE)
        return BSP_E_INVALID;
    Branch branch{};
    if (const int32_t status = findCage(port, &branch); status != BSP_OK)
        return status;
    return transfer(branch.bus, branch.channel, devAddr & 0xFF, offset, buf, len);
}

constexpr uint16_t moduleKind(uint16_t phyStatus) {
    switch (phyStatus & BSP_SFP_PHY_MODE_MASK) {
    case 4:
        return BSP_COPPER_MODE_4;
    case 12:
        return BSP_COPPER_MODE_12;
    default:
        return BSP_COPPER_OTHER_MODE;
    }
}

} // namespace

int32_t bspLaserSfpRead(uint32_t port, uint32_t devAddr, uint32_t offset, uint8_t *buf,
                        uint32_t len) {
    return transferBytes(bspI2cEepromRead, port, devAddr, offset, buf, len);
}

int32_t bspLaserSfpWrite(uint32_t port, uint32_t devAddr, uint32_t offset, const uint8_t *buf,
                         uint32_t len) {
    return transferBytes(bspI2cEepromWrite, port, devAddr, offset, buf, len);
}

int32_t bspLaserBasicGet(uint32_t port, uint32_t offset, uint8_t *byte) {
    return bspLaserSfpRead(port, BSP_SFP_IDENTIFICATION, offset, byte, 1);
}

int32_t bspLaserAdvanceGet(uint32_t port, uint32_t offset, uint8_t *byte) {
    return bspLaserSfpRead(port, BSP_SFP_DIAGNOSTICS, offset, byte, 1);
}

int32_t bspLaserPhyGet(uint32_t port, uint32_t reg, uint16_t *value) {
    if (value == nullptr)
        return BSP_E_NULL;
    uint8_t bytes[2] = {0, 0};
    const int32_t status = bspLaserSfpRead(port, BSP_SFP_PHY, reg, bytes, sizeof(bytes));
    *value = formats::loadBe16(bytes); // also of what a failed read gave
    return status;
}

int32_t bspLaserPhySet(uint32_t port, uint32_t reg, uint32_t value) {
    uint8_t bytes[2] = {};
    formats::storeBe16(bytes, static_cast<uint16_t>(value));
    return bspLaserSfpWrite(port, BSP_SFP_PHY, reg, bytes, sizeof(bytes));
}

int32_t bspElectricModerTypeGet(uint32_t port, uint16_t *kind) {
    if (kind == nullptr)
        return BSP_E_NULL;
    uint8_t connector = 0;
    // A cage whose module does not answer, or is missing, is nobody's failure.
    if (bspLaserBasicGet(port, BSP_SFP_CONNECTOR_OFFSET, &connector) != BSP_OK)
        return BSP_OK;
    if (connector != BSP_SFP_CONNECTOR_RJ45) {
        *kind = BSP_COPPER_NONE;
        return BSP_OK;
    }
    uint16_t phyStatus = 0;
    const int32_t status = bspLaserPhyGet(port, BSP_SFP_PHY_MODE_REGISTER, &phyStatus);
    *kind = moduleKind(phyStatus);
    return status;
}

int32_t bspLaserQsfpRead(uint32_t, uint32_t, uint8_t *, uint32_t) {
    return BSP_E_NOT_SUPPORTED;
}

int32_t bspLaserQsfpWrite(uint32_t, uint32_t, uint32_t) {
    return BSP_E_NOT_SUPPORTED;
}
