// Properties of a board.

#include "virtual_board/control/answer.h"
#include "virtual_board/control/given.h"
#include "virtual_board/control/handle.h"
#include "virtual_board/control/json.h"
#include "virtual_board/words/world.h"

namespace vboard {

namespace {

VBoardProperty *give(const std::vector<vb::Property> &properties) {
    std::vector<std::string> json;
    json.reserve(properties.size());
    std::vector<VBoardProperty> rows;
    rows.reserve(properties.size());
    for (const vb::Property &property : properties) {
        json.push_back(jsonText(language::valueJson(*property.type, property.content)));
        rows.push_back({property.name.c_str(), property.value.c_str(), json.back().c_str(),
                        property.note.c_str(), property.isIdle ? 1 : 0});
    }
    return giveList(rows, {&VBoardProperty::name, &VBoardProperty::value, &VBoardProperty::json,
                           &VBoardProperty::note});
}

std::vector<vb::Property> readProperties(const vb::BoardFolder &folder,
                                         const std::vector<std::string> &names) {
    const LockedBoard board(folder);
    return names.empty() ? vb::properties(folder) : vb::selectedProperties(folder, names);
}

} // namespace

} // namespace vboard

int32_t vboardGet(VBoard *board, const char *const *names, uint32_t nameCount,
                  VBoardProperty **properties, uint32_t *count, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        vboard::require(properties, "properties");
        vboard::require(count, "count");
        std::vector<std::string> words;
        for (uint32_t i = 0; i < nameCount; ++i) {
            vboard::require(names, "names");
            vboard::require(names[i], "a name");
            words.emplace_back(names[i]);
        }
        const std::vector<vb::Property> found = vboard::readProperties(board->folder, words);
        *properties = vboard::give(found);
        *count = static_cast<uint32_t>(found.size());
    });
}

int32_t vboardSet(VBoard *board, const VBoardChange *changes, uint32_t count, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        std::vector<vb::Assignment> assignments;
        for (uint32_t i = 0; i < count; ++i) {
            vboard::require(changes, "changes");
            vboard::require(changes[i].name, "a name");
            vboard::require(changes[i].value, "a value");
            assignments.push_back({changes[i].name, changes[i].value});
        }
        const vboard::LockedBoard locked(board->folder);
        vb::setProperties(board->folder, assignments);
        locked.tellOfChange();
    });
}
