#include "virtual_board/words/world.h"

#include "virtual_board/board/circuits.h"
#include "virtual_board/words/bindings.h"
#include "virtual_board/words/equipment.h"
#include "virtual_board/words/values.h"

#include <algorithm>
#include <fnmatch.h>
#include <memory>

namespace vb {

namespace {

using language::PropertyName;
using language::Value;

void bringUpToDate(Board &board) {
    advanceBoard(board, clockNow(board.clock, hostNow()));
}

Property read(const BoardFolder &folder, const PropertyName &name) {
    const language::Property &type = *name.property;
    const Binding &binding = bindingOf(type);
    const PropertyTarget target = {folder, name};
    const Value content = binding.get(target);
    const std::string value = valueText(type, content);
    const bool isIdle = type.idle != nullptr && value == type.idle;
    return {nameText(name), &type,  content,
            value,          isIdle, binding.note != nullptr ? binding.note(target) : ""};
}

/** The properties whose names fit a condition. */
template <typename Fits>
std::vector<Property> select(const BoardFolder &folder, Fits fits) {
    std::vector<Property> found;
    bringUpToDate(*folder.board());
    for (const PropertyName &name : namesOn(equipmentOf(folder))) {
        if (fits(name))
            found.push_back(read(folder, name));
    }
    return found;
}

/** A change that names and values allow. */
struct Change {
    std::string name;
    PropertyName place;
    Value value;
};

Change judge(const Assignment &assignment, const language::Equipment &equipment) {
    const PropertyName place = resolveName(assignment.name, equipment);
    if (!place.property->isSettable)
        throw Refused(assignment.name + " can only be read");
    return language::about(assignment.name, [&] {
        return Change{assignment.name, place, parseValue(*place.property, assignment.value)};
    });
}

/** What changes may change of a board's state. */
class Snapshot {
  public:
    explicit Snapshot(const Board &board) : devices_(board.devices), faults_(board.faults) {}

    void restore(Board &board) const {
        board.devices = devices_;
        board.faults = faults_;
    }

  private:
    Devices devices_;
    FaultTable faults_;
};

/** Does what is to be done outside of the state: all, or nothing. */
void carryOut(std::vector<Deed> &deeds) {
    const auto final = std::stable_partition(
        deeds.begin(), deeds.end(), [](const Deed &deed) { return deed.takeBack != nullptr; });
    auto next = deeds.begin();
    try {
        for (; next != final; ++next)
            next->carryOut();
    } catch (const Refused &) {
        while (next != deeds.begin())
            (--next)->takeBack();
        throw;
    }
    for (; next != deeds.end(); ++next)
        next->carryOut();
}

} // namespace

language::Equipment equipmentOf(const BoardFolder &folder) {
    const Model *model = findModel(folder.board()->header.devId);
    if (model == nullptr)
        throw Refused("the board is of no known model; create it again");
    return equipmentOf(*model);
}

std::vector<Property> properties(const BoardFolder &folder) {
    return select(folder, [](const PropertyName &name) { return !name.property->isLong; });
}

Property namedProperty(const BoardFolder &folder, const std::string &name) {
    const PropertyName found = resolveName(name, equipmentOf(folder));
    bringUpToDate(*folder.board());
    return read(folder, found);
}

std::vector<Property> matchingProperties(const BoardFolder &folder, const std::string &pattern) {
    for (const bool isLong : {false, true}) {
        std::vector<Property> found = select(folder, [&](const PropertyName &name) {
            return name.property->isLong == isLong &&
                   fnmatch(pattern.c_str(), nameText(name).c_str(), 0) == 0;
        });
        if (!found.empty())
            return found;
    }
    throw Refused("no property of model " + equipmentOf(folder).model + " fits '" + pattern +
                  "'; 'vboard properties' lists those of all models");
}

std::vector<Property> selectedProperties(const BoardFolder &folder,
                                         const std::vector<std::string> &words) {
    std::vector<Property> found;
    for (const std::string &word : words) {
        if (!language::isPattern(word)) {
            found.push_back(namedProperty(folder, word));
            continue;
        }
        for (Property &property : matchingProperties(folder, word)) {
            const bool isThere =
                std::any_of(found.begin(), found.end(),
                            [&](const Property &other) { return other.name == property.name; });
            if (!isThere)
                found.push_back(std::move(property));
        }
    }
    return found;
}

std::string property(const BoardFolder &folder, const std::string &name) {
    return namedProperty(folder, name).value;
}

void setProperties(const BoardFolder &folder, const std::vector<Assignment> &assignments) {
    const language::Equipment equipment = equipmentOf(folder);
    std::vector<Change> changes;
    changes.reserve(assignments.size());
    for (const Assignment &assignment : assignments)
        changes.push_back(judge(assignment, equipment));
    Board &board = *folder.board();
    bringUpToDate(board);
    const auto before = std::make_unique<const Snapshot>(board);
    try {
        std::vector<Deed> deeds;
        for (const Change &change : changes) {
            language::about(change.name, [&] {
                bindingOf(*change.place.property).set({folder, change.place, &deeds}, change.value);
            });
            bringUpToDate(board);
        }
        carryOut(deeds);
    } catch (...) { // a setter refuses what this board cannot have
        before->restore(board);
        throw;
    }
}

void setProperty(const BoardFolder &folder, const std::string &name, const std::string &value) {
    setProperties(folder, {{name, value}});
}

} // namespace vb
