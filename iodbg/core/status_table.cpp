#include "iodbg/core/status_table.h"

#include "bsp.h"

#include <cstring>

namespace iodbg {

namespace {

struct Row {
    int32_t status;
    const char *next;
};

// What to do about each status that the library defines.
constexpr Row kRows[] = {
    {BSP_OK, "nothing to do"},
    {BSP_E_NOT_SUPPORTED, "look up the model with 'iodbg show' and ask only for what it has"},
    {BSP_E_NULL, "correct the calling program"},
    {BSP_E_INVALID, "check the argument; for a record, see 'iodbg show', and write a whole one "
                    "with 'iodbg identity set record'"},
    {BSP_E_TIMEOUT, "try again; if it stays, reset the board"},
    {BSP_E_NO_MEMORY, "free memory on the board and try again"},
    {BSP_E_LOCK, "check that /tmp/bspFlashLockFile can be written"},
    {BSP_E_OPEN, "check that the folder /tmp/bsp and the device's node exist and may be opened"},
    {BSP_E_SHORT_READ, "check that the file or partition is whole"},
    {BSP_E_ERASE, "check the kernel log for flash errors"},
    {BSP_E_WRITE, "check the kernel log for flash errors, then write again"},
    {BSP_E_MAP, "check that the program may map /dev/mem"},
    {BSP_E_NO_RECORD, "write a whole record with 'iodbg identity set record'"},
    {BSP_E_FAILED, "check that the device is plugged in; messages above say more"},
    {BSP_E_EEPROM_SPAN, "choose a smaller offset or length"},
    {BSP_E_POE_UNAVAILABLE, "check that the model has PoE and the controller is online"},
    {BSP_E_POE_NULL, "correct the calling program"},
    {BSP_E_POE_INVALID, "check port and value"},
    {BSP_E_POE_WRITE, "check the controller's bus, then reset the controller"},
    {BSP_E_POE_READ, "check the controller's bus, then reset the controller"},
    {BSP_E_POE_FRAME, "try again; if it stays, reset the controller"},
    {BSP_E_POE_STATUS, "check the port's state and the value"},
    {BSP_E_POE_CONTENT, "try again; if it stays, check the controller's firmware version"},
    {BSP_E_POE_LOCK, "check that /tmp/bspPoeLockFile can be written"},
    {BSP_E_POE_NO_MEMORY, "free memory on the board and try again"},
    {BSP_E_POE_OPEN, "check the file's path and permissions"},
    {BSP_E_POE_SHORT_READ, "copy the file again"},
};

StatusText textOf(const Row &row) {
    const BspStatusText &text = *bspStatusText(row.status);
    return {row.status, text.name, text.meaning, row.next};
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
        if (row.status == status)
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
