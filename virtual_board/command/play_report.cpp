#include "virtual_board/command/play_report.h"

#include "language/texts.h"
#include "language/times.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace vboard {

namespace {

using Json = nlohmann::ordered_json;

std::string printed(const Json &object) {
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

/** An empty text is null. */
Json optional(const std::string &text) {
    return text.empty() ? Json() : Json(text);
}

/** What a step says by itself. */
Json saidOf(const Step &step, size_t number) {
    return {{"event", "step"},
            {"step", number},
            {"line", step.place.line},
            {"title", optional(step.title)},
            {"does", wordOf(step.deed)},
            {"text", deedText(step)},
            {"moment", optional(momentText(step))}};
}

/** "12.345" */
std::string timeText(uint64_t ns) {
    constexpr size_t kFinerDigits = 6;
    const std::string text = language::secondsText(ns);
    return text.substr(0, text.size() - kFinerDigits);
}

/** What a step is called: its title, or else what it does. */
std::string nameOf(const Step &step) {
    constexpr size_t kLongest = 100;
    const std::string text = !step.title.empty() ? step.title : stepText(step);
    return language::shortened(language::printable(text), kLongest);
}

std::string line(const std::string &time, const char *result, const Step &step) {
    char text[64];
    std::snprintf(text, sizeof(text), "%11s  %-6s  line %-4u ", time.c_str(), result,
                  step.place.line);
    return text + nameOf(step);
}

} // namespace

std::string stepLine(const Outcome &outcome) {
    const bool isPassed = outcome.reason.empty();
    return line(timeText(outcome.timeNs), isPassed ? "passed" : "FAILED", *outcome.step) + "\n";
}

std::string stepJson(const Outcome &outcome) {
    Json object = saidOf(*outcome.step, outcome.number);
    object["time_ns"] = outcome.timeNs;
    object["passed"] = outcome.reason.empty();
    object["reason"] = optional(outcome.reason);
    return printed(object);
}

std::string scenarioJson(const Scenario &scenario) {
    std::string text = printed({{"event", "scenario"},
                                {"file", scenario.file},
                                {"title", optional(scenario.title)},
                                {"steps", scenario.steps.size()}});
    size_t number = 0;
    for (const Step &step : scenario.steps)
        text += printed(saidOf(step, ++number));
    return text;
}

std::string verdictLine(const Scenario &scenario, const Outcome &outcome) {
    const std::string count = std::to_string(scenario.steps.size());
    const std::string time = timeText(outcome.timeNs) + " s on the board's clock\n";
    if (outcome.step == nullptr)
        return "passed: " + count + " steps, " + time;
    return "FAILED: " + placeText(scenario, *outcome.step) + ", " + std::to_string(outcome.number) +
           " of " + count + " steps passed, " + time;
}

std::string verdictJson(const Scenario &scenario, const Outcome &outcome) {
    const bool isPassed = outcome.step == nullptr;
    return printed({{"event", "verdict"},
                    {"file", scenario.file},
                    {"title", optional(scenario.title)},
                    {"steps", scenario.steps.size()},
                    {"steps_passed", outcome.number},
                    {"time_ns", outcome.timeNs},
                    {"passed", isPassed},
                    {"line", isPassed ? Json() : Json(outcome.step->place.line)},
                    {"reason", optional(outcome.reason)}});
}

std::string underWay(const Step &step) {
    return line("", "...", step);
}

} // namespace vboard
