#include "virtual_board/board/moments.h"

#include "virtual_board/devices/poe_ports.h"

#include <algorithm>
#include <iterator>

namespace vb {

namespace {

uint64_t nextPoeEvent(const PoeController &poe) {
    if (poe.isFitted == 0)
        return kPoeNever;
    const auto *first =
        std::min_element(std::begin(poe.port), std::end(poe.port),
                         [](const PoePort &a, const PoePort &b) { return a.dueNs < b.dueNs; });
    return first->dueNs;
}

} // namespace

uint64_t nextMoment(const Board &board, uint64_t nowNs) {
    const Devices &devices = board.devices;
    // Fans and warmth go on in steps, and the measurements of PoE ports waver with them.
    uint64_t next = (nowNs / kClimateStepNs + 1) * kClimateStepNs;
    for (const uint64_t event :
         {nextPoeEvent(devices.poe), clockNextSecond(devices.clockChip),
          watchdogExpiry(devices.watchdog, devices.cpld.reg[kCpldWatchdog])}) {
        if (event > nowNs)
            next = std::min(next, event);
    }
    return next;
}

} // namespace vb
