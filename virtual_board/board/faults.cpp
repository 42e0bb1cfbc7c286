#include "virtual_board/board/faults.h"

#include "virtual_board/devices/poe_port.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <iterator>

namespace vb {

namespace {

bool isOf(FaultOp op, const FaultRule &rule) {
    const bool isChange = op == FaultOp::Program || op == FaultOp::Erase;
    return rule.op == FaultOp::Any || rule.op == op || (rule.op == FaultOp::Change && isChange);
}

bool isAt(const FaultRule &rule, const FaultSubject &subject) {
    if (rule.device == FaultDevice::Mtd)
        return rule.offset >= subject.offset && rule.offset - subject.offset < subject.length;
    return rule.offset == subject.offset;
}

bool concerns(const FaultRule &rule, const FaultSubject &subject) {
    if (rule.device != subject.device)
        return false;
    if (!isOf(subject.op, rule))
        return false;
    if (rule.hasAddress != 0 && (rule.bus != subject.bus || rule.channel != subject.channel ||
                                 rule.devAddr != subject.devAddr))
        return false;
    if (rule.hasOffset != 0 && !isAt(rule, subject))
        return false;
    return rule.device != FaultDevice::File || std::strcmp(rule.path, subject.path) == 0;
}

bool isDue(const FaultRule &rule) {
    switch (rule.when) {
    case FaultWhen::Once:
        return rule.matched == rule.nth;
    case FaultWhen::Every:
        return rule.matched % rule.nth == 0;
    case FaultWhen::FromOn:
        return rule.matched >= rule.nth;
    }
    return false;
}

bool isPossible(const FaultRule &rule) {
    const FaultArgument argument = faultArgument(rule.effect);
    return rule.device <= FaultDevice::Console && rule.op <= FaultOp::Map &&
           rule.when <= FaultWhen::FromOn && rule.effect <= FaultEffect::PowerCut &&
           rule.hasAddress <= 1 && rule.hasOffset <= 1 && rule.nth != 0 &&
           rule.argument >= argument.lowest && rule.argument <= argument.highest &&
           rule.mask <= UINT8_MAX && rule.path[kFaultPathSize - 1] == '\0';
}

long countOf(const FaultTable &table, uint32_t id) {
    return std::count_if(std::begin(table.rule), std::end(table.rule),
                         [id](const FaultRule &rule) { return rule.id == id; });
}

uint32_t newId(FaultTable &table) {
    do
        ++table.lastId;
    while (table.lastId == 0 || countOf(table, table.lastId) != 0);
    return table.lastId;
}

/** Puts a whole rule to use, or takes it out of use before it is gone: a process may be killed
 * here. */
void use(FaultRule &place, uint32_t id) {
    std::atomic_signal_fence(std::memory_order_seq_cst);
    place.id = id;
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

} // namespace

FaultArgument faultArgument(FaultEffect effect) {
    constexpr FaultArgument kErrno = {1, 4095};
    constexpr FaultArgument kTransferred = {0, 4095}; // an index, or a number of bytes
    switch (effect) {
    case FaultEffect::OpenFails:
    case FaultEffect::IoctlFails:
    case FaultEffect::Fails:
        return kErrno;
    case FaultEffect::Short:
    case FaultEffect::Corrupt:
        return kTransferred;
    case FaultEffect::LateAnswer:
        return {2, UINT8_MAX};
    case FaultEffect::BadPort:
        return {0, kPoePorts - 1};
    case FaultEffect::PowerCut:
        return {0, INT32_MAX};
    default:
        return {INT32_MIN, INT32_MAX};
    }
}

uint32_t addFault(FaultTable &table, const FaultRule &rule) {
    for (FaultRule &place : table.rule) {
        if (place.id != 0)
            continue;
        place = rule;
        place.matched = 0;
        place.fired = 0;
        use(place, newId(table));
        mendFaults(table);
        return place.id;
    }
    return 0;
}

bool removeFault(FaultTable &table, uint32_t id) {
    for (FaultRule &place : table.rule) {
        if (id == 0 || place.id != id)
            continue;
        use(place, 0);
        place = FaultRule{};
        mendFaults(table);
        return true;
    }
    return false;
}

bool faultsAreConsistent(const FaultTable &table) {
    for (const FaultRule &rule : table.rule) {
        if (rule.id != 0 && (!isPossible(rule) || countOf(table, rule.id) != 1))
            return false;
    }
    return true;
}

void mendFaults(FaultTable &table) {
    const auto count =
        std::count_if(std::begin(table.rule), std::end(table.rule), [](const FaultRule &rule) {
            return rule.id != 0 && rule.device == FaultDevice::File;
        });
    table.fileRules = static_cast<uint32_t>(count);
}

const FaultRule *faultFor(FaultTable &table, const FaultSubject &subject) {
    FaultRule *tripped = nullptr;
    for (FaultRule &rule : table.rule) {
        if (rule.id == 0 || !concerns(rule, subject))
            continue;
        ++rule.matched;
        if (tripped == nullptr && isDue(rule)) {
            ++rule.fired;
            tripped = &rule;
        }
    }
    return tripped;
}

} // namespace vb
