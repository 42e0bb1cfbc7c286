// iodbg ptp: the trigger line of the precision time protocol.

#include "bsp.h"
#include "iodbg/chassis/commands.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "support/register_bits.h"

#include <string>

namespace iodbg {

namespace {

using bsp::kPtpTrigger;

ExitCode pulse(Console &console) {
    require(ioPtpTriggerSet(0), "give a pulse on the PTP trigger line");
    uint16_t control = 0;
    const std::string reg = "CPLD register " + std::to_string(kPtpTrigger.reg);
    require(bspCpldGet(kPtpTrigger.reg, &control), "read the PTP trigger line, " + reg);
    if (!bsp::hasBit(control, kPtpTrigger.bit))
        throw Failure(ExitCode::ReadBack,
                      "the PTP trigger line, bit " + std::to_string(kPtpTrigger.bit) + " of " +
                          reg + ", stayed low after the pulse; run the command again");
    Section section = {"", "", {}};
    section.add("level", "PTP trigger line", {"was low for a pulse, is high", int64_t{1}});
    return console.print({{section}, {}});
}

void definePtp(Command &ptp) {
    ptp.command("pulse", "Give a low pulse on the trigger line")
        .example("iodbg ptp pulse")
        .does(pulse);
}

} // namespace

void addPtpCommands(Command &root) {
    root.group("ptp", "Precision time protocol", definePtp).onlyAfter(requireKernelModule);
}

} // namespace iodbg
