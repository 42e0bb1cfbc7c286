#include "tests/support/i2c_device.h"

#include "bsp.h"

namespace {

uint32_t word(const BspIoctlRecord &record, unsigned slot) {
    return static_cast<uint32_t>(record.slot[slot]);
}

template <typename Type>
Type *pointer(const BspIoctlRecord &record, unsigned slot) {
    return reinterpret_cast<Type *>(static_cast<uintptr_t>(record.slot[slot]));
}

/** Whether a call is one of these two requests to the kernel module. */
bool asks(const SystemCall &call, unsigned long request, unsigned long other) {
    return call.is("ioctl") && (call.request == request || call.request == other);
}

} // namespace

I2cDevice::I2cDevice(uint32_t bus, uint32_t channel, uint32_t devAddr)
    : busChannel_(channel << 8 | bus), devAddr_(devAddr) {
    requests_.before = [this](const SystemCall &call) -> std::optional<int64_t> {
        if (!asks(call, BSP_REQ_I2C_READ, BSP_REQ_I2C_WRITE))
            return std::nullopt;
        auto &record = *static_cast<BspIoctlRecord *>(call.argument);
        if (word(record, 0) != busChannel_ || word(record, 1) != devAddr_)
            return std::nullopt;
        const I2cRequest transfer = {word(record, 2), word(record, 3), pointer<uint8_t>(record, 4),
                                     static_cast<int32_t>(word(record, 5))};
        record.result = call.request == BSP_REQ_I2C_READ ? read(transfer) : write(transfer);
        return 0;
    };
}

CpldDevice::CpldDevice() {
    requests_.before = [this](const SystemCall &call) -> std::optional<int64_t> {
        if (!asks(call, BSP_REQ_CPLD_READ, BSP_REQ_CPLD_WRITE))
            return std::nullopt;
        auto &record = *static_cast<BspIoctlRecord *>(call.argument);
        const uint32_t reg = word(record, 0);
        record.result = call.request == BSP_REQ_CPLD_READ ? read(reg, pointer<uint32_t>(record, 1))
                                                          : write(reg, word(record, 1));
        return 0;
    };
}
