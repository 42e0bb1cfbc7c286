// The version of the library, which a program can compare with that of its header.

#include "bsp.h"

uint32_t bspLibraryVersion(void) {
    return BSP_VERSION;
}
