#include "iodbg/health.h"

#include "bsp.h"
#include "iodbg/boot_block.h"
#include "iodbg/failure.h"
#include "iodbg/flash.h"
#include "iodbg/os_bank.h"

namespace iodbg {

namespace {

Finding bootFinding() {
    try {
        if (isErased(readBootBlock()))
            return {"boot settings", Severity::Warning, "none is stored, the defaults hold",
                    "set them with 'iodbg boot set'"};
    } catch (const Failure &failure) {
        return {"boot settings", Severity::Fault, failure.what(), ""};
    }
    return good("boot settings", "stored");
}

Finding bankFinding(uint32_t bank) {
    const std::string name = "bank " + std::to_string(bank);
    Bytes header;
    try {
        if (const int32_t status = readOsHeader(bank, header); status != BSP_OK)
            return unreadable(name, status);
    } catch (const Failure &failure) {
        return {name, Severity::Fault, failure.what(), ""};
    }
    if (isErased(header))
        return {name, Severity::Warning, "holds no image",
                "write one with 'iodbg upgrade os FILE --bank " + std::to_string(bank) + "'"};
    return good(name, "has the header of an image");
}

} // namespace

Findings flashFindings() {
    Findings findings = {bootFinding()};
    for (uint32_t bank = 0; bank < BSP_OS_BANKS; ++bank)
        findings.push_back(bankFinding(bank));
    return findings;
}

} // namespace iodbg
