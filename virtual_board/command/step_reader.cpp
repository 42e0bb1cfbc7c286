#include "virtual_board/command/step_reader.h"

#include "language/property_values.h"
#include "language/texts.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace vboard {

using language::Refused;

namespace {

Strings inQuotes(Strings words) {
    for (std::string &word : words)
        word = language::quoted(word);
    return words;
}

Deed deedOf(std::string_view word) {
    for (const Deed deed :
         {Deed::Set, Deed::AddFault, Deed::ClearFaults, Deed::Advance, Deed::Run, Deed::Stop}) {
        if (word == wordOf(deed))
            return deed;
    }
    return Deed::Expect;
}

} // namespace

Step StepReader::read(const toml::table &table) {
    Step step;
    keys_.clear();
    hasUnknown_ = false;
    for (const auto &[key, node] : table)
        take(step, key, node);
    // In the order of the file.
    std::sort(keys_.begin(), keys_.end(),
              [](const Found &a, const Found &b) { return a.place < b.place; });
    judgeCompany();
    findDeed(step, placeOf(table));
    judgeMoment(step);
    names_.judge(step);
    return step;
}

void StepReader::take(Step &step, const toml::key &key, const toml::node &node) {
    const StepKey *row = stepKey(key.str());
    if (row == nullptr) {
        complaints_.add(placeOf(key), unknownStepKey(std::string(key.str())));
        hasUnknown_ = true;
        return;
    }
    keys_.push_back({row, placeOf(key)});
    try {
        row->take(step, node, complaints_);
    } catch (const Refused &refusal) {
        complaints_.add(placeOf(key),
                        std::string(row->name) + ": " + refusal.what() + ", as in " + row->example);
    }
}

const StepReader::Found *StepReader::found(std::string_view name) const {
    const auto place = std::find_if(keys_.begin(), keys_.end(),
                                    [name](const Found &one) { return one.key->name == name; });
    return place != keys_.end() ? &*place : nullptr;
}

/** Looks at which keys stand together. */
void StepReader::judgeCompany() {
    for (const Found &one : keys_) {
        const Strings only = language::wordsOf(one.key->only);
        const bool isAlone = std::none_of(only.begin(), only.end(), [this](const auto &other) {
            return found(other) != nullptr;
        });
        if (*one.key->only != '\0' && isAlone)
            complaints_.add(one.place, language::quoted(one.key->name) + " goes with " +
                                           language::listed(inQuotes(only), "or"));
    }
    for (const NotTogether &pair : notTogether()) {
        const Found *first = found(pair.first);
        const Found *second = found(pair.second);
        const bool isThere = *pair.where == '\0' || found(pair.where) != nullptr;
        if (first != nullptr && second != nullptr && isThere)
            complaints_.add(std::max(first->place, second->place),
                            language::quoted(pair.first) + " and " + language::quoted(pair.second) +
                                " do not go together: " + pair.reason);
    }
}

/** Finds what the step does: one thing, but for a program and what it is to print. */
void StepReader::findDeed(Step &step, const Place &start) {
    std::vector<Found> deeds;
    std::copy_if(keys_.begin(), keys_.end(), std::back_inserter(deeds),
                 [](const Found &one) { return one.key->isDeed; });
    if (found("run") != nullptr)
        std::erase_if(deeds,
                      [](const Found &one) { return std::string_view(one.key->name) == "expect"; });
    for (size_t i = 1; i < deeds.size(); ++i)
        complaints_.add(deeds[i].place, language::quoted(deeds[i].key->name) +
                                            " is one thing too many: a step does one, this one "
                                            "does '" +
                                            deeds[0].key->name + "'; begin another with [[step]]");
    if (!deeds.empty()) {
        step.deed = deedOf(deeds[0].key->name);
        step.place = deeds[0].place;
        return;
    }
    const auto waits = std::find_if(keys_.begin(), keys_.end(), [](const Found &one) {
        const std::string_view name = one.key->name;
        return name == "at" || name == "after" || name == "when";
    });
    step.place = waits != keys_.end() ? waits->place : start;
    if (waits == keys_.end() && !hasUnknown_)
        complaints_.add(start, "this step does nothing: give it 'set', 'fault', 'clear', "
                               "'advance', 'run', 'stop' or 'expect'");
}

/** Steps are done in their order, whatever their times are. */
void StepReader::judgeMoment(const Step &step) {
    if (!step.atNs.has_value())
        return;
    if (*step.atNs < lastAtNs_)
        complaints_.add(found("at")->place,
                        "an earlier step is done later: steps are done in their order");
    lastAtNs_ = std::max(lastAtNs_, *step.atNs);
}

} // namespace vboard
