// Versions of the hardware, the CPLD, the FPGA that the board does not have, and the boot loader.

#include "bsp.h"
#include "support/board_map.h"
#include "support/owned.h"
#include "support/register_bits.h"

#include <cstdio>
#include <cstring>

int32_t bspHwVersionGet(char *text) {
    if (text == nullptr)
        return BSP_E_NULL;
    uint16_t version = 0;
    if (const int32_t status = bspCpldGet(bsp::kCpldVersion, &version); status != BSP_OK)
        return status;
    constexpr uint32_t kBeforeA = 0x40; // revision 1 is 'A'
    std::sprintf(text, "%c.%u", kBeforeA + bsp::fieldOf(version, bsp::kHardwareLetter),
                 bsp::fieldOf(version, bsp::kHardwareNumber));
    return BSP_OK;
}

int32_t bspCpldVersionGet(char *text) {
    if (text == nullptr)
        return BSP_E_NULL;
    uint16_t version = 0;
    if (const int32_t status = bspCpldGet(bsp::kCpldVersion, &version); status != BSP_OK)
        return status;
    std::sprintf(text, "V%u.%u", bsp::fieldOf(version, bsp::kCpldMajorVersion),
                 bsp::fieldOf(version, bsp::kCpldMinorVersion));
    return BSP_OK;
}

int32_t bspFpgaVersionGet(char *text) {
    if (text == nullptr)
        return BSP_E_NULL;
    std::memcpy(text, BSP_FPGA_VERSION_NONE, BSP_FPGA_VERSION_SIZE);
    return BSP_OK;
}

int32_t bspUbootVersionGet(char *version) {
    constexpr char kKey[] = "bootver=";
    constexpr size_t kLineSize = 256;

    // Callers of this function test for -1 alone, so a null buffer answers it too.
    if (version == nullptr)
        return BSP_E_FAILED;
    const bsp::File commandLine(std::fopen("/proc/cmdline", "re"));
    if (commandLine == nullptr) {
        std::printf("open /proc/cmdline fail\n");
        return BSP_E_FAILED;
    }

    // The zeros behind the line stand for what a version at its very end lacks.
    char line[kLineSize + BSP_BOOT_VERSION_LENGTH] = {};
    if (std::fgets(line, kLineSize, commandLine.get()) == nullptr)
        return BSP_OK;
    if (const char *key = std::strstr(line, kKey); key != nullptr)
        std::memcpy(version, key + std::strlen(kKey), BSP_BOOT_VERSION_LENGTH);
    return BSP_OK;
}
