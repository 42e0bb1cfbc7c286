#include "kernel/request.h"

#include "support/owned.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/ioctl.h>

namespace {
constexpr char kNodePath[] = "/dev/bspHandle";
}

int32_t bspFuncIoctl_handle(uint32_t request, BspIoctlRecord *record) {
    if (record == nullptr)
        return BSP_E_NULL;

    const bsp::Descriptor node(open(kNodePath, O_RDONLY | O_CLOEXEC));
    if (!node.isOpen()) {
        std::printf("open file %s fail\n", kNodePath);
        return node.get();
    }
    if (const int status = ioctl(node.get(), request, record); status < 0) {
        std::printf("ioctl fail, cmd=%#x\n", request);
        return status;
    }
    return BSP_OK;
}

int32_t bsp::sendRequest(BspRequest code, std::initializer_list<uint64_t> arguments) {
    BspIoctlRecord record{};
    uint64_t *slot = record.slot;
    for (const uint64_t argument : arguments)
        *slot++ = argument;

    if (const int32_t status = bspFuncIoctl_handle(code, &record); status != BSP_OK)
        return status;
    return record.result;
}
