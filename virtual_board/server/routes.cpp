#include "virtual_board/server/routes.h"

#include "language/texts.h"
#include "virtual_board/server/answers.h"

#include <algorithm>
#include <string>
#include <vector>

namespace vboard::server {

namespace {

constexpr size_t kMostBody = size_t{1} << 20;
constexpr size_t kMostCaptured = size_t{64} << 20; // a captured unit with its flash

constexpr Parameter kBoard = {
    "board", "the board's name, as api/boards tells it; not needed where a single one is served"};

constexpr Route kRoutes[] = {
    {.method = "GET",
     .path = "/openapi.json",
     .answer = describeInterface,
     .summary = "Describe all this",
     .answerSchema = "Interface"},
    {.method = "GET",
     .path = "/api/boards",
     .answer = listBoards,
     .summary = "List the boards that are served",
     .answerSchema = "Boards"},
    {.method = "POST",
     .path = "/api/boards",
     .answer = makeTwin,
     .summary = "Make a board of a captured unit",
     .answerSchema = "Made",
     .parameters = {{"name", "what the board is called: a new folder in the one that is served",
                     true},
                    {"time", "as the property 'time'; real where it is left out"}},
     .bodySchema = "CapturedUnit",
     .mostBody = kMostCaptured,
     .success = kCreated},
    {.method = "GET",
     .path = "/api/properties",
     .answer = getProperties,
     .summary = "Read properties, all at one moment",
     .answerSchema = "Properties",
     .parameters = {kBoard,
                    {"name", "a name or a pattern, 'fan.*'; without one all that are not too long",
                     false, true}}},
    {.method = "PATCH",
     .path = "/api/properties",
     .answer = changeProperties,
     .summary = "Change properties at one moment, in their order: all of them or none",
     .answerSchema = "Changed",
     .parameters = {kBoard},
     .bodySchema = "Changes",
     .mostBody = kMostBody},
    {.method = "GET",
     .path = "/api/names",
     .answer = describeNames,
     .summary = "Describe the properties that there are",
     .answerSchema = "Names",
     .parameters = {{"name", "a name or a pattern; all without one"}}},
    {.method = "GET",
     .path = "/api/panel",
     .answer = getPanel,
     .summary = "Tell the parts of the front panel and the rear",
     .answerSchema = "Panel",
     .parameters = {kBoard}},
    {.method = "GET",
     .path = "/api/panel.svg",
     .answer = drawPanel,
     .summary = "Draw them",
     .answerSchema = nullptr,
     .parameters = {kBoard, {"style", "no: without the colours, which are in panel.css"}}},
    {.method = "GET",
     .path = "/api/faults",
     .answer = listFaults,
     .summary = "List the rules of which requests go wrong",
     .answerSchema = "Faults",
     .parameters = {kBoard}},
    {.method = "POST",
     .path = "/api/faults",
     .answer = addFault,
     .summary = "Add a rule",
     .answerSchema = "Added",
     .parameters = {kBoard},
     .bodySchema = "Rule",
     .mostBody = kMostBody,
     .success = kCreated},
    {.method = "DELETE",
     .path = "/api/faults",
     .answer = clearFaults,
     .summary = "Remove a rule, or all, and tell those that are left",
     .answerSchema = "Faults",
     .parameters = {kBoard, {"id", "the rule's number; all rules without it"}}},
    {.method = "GET",
     .path = "/api/trace",
     .answer = getTrace,
     .summary = "Read the trace",
     .answerSchema = "Trace",
     .parameters = {kBoard,
                    {"from", "number of the first request; 0 is the oldest that is known"},
                    {"most", "how many at most, up to 1000"},
                    {"last", "in place of 'from': only that many, the newest"}}},
    {.method = "DELETE",
     .path = "/api/trace",
     .answer = clearTrace,
     .summary = "Forget the trace",
     .answerSchema = "Nothing",
     .parameters = {kBoard}},
    {.method = "GET",
     .path = "/api/flash",
     .answer = getFlash,
     .summary = "Tell what the flash holds",
     .answerSchema = "Flash",
     .parameters = {kBoard}},
    {.method = "POST",
     .path = "/api/advance",
     .answer = advance,
     .summary = "Move a clock that does not move by itself",
     .answerSchema = "Clock",
     .parameters = {kBoard},
     .bodySchema = "Advance",
     .mostBody = kMostBody},
    {.method = "GET",
     .path = "/api/effects",
     .answer = describeEffects,
     .summary = "Tell the words of rules: what can go wrong with whose requests",
     .answerSchema = "Effects"},
    {.method = "GET",
     .path = "/api/scenarios",
     .answer = listScenarios,
     .summary = "List the scenarios that may be played, as the board could be played them",
     .answerSchema = "Scenarios",
     .parameters = {kBoard}},
    {.method = "POST",
     .path = "/api/play",
     .answer = play,
     .summary = "Start a scenario; pause, resume or stop the one that is played",
     .answerSchema = "Nothing",
     .parameters = {kBoard},
     .bodySchema = "Play",
     .mostBody = kMostBody},
    {.method = "GET",
     .path = "/api/events",
     .answer = nullptr,
     .summary = "Follow the board: server-sent events",
     .answerSchema = nullptr,
     .parameters = {kBoard}},
};

} // namespace

std::span<const Route> routes() {
    return kRoutes;
}

const Route &routeFor(const std::string &method, const std::string &path) {
    const std::string wanted = method == "HEAD" ? "GET" : method;
    std::vector<std::string> methods;
    for (const Route &route : kRoutes) {
        if (path != route.path)
            continue;
        if (wanted == route.method)
            return route;
        methods.emplace_back(route.method);
    }
    if (methods.empty())
        throw Refusal(kNotFound, VBOARD_E_REFUSED,
                      "there is nothing at " + language::quoted(path) + "; see openapi.json");
    throw Refusal(kNoSuchMethod, VBOARD_E_REFUSED,
                  path + " takes " + language::listed(methods, "and") + ", not " +
                      language::quoted(method));
}

void judgeQuery(const Route &route, const Query &query) {
    for (const auto &[name, value] : query) {
        const bool isKnown = std::any_of(std::begin(route.parameters), std::end(route.parameters),
                                         [&name = name](const Parameter &one) {
                                             return one.name != nullptr && name == one.name;
                                         });
        if (!isKnown)
            throw Refusal(kBadRequest, VBOARD_E_REFUSED,
                          std::string(route.path) + " knows no " + language::quoted(name) +
                              "; see openapi.json");
    }
}

} // namespace vboard::server
