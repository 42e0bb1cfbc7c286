#include "virtual_board/command/hands.h"

#include "virtual_board/command/rules.h"

namespace vboard {

void Hands::set(const std::vector<PlacedChange> &changes) const {
    std::vector<VBoardChange> list;
    list.reserve(changes.size());
    for (const PlacedChange &change : changes)
        list.push_back({change.name.c_str(), change.value.c_str()});
    call([&](VBoardError *error) {
        return vboardSet(board_, list.data(), static_cast<uint32_t>(list.size()), error);
    });
}

void Hands::addFault(const Step &step) {
    const uint32_t id = addRule(board_, step.fault);
    if (step.label.has_value())
        faults_[step.label->text] = id;
}

void Hands::clearFaults(const std::string &name) {
    std::vector<uint32_t> numbers;
    if (name != kAllFaults) {
        const auto found = faults_.find(name);
        if (found == faults_.end())
            return; // where it is tried: the rule was refused
        numbers.push_back(found->second);
    }
    call([&](VBoardError *error) {
        return vboardClearFaults(board_, numbers.data(), static_cast<uint32_t>(numbers.size()),
                                 error);
    });
}

void Hands::advance(uint64_t ns, uint64_t patienceNs) const {
    call([&](VBoardError *error) { return vboardAdvance(board_, ns, patienceNs, error); });
}

} // namespace vboard
