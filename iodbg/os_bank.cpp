#include "iodbg/os_bank.h"

#include "bsp.h"
#include "iodbg/failure.h"
#include "iodbg/shared_files.h"

namespace iodbg {

namespace {

void requireSharedFiles() {
    const std::vector<SharedFileFlaw> flaws = sharedFileFlaws();
    if (!flaws.empty())
        throw Failure(ExitCode::Host, flaws[0].path + " " + flaws[0].found +
                                          ", so that no image header can be read safely; " +
                                          flaws[0].advice);
}

} // namespace

std::string bankDevice(uint32_t bank) {
    return bank == BSP_OS_BANK_0 ? BSP_MTD_OS_BANK_0 : BSP_MTD_OS_BANK_1;
}

int32_t readOsHeader(uint32_t bank, Bytes &header) {
    requireSharedFiles();
    header.resize(BSP_OS_HEADER_SIZE);
    return bspOsImageInfoGet(header.data(), static_cast<int32_t>(bank));
}

} // namespace iodbg
