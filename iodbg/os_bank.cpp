#include "iodbg/os_bank.h"

#include "bsp.h"

namespace iodbg {

std::string bankDevice(uint32_t bank) {
    return bank == 0 ? "/dev/mtd12" : "/dev/mtd14";
}

int32_t readOsHeader(uint32_t bank, Bytes &header) {
    header.resize(BSP_OS_HEADER_SIZE);
    return bspOsImageInfoGet(header.data(), static_cast<int32_t>(bank));
}

} // namespace iodbg
