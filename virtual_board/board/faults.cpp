#include "virtual_board/board/faults.h"

#include <cstring>

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

} // namespace

uint32_t addFault(FaultTable &table, const FaultRule &rule) {
    for (FaultRule &place : table.rule) {
        if (place.id != 0)
            continue;
        place = rule;
        place.id = ++table.lastId;
        place.matched = 0;
        place.fired = 0;
        if (rule.device == FaultDevice::File)
            ++table.fileRules;
        return place.id;
    }
    return 0;
}

bool removeFault(FaultTable &table, uint32_t id) {
    for (FaultRule &place : table.rule) {
        if (id == 0 || place.id != id)
            continue;
        if (place.device == FaultDevice::File)
            --table.fileRules;
        place = FaultRule{};
        return true;
    }
    return false;
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
