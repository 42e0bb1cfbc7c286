// The serial number in the board's record.

#include "bsp.h"
#include "identity/reported_steps.h"

#include <cstddef>
#include <cstring>

int32_t bspSerialNumGet(char *serial, uint32_t *len) {
    if (serial == nullptr || len == nullptr)
        return BSP_E_NULL;
    BspDevinfo record{};
    if (const int32_t status = bsp::readBoardRecord(&record); status != BSP_OK)
        return status;
    // A field without a zero byte runs on into the fields behind it, to the record's end at most.
    constexpr size_t kFieldOffset = offsetof(BspDevinfo, serial);
    const char *field = reinterpret_cast<const char *>(&record) + kFieldOffset;
    const size_t length = strnlen(field, sizeof(record) - kFieldOffset);
    *len = static_cast<uint32_t>(length);
    std::memcpy(serial, field, length);
    return BSP_OK;
}

int32_t bspSerialNumSet(const char *serial, int32_t len) {
    BspDevinfo record{};
    if (serial == nullptr)
        return BSP_E_NULL;
    static_assert(BSP_SERIAL_NUMBER_MAX == sizeof(record.serial) - 1, "keeps a terminating zero");
    if (len < BSP_SERIAL_NUMBER_MIN || len > BSP_SERIAL_NUMBER_MAX)
        return BSP_E_INVALID;
    if (const int32_t status = bsp::readBoardRecord(&record); status != BSP_OK)
        return status;
    std::memset(record.serial, 0, sizeof(record.serial));
    std::memcpy(record.serial, serial, static_cast<size_t>(len));
    return bsp::writeBoardRecord(&record);
}
