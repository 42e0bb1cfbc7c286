#include "virtual_board/server/scenarios.h"

#include "language/refused.h"
#include "virtual_board/server/child_process.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace vboard::server {

namespace {

constexpr int kLookEveryMs = 100;
constexpr char kRun[] = "run"; // what the program calls a step that runs one

void take(const std::string &line, ScenarioView &view) {
    const Json object = Json::parse(line, nullptr, false);
    if (!object.is_object())
        return;
    const bool isStep = object.value("event", "") == "step";
    const Json title = object.value("title", Json());
    if (!isStep) {
        view.title = title.is_string() ? title.get<std::string>() : "";
        return;
    }
    const Json moment = object.value("moment", Json());
    view.steps.push_back({{"text", title.is_string() ? title : object.value("text", Json(""))},
                          {"moment", moment.is_string() ? moment : Json("")},
                          {"hasRun", object.value("does", "") == kRun}});
}

} // namespace

Scenarios::Scenarios(const Site &site, std::vector<std::string> files, bool canRun)
    : site_(site), files_(std::move(files)), canRun_(canRun) {
    for (const std::string &file : files_) {
        if (access(file.c_str(), R_OK) != 0)
            throw language::Refused("cannot read the scenario " + file + ": " +
                                    std::strerror(errno));
    }
}

ScenarioView Scenarios::look(size_t id, const std::string &boardFolder) const {
    ChildProcess process({"play", boardFolder, files_[id], "--check", "--json"});
    ScenarioView view;
    std::string line;
    bool goesOn = true;
    while (goesOn) {
        goesOn = process.work(kLookEveryMs);
        while (process.takeLine(line))
            take(line, view);
        if (site_.isEnding())
            break;
    }
    view.problem = process.complaint();
    if (view.problem.empty() && process.exitCode() != 0)
        view.problem = "'vboard play --check' has ended with " + std::to_string(process.exitCode());
    return view;
}

Json Scenarios::list(const std::string &boardFolder) const {
    Json array = Json::array();
    for (size_t id = 0; id < files_.size(); ++id) {
        const ScenarioView view = look(id, boardFolder);
        array.push_back({{"id", id},
                         {"file", std::filesystem::path(files_[id]).filename().string()},
                         {"title", view.title},
                         {"steps", view.steps},
                         {"problem", view.problem}});
    }
    return array;
}

} // namespace vboard::server
