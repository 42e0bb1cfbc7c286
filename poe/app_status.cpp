#include "poe/app_status.h"

#include "bsp.h"
#include "support/kept_file.h"
#include "support/owned.h"

#include <cerrno>
#include <unistd.h>

namespace {

int openStatusFile(bsp::CallSite site) {
    constexpr char kPath[] = "/tmp/bsp/poeApp";
    const int fd = bsp::openKeptFile(kPath);
    if (fd < 0)
        bsp::report(site, "open %s file filed, %d \n", kPath, errno);
    return fd;
}

} // namespace

int32_t bsp::poeAppStatusGet(uint32_t *out, CallSite site) {
    if (out == nullptr)
        return BSP_E_POE_NULL;
    const Descriptor file(openStatusFile(site));
    if (!file.isOpen())
        return BSP_E_POE_OPEN;
    uint8_t status = BSP_POE_APP_USABLE;
    const bool isStored = read(file.get(), &status, 1) == 1;
    *out = isStored ? status : uint8_t{BSP_POE_APP_USABLE};
    return BSP_OK;
}

int32_t bsp::poeAppStatusSet(uint32_t value, CallSite site) {
    const Descriptor file(openStatusFile(site));
    if (!file.isOpen())
        return BSP_E_POE_OPEN;
    const auto status = static_cast<uint8_t>(value);
    [[maybe_unused]] const ssize_t written = write(file.get(), &status, 1);
    return BSP_OK;
}
