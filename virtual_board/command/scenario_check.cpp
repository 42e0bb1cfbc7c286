#include "virtual_board/command/scenario_check.h"

#include "command_line/closest_word.h"
#include "language/conditions.h"
#include "language/property_names.h"
#include "language/refused.h"
#include "language/texts.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/complaints.h"
#include "virtual_board/command/environment.h"
#include "virtual_board/command/hands.h"
#include "virtual_board/command/tried_board.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <unistd.h>
#include <vector>

namespace vboard {

namespace {

Strings namesIn(const std::string &condition) {
    Strings names;
    for (const language::Conjunction &comparisons : language::parseCondition(condition)) {
        for (const language::Comparison &comparison : comparisons)
            names.push_back(comparison.name);
    }
    return names;
}

class Checker {
  public:
    explicit Checker(const std::string &folder)
        : copy_(folder), board_(copy_.get()), hands_(board_) {}

    void check(const Step &step) {
        if (step.when.has_value())
            checkCondition(*step.when);
        switch (step.deed) {
        case Deed::Set:
            checkChanges(step);
            break;
        case Deed::AddFault:
            complaints_.about(step.place, [&] { hands_.addFault(step); });
            break;
        case Deed::ClearFaults:
            complaints_.about(step.place, [&] { hands_.clearFaults(step.subject->text); });
            break;
        case Deed::Advance: // which not every clock lets be done to it
            complaints_.about(step.place, [&] { hands_.advance(0); });
            break;
        case Deed::Run:
            complaints_.about(step.place, [&] { checkProgram(step.program[0]); });
            break;
        case Deed::Expect:
            if (!step.subject.has_value())
                checkCondition(*step.expected);
            break;
        case Deed::Wait:
        case Deed::Stop:
            break;
        }
    }

    void refuse(const std::string &file) { complaints_.refuse(file); }

  private:
    /** Judges what is said of properties; for a name that there is nowhere another is guessed. */
    template <typename Work>
    void aboutProperties(const Strings &names, const Work &work) const {
        try {
            work();
        } catch (const CallFailed &failure) {
            const auto unknown = std::find_if(names.begin(), names.end(), [](const auto &name) {
                return language::rowOf(name) == nullptr;
            });
            const std::string close =
                unknown == names.end() ? "" : command_line::closestWord(*unknown, known());
            if (failure.status() != VBOARD_E_REFUSED || close.empty())
                throw;
            throw language::Refused(failure.what() + (" (did you mean '" + close + "'?)"));
        }
    }

    /** The properties that the board has. */
    Strings known() const {
        Strings names;
        for (const VBoardProperty &property : board_.properties({}))
            names.emplace_back(property.name);
        return names;
    }

    void checkCondition(const PlacedText &condition) {
        complaints_.about(condition.place, [&] {
            aboutProperties(namesIn(condition.text), [&] { tryCondition(condition); });
        });
    }

    void tryCondition(const PlacedText &condition) const {
        VBoardError error = {};
        const int32_t status = vboardWait(board_, condition.text.c_str(), 0, &error);
        if (status != VBOARD_OK && status != VBOARD_E_TIMEOUT)
            throw CallFailed(error);
    }

    /** All at once, as they will be done; where that is refused, one by one, to tell which. */
    void checkChanges(const Step &step) {
        Complaints ofAll;
        ofAll.about(step.place, [&] { hands_.set(step.changes); });
        if (ofAll.isEmpty())
            return;
        Complaints ofEach;
        for (const PlacedChange &change : step.changes)
            ofEach.about(change.place,
                         [&] { aboutProperties({change.name}, [&] { hands_.set({change}); }); });
        complaints_.add(ofEach.isEmpty() ? ofAll : ofEach);
    }

    void checkProgram(const std::string &name) const {
        // One with a path can be of the board, or be made by a step before.
        if (name.find('/') != std::string::npos)
            return;
        environmentOf(board_, name.c_str());
        if (findInPath(name).empty())
            throw language::Refused("there is no program " + language::quoted(name) +
                                    " in the folders of PATH");
    }

    const TriedBoard copy_;
    const Board &board_;
    Hands hands_;
    Complaints complaints_;
};

} // namespace

void checkScenario(const Scenario &scenario, const std::string &folder) {
    Checker checker(folder);
    for (const Step &step : scenario.steps)
        checker.check(step);
    checker.refuse(scenario.file);
}

} // namespace vboard
