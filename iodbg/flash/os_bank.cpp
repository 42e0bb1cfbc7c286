#include "iodbg/flash/os_bank.h"

#include "bsp.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/shared_files.h"
#include "iodbg/flash/claim.h"
#include "language/formats/os_image.h"

namespace iodbg {

namespace {

/** Programs other than iodbg can remove or replace the scratch file before it has been read. */
constexpr int kHeaderTries = 3;

void requireSharedFiles() {
    const std::vector<SharedFileFlaw> flaws = sharedFileFlaws();
    if (!flaws.empty())
        throw Failure(ExitCode::Host,
                      flaws[0].path + " " + flaws[0].found +
                          ", so that no image header can be read safely",
                      flaws[0].advice);
}

} // namespace

std::string bankDevice(uint32_t bank) {
    return bank == BSP_OS_BANK_0 ? BSP_MTD_OS_BANK_0 : BSP_MTD_OS_BANK_1;
}

int32_t readOsHeader(uint32_t bank, Bytes &header) {
    requireSharedFiles();
    const HeaderTurn turn;
    header.resize(formats::kOsHeaderSize);
    int32_t status = BSP_OK;
    for (int tries = 0; tries < kHeaderTries; ++tries) {
        status = bspOsImageInfoGet(header.data(), static_cast<int32_t>(bank));
        if (status != BSP_E_OPEN && status != BSP_E_SHORT_READ)
            break;
    }
    return status;
}

int32_t readOsHeader(uint32_t bank, const Bytes &expected, Bytes &header) {
    int32_t status = BSP_OK;
    for (int tries = 0; tries < kHeaderTries; ++tries) {
        status = readOsHeader(bank, header);
        if (status != BSP_OK || header == expected)
            break;
    }
    return status;
}

} // namespace iodbg
