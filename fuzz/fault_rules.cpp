// Fault rules as people write them, a word to a line: device, operation, offset, count, time,
// effect. One that is taken comes back from its own words, fires when it is due, and counts.

#include "fuzz/input.h"
#include "virtual_board/words/fault_text.h"
#include "virtual_board/words/values.h"

namespace {

using fuzz::require;

bool isSame(const vb::FaultRule &left, const vb::FaultRule &right) {
    return vb::faultText(left) == vb::faultText(right);
}

/** A request that the rule is for. */
vb::FaultSubject subjectOf(const vb::FaultRule &rule) {
    vb::FaultSubject subject = {rule.device, rule.op};
    if (rule.op == vb::FaultOp::Any)
        subject.op = vb::FaultOp::Read;
    if (rule.op == vb::FaultOp::Change)
        subject.op = vb::FaultOp::Erase;
    subject.bus = rule.bus;
    subject.channel = rule.channel;
    subject.devAddr = rule.devAddr;
    subject.offset = rule.offset;
    subject.length = 1;
    subject.path = rule.path;
    return subject;
}

/** Makes one thing of a request another; whether the rule is for it all the same. */
bool change(vb::FaultSubject &subject, const vb::FaultRule &rule, uint32_t what) {
    switch (what) {
    case 1:
        subject.device =
            rule.device == vb::FaultDevice::Gpio ? vb::FaultDevice::Cpld : vb::FaultDevice::Gpio;
        return false;
    case 2:
        subject.op = vb::FaultOp::Map;
        return rule.op == vb::FaultOp::Any || rule.op == vb::FaultOp::Map;
    case 3:
        ++subject.offset;
        return rule.hasOffset == 0;
    case 4:
        ++subject.devAddr;
        return rule.hasAddress == 0;
    case 5:
        ++subject.bus;
        return rule.hasAddress == 0;
    case 6:
        ++subject.channel;
        return rule.hasAddress == 0;
    case 7:
        subject.path = "/another";
        return rule.device != vb::FaultDevice::File || std::strcmp(rule.path, subject.path) == 0;
    default:
        return true;
    }
}

bool isDue(const vb::FaultRule &rule, uint32_t matched) {
    switch (rule.when) {
    case vb::FaultWhen::Once:
        return matched == rule.nth;
    case vb::FaultWhen::Every:
        return matched % rule.nth == 0;
    default:
        return matched >= rule.nth;
    }
}

void follow(const vb::FaultRule &wanted, fuzz::Input &input) {
    constexpr int kRequests = 12;
    vb::FaultTable table = {};
    require(vb::addFault(table, wanted) == 1, "a new table has no room");
    require(vb::faultsAreConsistent(table), "a rule that was taken cannot be followed");
    vb::FaultRule &rule = table.rule[0];
    if (input.below(2) == 1)
        rule.matched = rule.nth - 1; // however many those are
    uint32_t matched = rule.matched, fired = 0;
    for (int i = 0; i < kRequests; ++i) {
        vb::FaultSubject subject = subjectOf(rule);
        const bool isMatch = change(subject, rule, input.below(16));
        matched += isMatch;
        const bool fires = isMatch && isDue(rule, matched);
        fired += fires;
        require((vb::faultFor(table, subject) != nullptr) == fires,
                "a rule fires where it is not due, or does not where it is");
        require(rule.matched == matched && rule.fired == fired, "a rule counts wrongly");
    }
    require(vb::removeFault(table, 1), "a rule cannot be removed");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    fuzz::Input input(bytes, size);
    vb::FaultWords words;
    for (std::string *word :
         {&words.device, &words.op, &words.offset, &words.nth, &words.when, &words.effect})
        *word = input.line();
    try {
        const vb::FaultRule rule = vb::parseFault(words);
        require(isSame(rule, vb::parseFault(vb::faultWords(rule))),
                "a rule does not come back from its words");
        follow(rule, input);
    } catch (const vb::Refused &refusal) {
        require(refusal.what()[0] != '\0', "a refusal without a reason");
    }
    return 0;
}
