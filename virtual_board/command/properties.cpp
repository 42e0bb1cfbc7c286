// `vboard properties`: what boards of all models have.

#include "virtual_board/command/commands.h"
#include "virtual_board/command/json.h"
#include "virtual_board/command/words.h"
#include "virtual_board/words/equipment.h"
#include "virtual_board/words/values.h"
#include "virtual_board/words/world.h"

#include <cstdio>
#include <fnmatch.h>
#include <memory>

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

void printRow(const Property &property) {
    std::printf("%-24s  %-9s  %-22s  %s; %s\n", property.name,
                property.isSettable ? "read, set" : "read", language::modelsText(property.subject),
                language::rangeText(property).c_str(), property.sentence);
}

void listProperties(const std::string &pattern, bool asJson) {
    const std::vector<const Property *> rows = rowsFor(pattern);
    Json list = Json::array();
    for (const Property *property : rows) {
        if (asJson)
            list.push_back(rowJson(*property));
        else
            printRow(*property);
    }
    if (asJson)
        printJson(list);
}

void defineProperties(Command &command) {
    struct Arguments {
        std::string pattern;
        bool asJson = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    std::vector<std::string> names;
    for (const Property &property : language::properties())
        names.emplace_back(property.name);
    command.optionalArgument("PATTERN", "Only those that fit, or that of a name",
                             {text(arguments->pattern), {names, Offers::Files::None, nullptr}});
    addJson(command, arguments->asJson);
    command.detail("Each line tells a name, whether it can be set, on which models it is, what it "
                   "holds, and what it means.");
    command.example("vboard properties")
        .example("vboard properties 'sfp.*'")
        .example("vboard properties fan.1.speed --json");
    command.does([arguments] { listProperties(arguments->pattern, arguments->asJson); });
}

} // namespace

void addProperties(Command &root) {
    root.command("properties", "List what boards of all models have", defineProperties);
}

} // namespace vboard
