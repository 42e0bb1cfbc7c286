#include "tests/support/i2c_device.h"

#include "bsp.h"

#include <cstdarg>
#include <vector>

namespace {

std::vector<I2cDevice *> &devices() {
    static std::vector<I2cDevice *> all;
    return all;
}

CpldDevice *cpld = nullptr;

uint32_t word(const BspIoctlRecord &record, unsigned slot) {
    return static_cast<uint32_t>(record.slot[slot]);
}

I2cDevice *addressed(unsigned long request, const BspIoctlRecord &record) {
    if (request != BSP_REQ_I2C_READ && request != BSP_REQ_I2C_WRITE)
        return nullptr;
    for (I2cDevice *device : devices()) {
        if (device->isAt(word(record, 0), word(record, 1)))
            return device;
    }
    return nullptr;
}

template <typename Type>
Type *pointer(const BspIoctlRecord &record, unsigned slot) {
    return reinterpret_cast<Type *>(static_cast<uintptr_t>(record.slot[slot]));
}

int32_t serve(I2cDevice &device, unsigned long request, const BspIoctlRecord &record) {
    const I2cRequest transfer = {word(record, 2), word(record, 3), pointer<uint8_t>(record, 4),
                                 static_cast<int32_t>(word(record, 5))};
    return request == BSP_REQ_I2C_READ ? device.read(transfer) : device.write(transfer);
}

bool isForCpld(unsigned long request) {
    return cpld != nullptr && (request == BSP_REQ_CPLD_READ || request == BSP_REQ_CPLD_WRITE);
}

int32_t serveCpld(unsigned long request, const BspIoctlRecord &record) {
    const uint32_t reg = word(record, 0);
    return request == BSP_REQ_CPLD_READ ? cpld->read(reg, pointer<uint32_t>(record, 1))
                                        : cpld->write(reg, word(record, 1));
}

} // namespace

I2cDevice::I2cDevice(uint32_t bus, uint32_t channel, uint32_t devAddr)
    : busChannel_(channel << 8 | bus), devAddr_(devAddr) {
    devices().push_back(this);
}

I2cDevice::~I2cDevice() {
    std::erase(devices(), this);
}

CpldDevice::CpldDevice() {
    cpld = this;
}

CpldDevice::~CpldDevice() {
    cpld = nullptr;
}

// The linker lets every ioctl of the program come here first.
extern "C" {
int realIoctl(int fd, unsigned long request, void *argument) __asm__("__real_ioctl");
int wrappedIoctl(int fd, unsigned long request, ...) __asm__("__wrap_ioctl");
}

int wrappedIoctl(int fd, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    auto *record = va_arg(arguments, BspIoctlRecord *);
    va_end(arguments);
    if (isForCpld(request)) {
        record->result = serveCpld(request, *record);
        return 0;
    }
    I2cDevice *device = addressed(request, *record);
    if (device == nullptr)
        return realIoctl(fd, request, record);
    record->result = serve(*device, request, *record);
    return 0;
}
