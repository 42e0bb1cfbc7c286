#include "iodbg/poe/board.h"

#include "bsp.h"
#include "iodbg/core/failure.h"
#include "support/board_map.h"

#include <algorithm>

namespace iodbg {

namespace {

void addRange(std::vector<uint32_t> &ports, const std::string &word) {
    const auto [first, last] = language::parseRange(word, 1, BSP_POE_PORTS_MAX, "ports");
    for (uint32_t port = first; port <= last; ++port)
        ports.push_back(port);
}

} // namespace

Model requirePoe() {
    Model model;
    require(readModel(model), "read the device id");
    if (model.poePorts == 0)
        throw Failure(ExitCode::Board, "this model has no PoE; 'iodbg show' tells which it is");
    uint32_t presence = BSP_POE_CONTROLLER_MISSING;
    require(bspPoeOnlineGet(&presence), "ask whether the PoE controller is there");
    if (presence != BSP_POE_CONTROLLER_PRESENT)
        throw Failure(ExitCode::Board,
                      "the PoE controller is missing (CPLD register " +
                          std::to_string(bsp::kPoeAbsence.reg) + ", bit " +
                          std::to_string(bsp::kPoeAbsence.bit) +
                          " is set); check that its board is plugged and has power");
    return model;
}

void requirePort(uint32_t port, uint32_t portCount) {
    if (port > portCount)
        throw Failure::usage("there is no PoE port " + std::to_string(port) +
                             "; this board has ports 1 to " + std::to_string(portCount));
}

PortList::PortList(const std::string &word) : isAll_(word == "all") {
    if (isAll_)
        return;
    size_t comma = 0;
    for (size_t start = 0; comma != std::string::npos; start = comma + 1) {
        comma = word.find(',', start);
        addRange(ports_, word.substr(start, comma - start));
    }
    std::sort(ports_.begin(), ports_.end());
    ports_.erase(std::unique(ports_.begin(), ports_.end()), ports_.end());
}

std::vector<uint32_t> PortList::within(uint32_t portCount) const {
    if (isAll_) {
        std::vector<uint32_t> ports(portCount);
        for (uint32_t i = 0; i < portCount; ++i)
            ports[i] = i + 1;
        return ports;
    }
    requirePort(ports_.back(), portCount); // the highest
    return ports_;
}

Parser portList(PortList &target) {
    return offering("all", [&target](const std::string &word) { target = PortList(word); });
}

Parser portNumber(uint32_t &target) {
    return numberFromOne(target, BSP_POE_PORTS_MAX);
}

} // namespace iodbg
