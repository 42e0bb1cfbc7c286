// Runs in the kernel that scripts/test-kernel boots: the library on the kernel's own flash driver
// and the real MTD tools, on a simulated NAND chip.

#include "tests/kernel_driver/check.h"
#include "tests/kernel_driver/subjects.h"

#include <cstdio>

int main() {
    setvbuf(stdout, nullptr, _IOLBF, 0);
    checkDriver();
    checkBootSettings();
    checkPartitions();
    checkImages();
    checkIodbg();
    // scripts/test-kernel waits for this line.
    std::printf("\nkernel driver: %d checks, %d failed\n", checksMade(), checksFailed());
    return checksFailed() == 0 ? 0 : 1;
}
