#include "language/formats/crc32.h"
#include "bsp.h"

uint32_t bsp_crc32_cal(uint32_t crc, const uint8_t *buf, uint32_t len) {
    return buf != nullptr ? formats::crc32(crc, buf, len) : 0;
}
