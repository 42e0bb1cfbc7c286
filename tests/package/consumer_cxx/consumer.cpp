// A C++ program that uses the installed library.

#include <bsp.h>

#include <cstdio>

int main() {
    const uint8_t digits[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    std::printf("CRC-32 of 123456789: %08X, status of a null record: %d\n",
                static_cast<unsigned>(bsp_crc32_cal(0, digits, sizeof(digits))),
                static_cast<int>(ioDevinfoGet(BSP_DEVINFO_BOARD, nullptr)));
}
