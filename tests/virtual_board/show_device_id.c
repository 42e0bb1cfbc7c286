/* The smallest program that uses the library: prints the model of the board that it runs on. */

#include "bsp.h"

#include <stdio.h>

int main(void) {
    uint32_t devId = 0;
    const int32_t status = bspDevIdGet(&devId);
    if (status != BSP_OK) {
        fprintf(stderr, "status %d\n", (int)status);
        return 1;
    }
    printf("0x%04X\n", (unsigned)devId);
    return 0;
}
