// Fault rules as people write them, a word to a line: device, operation, offset, count, time,
// effect. One that is taken comes back from its own words, can be followed, and keeps its count.

#include "fuzz/input.h"
#include "virtual_board/words/fault_text.h"
#include "virtual_board/words/values.h"

namespace {

bool isSame(const vb::FaultRule &left, const vb::FaultRule &right) {
    return vb::faultText(left) == vb::faultText(right);
}

void follow(const vb::FaultRule &rule, fuzz::Input &input) {
    vb::FaultTable table = {};
    fuzz::require(vb::addFault(table, rule) == 1, "a new table has no room");
    fuzz::require(vb::faultsAreConsistent(table), "a rule that was taken cannot be followed");
    for (int i = 0; i < 3; ++i) {
        vb::FaultSubject subject = {rule.device, rule.op};
        subject.offset = input.quantity();
        subject.length = input.quantity();
        subject.path = "/tmp/bsp/devId";
        vb::faultFor(table, subject);
    }
    fuzz::require(vb::removeFault(table, 1), "a rule cannot be removed");
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
        fuzz::require(isSame(rule, vb::parseFault(vb::faultWords(rule))),
                      "a rule does not come back from its words");
        follow(rule, input);
    } catch (const vb::Refused &refusal) {
        fuzz::require(refusal.what()[0] != '\0', "a refusal without a reason");
    }
    return 0;
}
