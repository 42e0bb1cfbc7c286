// `vboard properties`: what boards of all models have.

#include "language/property_names.h"
#include "language/property_values.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/json.h"
#include "virtual_board/command/words.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace vboard {

namespace {

using language::Property;

void printRow(const Property &property) {
    std::printf("%-24s  %-9s  %-22s  %s; %s\n", property.name,
                property.isSettable ? "read, set" : "read", language::modelsText(property.subject),
                language::rangeText(property).c_str(), property.sentence);
}

/** One of the rows that there are. */
const Property &rowNamed(const std::string &name) {
    const auto rows = language::properties();
    return *std::find_if(rows.begin(), rows.end(),
                         [&](const Property &row) { return row.name == name; });
}

void listProperties(const std::string &pattern, bool asJson) {
    const std::string description = textOf([&](char **text, VBoardError *error) {
        return vboardDescribe(pattern.empty() ? nullptr : pattern.c_str(), text, error);
    });
    const auto rows = nlohmann::ordered_json::parse(description);
    if (asJson) {
        printJson(rows);
        return;
    }
    for (const auto &row : rows)
        printRow(rowNamed(row["name"]));
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
