#include "iodbg/status_table.h"

#include "bsp.h"

#include <cstring>

namespace iodbg {

namespace {

struct Row {
    int32_t code;
    const char *name;
    const char *meaning;
    const char *next;
};

#define STATUS(name) name, #name
constexpr Row kRows[] = {
    {STATUS(BSP_OK), "success", "nothing to do"},
    {STATUS(BSP_E_NOT_SUPPORTED), "the board has no such thing, or the index has no mapping",
     "look up the model with 'iodbg show' and ask only for what it has"},
    {STATUS(BSP_E_NULL), "a required buffer or output pointer is null",
     "correct the calling program"},
    {STATUS(BSP_E_INVALID), "an argument is out of range, or a record fails its CRC",
     "check the argument; for a record, see 'iodbg show', and write a whole one with 'iodbg "
     "identity set record'"},
    {STATUS(BSP_E_TIMEOUT), "the MDIO interface stayed busy for the whole poll",
     "try again; if it stays, reset the board"},
    {STATUS(BSP_E_NO_MEMORY), "a working buffer could not be allocated",
     "free memory on the board and try again"},
    {STATUS(BSP_E_LOCK), "the flash lock could not be taken",
     "check that /tmp/bspFlashLockFile can be written"},
    {STATUS(BSP_E_OPEN), "a device node or file could not be opened",
     "check that the folder /tmp/bsp and the device's node exist and may be opened"},
    {STATUS(BSP_E_SHORT_READ), "fewer bytes than required were read",
     "check that the file or partition is whole"},
    {STATUS(BSP_E_ERASE), "the flash geometry query or the erase failed",
     "check the kernel log for flash errors"},
    {STATUS(BSP_E_WRITE), "a seek or a write to flash failed",
     "check the kernel log for flash errors, then write again"},
    {STATUS(BSP_E_MAP), "the MDIO register page could not be mapped",
     "check that the program may map /dev/mem"},
    {STATUS(BSP_E_NO_RECORD), "the EEPROM holds no product information record",
     "write a whole record with 'iodbg identity set record'"},
    {STATUS(BSP_E_FAILED), "generic failure: a transfer failed, or the kernel module's node did",
     "check that /dev/bspHandle exists and the device is plugged in; messages above say more"},
    {STATUS(BSP_E_EEPROM_SPAN), "an EEPROM transfer would end beyond byte 1023",
     "choose a smaller offset or length"},
    {STATUS(BSP_E_POE_UNAVAILABLE), "no PoE controller, or its state does not allow the request",
     "check that the model has PoE and the controller is online"},
    {STATUS(BSP_E_POE_NULL), "a required PoE pointer is null", "correct the calling program"},
    {STATUS(BSP_E_POE_INVALID), "a PoE argument is out of range", "check port and value"},
    {STATUS(BSP_E_POE_WRITE), "a request frame could not be written to the controller",
     "check the controller's bus, then reset the controller"},
    {STATUS(BSP_E_POE_READ), "a reply frame could not be read from the controller",
     "check the controller's bus, then reset the controller"},
    {STATUS(BSP_E_POE_FRAME), "the reply does not echo the request, or its checksum is wrong",
     "try again; if it stays, reset the controller"},
    {STATUS(BSP_E_POE_STATUS), "the controller reports failure for the request or a port",
     "check the port's state and the value"},
    {STATUS(BSP_E_POE_CONTENT), "the reply names another port or carries an unknown value",
     "try again; if it stays, check the controller's firmware version"},
    {STATUS(BSP_E_POE_LOCK), "the PoE lock file could not be locked",
     "check that /tmp/bspPoeLockFile can be written"},
    {STATUS(BSP_E_POE_NO_MEMORY), "the controller's firmware image could not be buffered",
     "free memory on the board and try again"},
    {STATUS(BSP_E_POE_OPEN), "the application status file or a firmware file did not open",
     "check the file's path and permissions"},
    {STATUS(BSP_E_POE_SHORT_READ), "a firmware file gave fewer bytes than its size",
     "copy the file again"},
};
#undef STATUS

StatusText textOf(const Row &row) {
    return {row.code, row.name, row.meaning, row.next};
}

/** The kernel module answers as it likes; drivers mostly answer negative error numbers. */
StatusText foreignStatus(int32_t status) {
    const std::string next = "check the arguments and the kernel log";
    if (status > 0 || status < -4095)
        return {status, "", "an answer of the kernel module's own", next};
    return {status, "",
            "an answer of the kernel module; as an error number '" +
                std::string(std::strerror(-status)) + "'",
            next};
}

} // namespace

std::vector<StatusText> allStatuses() {
    std::vector<StatusText> texts;
    for (const Row &row : kRows)
        texts.push_back(textOf(row));
    return texts;
}

StatusText explain(int32_t status) {
    for (const Row &row : kRows) {
        if (row.code == status)
            return textOf(row);
    }
    return foreignStatus(status);
}

std::string nameAndNumber(int32_t status) {
    const std::string name = explain(status).name;
    const std::string number = std::to_string(status);
    return name.empty() ? "status " + number : name + " (" + number + ")";
}

} // namespace iodbg
