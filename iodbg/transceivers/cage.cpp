#include "iodbg/transceivers/cage.h"

namespace iodbg {

std::string portName(uint32_t port) {
    return "port " + std::to_string(port);
}

int32_t readCageLines(uint32_t port, CageLines &lines) {
    int32_t status = ioLaserPresentGet(port, &lines.isPresent);
    if (status == BSP_OK)
        status = ioLaserControlGet(port, &lines.transmitter);
    if (status == BSP_OK)
        status = ioLaserRxLosGet(port, &lines.hasLostSignal);
    if (status == BSP_OK)
        status = ioLaserTxfaultGet(port, &lines.hasTxFault);
    return status;
}

void addCageLines(Report &report, Section &section, uint32_t port, CageLines &lines) {
    const auto add = [&](const char *key, const char *label, int32_t status, const Cell &cell) {
        section.add(key, label, report.tried(section.path(key), status, cell));
    };
    int32_t status = ioLaserPresentGet(port, &lines.isPresent);
    add("present", "Module", status, flagCell(lines.isPresent != 0, "plugged", "none"));
    status = ioLaserControlGet(port, &lines.transmitter);
    add("transmitter_on", "Transmitter", status,
        flagCell(lines.transmitter == BSP_LASER_ON, "on", "off"));
    status = ioLaserRxLosGet(port, &lines.hasLostSignal);
    add("rx_loss", "Loss of signal", status, flagCell(lines.hasLostSignal != 0, "yes", "no"));
    status = ioLaserTxfaultGet(port, &lines.hasTxFault);
    add("tx_fault", "Transmitter fault", status, flagCell(lines.hasTxFault != 0, "yes", "no"));
}

int32_t readSfpPage(uint32_t port, BspSfpDevice page, size_t length, Bytes &bytes) {
    bytes.assign(length, 0);
    return bspLaserSfpRead(port, page, 0, bytes.data(), static_cast<uint32_t>(length));
}

} // namespace iodbg
