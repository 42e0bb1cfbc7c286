// Scenarios: which there are, and how they are played.

#include "virtual_board/server/answers.h"
#include "virtual_board/server/asked.h"

namespace vboard::server {

Response listScenarios(Services &services, const Asked &asked) {
    return jsonResponse({{"scenarios", services.scenarios.list(boardFolder(services, asked))}});
}

Response play(Services &services, const Asked &asked) {
    const std::string folder = boardFolder(services, asked);
    const Json body = objectOfBody(asked, {"action", "scenario"});
    const Json action = body.value("action", Json());
    const Json scenario = body.value("scenario", Json());
    if (!action.is_string())
        throw Refusal(kBadRequest, VBOARD_E_REFUSED, "action is start, pause, resume or stop");
    if (action == "start" && !scenario.is_number_unsigned())
        throw Refusal(kBadRequest, VBOARD_E_REFUSED,
                      "scenario is missing: the id that api/scenarios tells");
    if (action == "start")
        services.plays.start(folder, scenario.get<size_t>());
    else
        services.plays.change(folder, action.get<std::string>());
    return jsonResponse(Json::object());
}

} // namespace vboard::server
