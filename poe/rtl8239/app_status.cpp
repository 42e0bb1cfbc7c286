// Whether the controller's application is usable, as the last firmware upgrade left it: one byte in
// a file that lives as long as the boot.

#include "bsp.h"
#include "support/kept_file.h"
#include "support/owned.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace {

/** Opens the status file; a failure is reported under the name of the function that opens. */
int openStatusFile(const char *function, int line) {
    char path[64];
    std::snprintf(path, sizeof(path), "%s%s", "/tmp/bsp/", "poeApp");
    const int fd = bsp::openKeptFile(path);
    if (fd < 0)
        std::printf("%s-%d: open %s file filed, %d \n", function, line, path, errno);
    return fd;
}

} // namespace

int32_t bspPoeRtl8239AppStatusGet(uint32_t *out) {
    if (out == nullptr)
        return BSP_E_POE_NULL;
    const bsp::Descriptor file(openStatusFile(__func__, __LINE__));
    if (!file.isOpen())
        return BSP_E_POE_OPEN;
    uint8_t status = BSP_POE_APP_USABLE;
    const bool isStored = read(file.get(), &status, 1) == 1;
    *out = isStored ? status : uint8_t{BSP_POE_APP_USABLE};
    return BSP_OK;
}

int32_t bspPoeRtl8239AppStatusSet(uint32_t value) {
    const bsp::Descriptor file(openStatusFile(__func__, __LINE__));
    if (!file.isOpen())
        return BSP_E_POE_OPEN;
    const auto status = static_cast<uint8_t>(value);
    [[maybe_unused]] const ssize_t written = write(file.get(), &status, 1);
    return BSP_OK;
}
