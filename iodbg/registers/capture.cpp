#include "iodbg/registers/capture.h"

#include "bsp.h"
#include "support/board_map.h"

#include <set>

namespace iodbg {

namespace {

/** The registers with a line for each port, of so many ports from 1 on. */
void addPortRegisters(std::set<uint32_t> &registers, uint32_t first, uint32_t ports) {
    for (uint32_t port = 0; port < ports; port += bsp::kCpldLinesPerRegister)
        registers.insert(first + port / bsp::kCpldLinesPerRegister);
}

/** Those that functions of the library read on a model. */
std::set<uint32_t> registersOf(const Model &model) {
    constexpr size_t kUplinks = 6; // the last cages of every model
    std::set<uint32_t> registers = {bsp::kCpldDeviceId,
                                    bsp::kCpldVersion,
                                    bsp::kCpldWatchdog,
                                    bsp::kCpldControl,
                                    bsp::kCpldLamps,
                                    bsp::kCpldUplinkInputs,
                                    bsp::kCpldUplinkTransmitters,
                                    bsp::kCpldFanSpeeds};
    addPortRegisters(registers, bsp::kCpldPoeLamps, model.poePorts);
    if (model.cages.size() > kUplinks) {
        const auto fronts = static_cast<uint32_t>(model.cages.size() - kUplinks);
        for (const uint32_t first : {bsp::kCpldSfpReceiveLoss, bsp::kCpldSfpPresence,
                                     bsp::kCpldSfpTransmitFault, bsp::kCpldSfpTransmitDisable})
            addPortRegisters(registers, first, fronts);
    }
    if (model.fans > 2)
        registers.insert(bsp::kCpldFanSpeeds + 1);
    if (model.hasSupplyLines)
        registers.insert(bsp::kCpldSupplies);
    if (model.fanPresence == FanPresence::OwnLine)
        registers.insert(bsp::kCpldFans);
    return registers;
}

constexpr char kLine[] = "gpio.#";

void captureLine(CaptureSheet &sheet, uint32_t line) {
    uint32_t level = 0;
    const int32_t status = bspGpioGetValue(line, &level);
    sheet.putNumber(numbered(kLine, line), status, level);
}

} // namespace

void captureRegisters(CaptureSheet &sheet, const Model &model) {
    for (const uint32_t reg : registersOf(model)) {
        uint16_t value = 0;
        const int32_t status = bspCpldGet(reg, &value);
        sheet.putNumber(numbered("cpld.#", reg), status, value);
    }
    sheet.leaveOut("cpld.*", "the registers that the library does not read on this model: nobody "
                             "knows what reading does to them");
    uint32_t period = 0;
    const int32_t periodStatus = ioWatchdogPeriodGet(&period);
    sheet.putNumber("watchdog.period", periodStatus, period);
    if (model.poePorts != 0)
        captureLine(sheet, bsp::kPoeResetGpio);
    else
        sheet.leaveOut(numbered(kLine, bsp::kPoeResetGpio), "of no use without PoE");
    sheet.leaveOut(numbered(kLine, bsp::kWatchdogGpio),
                   "the watchdog's line, which belongs to whoever feeds it");
    sheet.leaveOut("mdio.*", "registers of PHYs forget what they latched when they are read");
}

} // namespace iodbg
