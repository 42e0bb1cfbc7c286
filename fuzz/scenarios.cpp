// Files of `vboard play`, and what programs print: its title is taken for what one has printed.

#include "fuzz/input.h"
#include "language/refused.h"
#include "virtual_board/command/json_condition.h"
#include "virtual_board/command/play_report.h"
#include "virtual_board/command/scenario_file.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

namespace {

constexpr char kName[] = "x.toml";

bool isInFile(const vboard::Place &place, const std::string &content) {
    const auto lines = std::count(content.begin(), content.end(), '\n') + 1;
    return place.line >= 1 && place.line <= lines && place.column >= 1;
}

void judge(const vboard::Step &step, const nlohmann::json &printed) {
    if (!step.expected.has_value())
        return;
    const language::Condition condition = language::parseCondition(step.expected->text);
    vboard::holds(condition, printed);
    fuzz::require(!vboard::membersText(condition, printed).empty(), "no member is told");
}

void tell(const vboard::Scenario &scenario, const vboard::Step &step) {
    const vboard::Outcome outcome = {&step, 1, 0, scenario.title};
    for (const std::string &line :
         {vboard::stepJson(outcome), vboard::verdictJson(scenario, outcome)})
        fuzz::require(nlohmann::json::parse(line, nullptr, false).is_object(),
                      "what is printed is no JSON");
    const std::string line = vboard::stepLine(outcome);
    fuzz::require(line.find('\n') == line.size() - 1 && line.find('\x1b') == std::string::npos,
                  "a step is no line");
}

void use(const std::string &content) {
    const vboard::Scenario scenario = vboard::parseScenario(kName, content);
    fuzz::require(!scenario.steps.empty(), "a scenario without steps is taken");
    const auto printed = nlohmann::json::parse(scenario.title, nullptr, false);
    for (const vboard::Step &step : scenario.steps) {
        fuzz::require(isInFile(step.place, content), "a step is nowhere");
        fuzz::require(!vboard::stepText(step).empty(), "a step that no words are for");
        judge(step, printed);
        tell(scenario, step);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    const std::string content(bytes, bytes + size);
    try {
        use(content);
    } catch (const language::Refused &refused) {
        fuzz::require(std::string(refused.what()).find(kName) == 0, "a refusal without a place");
    }
    return 0;
}
