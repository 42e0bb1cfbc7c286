#include "virtual_board/command/step_names.h"

#include "language/texts.h"

namespace vboard {

void StepNames::judge(const Step &step) {
    if (step.label.has_value())
        judgeNew(step);
    if (!step.subject.has_value())
        return;
    const std::string &name = step.subject->text;
    if (step.deed == Deed::ClearFaults && name == kAllFaults) {
        std::erase_if(inForce_, [](const auto &one) { return one.second == Deed::AddFault; });
        return;
    }
    const bool isFault = step.deed == Deed::ClearFaults;
    const auto place = inForce_.find(name);
    if (place == inForce_.end() || (place->second == Deed::AddFault) != isFault)
        complaints_.add(step.subject->place,
                        std::string(isFault ? "no fault" : "no program in the background") +
                            " is called " + language::quoted(name) +
                            " here; an earlier step gives one its name with 'as'");
    else if (step.deed != Deed::Expect)
        inForce_.erase(place);
}

void StepNames::judgeNew(const Step &step) {
    const std::string &name = step.label->text;
    if (name == kAllFaults)
        complaints_.add(step.label->place, "'all' stands for all faults; take another name");
    else if (!names_.insert(name).second)
        complaints_.add(step.label->place,
                        language::quoted(name) + " is the name of another already");
    else
        inForce_.emplace(name, step.deed);
}

} // namespace vboard
