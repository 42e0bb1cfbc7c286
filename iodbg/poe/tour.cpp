#include "iodbg/poe/tour.h"

#include "bsp.h"
#include "iodbg/poe/controller.h"

namespace iodbg {

namespace {
constexpr uint32_t kPortsEachTime = 4;
}

void PoeTour::add(Report &report, uint32_t ports) {
    Section section = {"poe", "PoE", {}};
    if (addPoePresence(report, section)) {
        const size_t failuresBefore = report.failures.size();
        addItems(report, section, kPoePowerItems);
        if (report.failures.size() == failuresBefore) // else it would answer for no port either
            addPorts(report, section, ports);
    }
    report.parts.emplace_back(section);
}

void PoeTour::addPorts(Report &report, Section &section, uint32_t ports) {
    int32_t status = BSP_OK;
    for (uint32_t i = 0; i < kPortsEachTime && status == BSP_OK; ++i) {
        uint32_t disconnect = 0;
        status = ioPoePortDisconnectGet(next_, &disconnect);
        isDelivering_[next_] = status == BSP_OK && disconnect == BSP_POE_DELIVERING;
        next_ = next_ % ports + 1;
    }
    std::vector<int64_t> on;
    for (const auto &[port, isDelivering] : isDelivering_) {
        if (isDelivering)
            on.push_back(port);
    }
    section.add("ports_on", "Ports with power",
                report.tried(section.path("ports_on"), status, listCell(on)));
    const auto asked = static_cast<int64_t>(isDelivering_.size());
    section.add("ports_asked", "Ports asked so far",
                {std::to_string(asked) + " of " + std::to_string(ports), asked});
}

} // namespace iodbg
