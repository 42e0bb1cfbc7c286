// The library's status codes in words.

#include "bsp.h"

namespace {

struct Row {
    int32_t status;
    BspStatusText text;
};

constexpr Row row(int32_t status, const char *name, const char *meaning) {
    return {status, {name, meaning}};
}

#define NAMED(status) status, #status
constexpr Row kRows[] = {
    row(NAMED(BSP_OK), "success"),
    row(NAMED(BSP_E_NOT_SUPPORTED), "the board has no such thing, or the index has no mapping"),
    row(NAMED(BSP_E_NULL), "a required buffer or output pointer is null"),
    row(NAMED(BSP_E_INVALID), "an argument is out of range, or a record fails its CRC"),
    row(NAMED(BSP_E_TIMEOUT), "the MDIO interface stayed busy for the whole poll"),
    row(NAMED(BSP_E_NO_MEMORY), "a working buffer could not be allocated"),
    row(NAMED(BSP_E_LOCK), "the flash lock could not be taken"),
    row(NAMED(BSP_E_OPEN), "a device node or file could not be opened"),
    row(NAMED(BSP_E_SHORT_READ), "fewer bytes than required were read"),
    row(NAMED(BSP_E_ERASE), "the flash geometry query or the erase failed"),
    row(NAMED(BSP_E_WRITE), "a seek or a write to flash failed"),
    row(NAMED(BSP_E_MAP), "the MDIO register page could not be mapped"),
    row(NAMED(BSP_E_NO_RECORD), "the EEPROM holds no product information record"),
    row(NAMED(BSP_E_FAILED), "generic failure: a transfer failed, or the kernel module's node did"),
    row(NAMED(BSP_E_EEPROM_SPAN), "an EEPROM transfer would end beyond byte 1023"),
    row(NAMED(BSP_E_POE_UNAVAILABLE), "no PoE controller, or its state does not allow the request"),
    row(NAMED(BSP_E_POE_NULL), "a required PoE pointer is null"),
    row(NAMED(BSP_E_POE_INVALID), "a PoE argument is out of range"),
    row(NAMED(BSP_E_POE_WRITE), "a request frame could not be written to the controller"),
    row(NAMED(BSP_E_POE_READ), "a reply frame could not be read from the controller"),
    row(NAMED(BSP_E_POE_FRAME), "the reply does not echo the request, or its checksum is wrong"),
    row(NAMED(BSP_E_POE_STATUS), "the controller reports failure for the request or a port"),
    row(NAMED(BSP_E_POE_CONTENT), "the reply names another port or carries an unknown value"),
    row(NAMED(BSP_E_POE_LOCK), "the PoE lock file could not be locked"),
    row(NAMED(BSP_E_POE_NO_MEMORY), "the controller's firmware image could not be buffered"),
    row(NAMED(BSP_E_POE_OPEN), "the application status file or a firmware file did not open"),
    row(NAMED(BSP_E_POE_SHORT_READ), "a firmware file gave fewer bytes than its size"),
};
#undef NAMED

constexpr BspStatusText kForeign = {"", "an answer of the kernel module or the operating system"};

} // namespace

const BspStatusText *bspStatusText(int32_t status) {
    for (const Row &known : kRows) {
        if (known.status == status)
            return &known.text;
    }
    return &kForeign;
}
