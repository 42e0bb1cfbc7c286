#include "flash/cpld_upgrade.h"

#include "bsp.h"

#include <cstddef>

namespace {

/** How the kernel module is to program the CPLD. It reads this block in our memory, in the layout
 * of the target's 32-bit pointers on every machine.
 */
struct ProgrammingBlock {
    uint32_t word0 = 1;
    uint32_t word4 = 0; // not used
    uint8_t byte8 = 1;
    uint8_t unused[3] = {};
    uint32_t word12 = 5500;
    uint32_t lineTable; // address of `lines`, its low 32 bits
    uint32_t word20 = 0;
    uint32_t lines[4] = {9, 8, 10, 11};
};
static_assert(offsetof(ProgrammingBlock, word12) == 12);
static_assert(offsetof(ProgrammingBlock, lines) == 24 && sizeof(ProgrammingBlock) == 40);

} // namespace

int32_t bsp::upgradeCpld(const char *file) {
    ProgrammingBlock block;
    block.lineTable = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(block.lines));
    return bspCpldUpgrade_handle(&block, file);
}
