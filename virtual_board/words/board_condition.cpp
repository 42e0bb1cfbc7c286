#include "virtual_board/words/board_condition.h"

#include <algorithm>

namespace vb {

BoardCondition::BoardCondition(const BoardFolder &folder, const std::string &text)
    : folder_(folder) {
    const language::Equipment equipment = equipmentOf(folder);
    for (const language::Conjunction &conjunction : language::parseCondition(text)) {
        Terms &terms = alternatives_.emplace_back();
        for (const language::Comparison &comparison : conjunction) {
            const language::PropertyName name = resolveName(comparison.name, equipment);
            terms.push_back(
                {comparison.name, comparison.relation, comparedValue(*name.property, comparison)});
        }
    }
}

bool BoardCondition::holds() const {
    const auto termHolds = [this](const Term &term) {
        const Property found = namedProperty(folder_, term.name);
        return language::holds(*found.type, found.content, term.relation, term.value);
    };
    return std::any_of(alternatives_.begin(), alternatives_.end(), [&](const Terms &terms) {
        return std::all_of(terms.begin(), terms.end(), termHolds);
    });
}

std::string BoardCondition::state() const {
    std::vector<std::string> told;
    std::string text;
    for (const Terms &terms : alternatives_) {
        for (const Term &term : terms) {
            if (std::find(told.begin(), told.end(), term.name) != told.end())
                continue;
            told.push_back(term.name);
            text += (text.empty() ? "" : ", ") + term.name + " is " + property(folder_, term.name);
        }
    }
    return text;
}

} // namespace vb
