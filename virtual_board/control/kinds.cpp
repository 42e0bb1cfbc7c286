// What boards there can be: models, and the properties that they have.

#include "language/property_names.h"
#include "language/property_values.h"
#include "language/texts.h"
#include "virtual_board/board/models.h"
#include "virtual_board/control/answer.h"
#include "virtual_board/control/given.h"
#include "virtual_board/control/json.h"
#include "virtual_board/words/equipment.h"
#include "virtual_board/words/values.h"

#include <fnmatch.h>

namespace vboard {

namespace {

using Json = nlohmann::ordered_json;
using language::Property;
using language::Type;

/** Rows whose name a pattern fits, or that a name is of; without a pattern all. */
std::vector<const Property *> rowsFor(const std::string &pattern) {
    std::vector<const Property *> rows;
    for (const Property &property : language::properties()) {
        if (pattern.empty() || fnmatch(pattern.c_str(), property.name, 0) == 0 ||
            language::rowOf(pattern) == &property)
            rows.push_back(&property);
    }
    if (rows.empty())
        throw vb::Refused("no property fits " + language::quoted(pattern) +
                          "; 'vboard properties' lists all");
    return rows;
}

const char *typeName(Type type) {
    switch (type) {
    case Type::Number:
    case Type::Register:
    case Type::Decimal:
        return "number";
    case Type::Word:
        return "word";
    case Type::Text:
        return "text";
    case Type::MacAddress:
        return "mac";
    case Type::Time:
        return "time";
    case Type::Pace:
        return "pace";
    case Type::ByteRow:
        break;
    }
    return "bytes";
}

Json modelsWith(const Property &property) {
    Json models = Json::array();
    for (const vb::Model &model : vb::kModels) {
        const language::Equipment equipment = vb::equipmentOf(model);
        if (language::isOn(equipment, property.subject))
            models.push_back(equipment.model);
    }
    return models;
}

Json rowJson(const Property &property) {
    const bool isNumber = property.type == Type::Number || property.type == Type::Register;
    return {{"name", property.name},
            {"type", typeName(property.type)},
            {"unit", *property.unit != '\0' ? Json(property.unit) : Json()},
            {"lowest", isNumber ? Json(property.lowest) : Json()},
            {"highest", isNumber ? Json(property.highest) : Json()},
            {"words", language::wordsOf(property.words)},
            {"settable", property.isSettable},
            {"words_to_set", language::wordsToSet(property)},
            {"untouched", property.idle != nullptr ? Json(property.idle) : Json()},
            {"models", modelsWith(property)},
            {"description", property.sentence}};
}

} // namespace

} // namespace vboard

int32_t vboardModels(VBoardModel **models, uint32_t *count, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(models, "models");
        vboard::require(count, "count");
        std::vector<std::string> ids;
        ids.reserve(vb::kModels.size());
        std::vector<VBoardModel> rows;
        for (const vb::Model &model : vb::kModels) {
            ids.push_back(vb::hex16Text(model.devId));
            rows.push_back({ids.back().c_str(), model.description, model.poePorts,
                            model.supplies.haveBus ? 1 : 0});
        }
        *models = vboard::giveList(rows, {&VBoardModel::id, &VBoardModel::description});
        *count = static_cast<uint32_t>(rows.size());
    });
}

int32_t vboardDescribe(const char *pattern, char **json, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(json, "json");
        auto list = nlohmann::ordered_json::array();
        for (const language::Property *row : vboard::rowsFor(pattern != nullptr ? pattern : ""))
            list.push_back(vboard::rowJson(*row));
        *json = vboard::giveText(vboard::jsonText(list));
    });
}
