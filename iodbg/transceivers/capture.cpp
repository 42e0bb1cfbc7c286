#include "iodbg/transceivers/capture.h"

#include "bsp.h"
#include "iodbg/transceivers/cage.h"
#include "iodbg/transceivers/diagnostics.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace iodbg {

namespace {

constexpr uint32_t kPhyRegisterCount = 32;
// Status that is latched until it is read, and counts that begin anew.
constexpr uint32_t kForgetful[] = {1, 6, 10, 19, 21};
constexpr char kForgetfulReason[] = "reading it clears what it latched";

/** False when the cage is known to be empty. */
bool captureLines(CaptureSheet &sheet, uint32_t port) {
    uint32_t isPresent = 0, transmitter = 0, isLost = 0, hasFault = 0;
    const int32_t presence = ioLaserPresentGet(port, &isPresent);
    sheet.putFlag(numbered("sfp.#.present", port), presence, isPresent != 0);
    int32_t status = ioLaserControlGet(port, &transmitter);
    sheet.put(numbered("sfp.#.transmitter", port), status,
              transmitter == BSP_LASER_ON ? "on" : "off");
    status = ioLaserRxLosGet(port, &isLost);
    sheet.putFlag(numbered("sfp.#.rx-loss", port), status, isLost != 0);
    status = ioLaserTxfaultGet(port, &hasFault);
    sheet.putFlag(numbered("sfp.#.tx-fault", port), status, hasFault != 0);
    return presence != BSP_OK || isPresent != 0;
}

/** Which name a measurement has, and in which part of the diagnostics' unit. */
struct MeasuredName {
    const char *name;
    Quantity quantity;
};

constexpr MeasuredName kMeasuredNames[] = {
    {"sfp.#.temperature", Quantity::Temperature},
    {"sfp.#.supply-voltage", Quantity::SupplyVoltage},
    {"sfp.#.bias-current", Quantity::BiasCurrent},
    {"sfp.#.tx-power", Quantity::TxPower},
    {"sfp.#.rx-power", Quantity::RxPower},
};

void captureMeasurements(CaptureSheet &sheet, uint32_t port, ByteView id, ByteView page) {
    constexpr double kThousand = 1000;
    const Identification module = identificationOf(id.first(kIdentificationSize));
    if (!module.hasDiagnostics)
        return;
    const Diagnostics diagnostics =
        diagnosticsOf(page.first(kDiagnosticsSize), module.isExternallyCalibrated);
    for (const Measurement &measurement : diagnostics.measurements) {
        const auto *row = std::find_if(std::begin(kMeasuredNames), std::end(kMeasuredNames),
                                       [&measurement](const MeasuredName &name) {
                                           return name.quantity == measurement.quantity;
                                       });
        // What a spoiled calibration makes of it may be no number at all.
        if (std::isfinite(measurement.value) && std::abs(measurement.value) < INT32_MAX)
            sheet.putNumber(numbered(row->name, port), BSP_OK,
                            std::llround(measurement.value * kThousand));
    }
}

void capturePhy(CaptureSheet &sheet, uint32_t port) {
    const std::string row = numbered("sfp.#.phy.#", port);
    for (uint32_t reg = 0; reg < kPhyRegisterCount; ++reg) {
        if (std::find(std::begin(kForgetful), std::end(kForgetful), reg) != std::end(kForgetful)) {
            sheet.leaveOut(numbered(row, reg), kForgetfulReason);
            continue;
        }
        uint16_t value = 0;
        const int32_t status = ioLaserPhyGet(port, reg, &value);
        sheet.putNumber(numbered(row, reg), status, value);
    }
}

void captureModule(CaptureSheet &sheet, uint32_t port) {
    Bytes id, page;
    const int32_t idStatus = readSfpPage(port, BSP_SFP_IDENTIFICATION, BSP_SFP_MEMORY_SIZE, id);
    sheet.putBytes(numbered("sfp.#.id", port), idStatus, id);
    const int32_t pageStatus = readSfpPage(port, BSP_SFP_DIAGNOSTICS, BSP_SFP_MEMORY_SIZE, page);
    sheet.putBytes(numbered("sfp.#.diagnostics", port), pageStatus, page);
    if (idStatus != BSP_OK)
        return;
    if (pageStatus == BSP_OK)
        captureMeasurements(sheet, port, id, page);
    uint16_t kind = BSP_COPPER_NONE;
    const int32_t status = bspElectricModerTypeGet(port, &kind);
    sheet.putNumber(numbered("sfp.#.copper", port), status, kind);
    if (status != BSP_OK || kind != BSP_COPPER_NONE)
        capturePhy(sheet, port);
}

} // namespace

void captureCages(CaptureSheet &sheet, const Model &model) {
    for (const uint32_t port : model.cages) {
        if (captureLines(sheet, port))
            captureModule(sheet, port);
    }
}

} // namespace iodbg
