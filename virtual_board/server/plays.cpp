#include "virtual_board/server/plays.h"

#include "virtual_board/server/refusal.h"

#include <algorithm>

namespace vboard::server {

namespace {

/** Throws Refusal for what must not be played. */
void judgeView(const ScenarioView &view, bool canRun) {
    const bool hasRun = std::any_of(view.steps.begin(), view.steps.end(),
                                    [](const Json &step) { return step["hasRun"].get<bool>(); });
    if (hasRun && !canRun)
        throw Refusal(
            kForbidden, VBOARD_E_PERMISSION,
            "the scenario runs programs; start 'vboard serve' with --allow-run to let it");
    if (!view.problem.empty())
        throw Refusal(kBadRequest, VBOARD_E_REFUSED, view.problem);
}

} // namespace

void Plays::start(const std::string &boardFolder, size_t scenario) {
    if (scenario >= scenarios_.count())
        throw Refusal(kNotFound, VBOARD_E_REFUSED,
                      "there is no scenario " + std::to_string(scenario) +
                          "; 'vboard serve --scenario FILE' names those that there are");
    const ScenarioView view = scenarios_.look(scenario, boardFolder);
    judgeView(view, scenarios_.canRun());
    const std::lock_guard lock(mutex_);
    std::unique_ptr<Play> &play = plays_[boardFolder];
    if (isEnding_ || (play != nullptr && play->isUnderWay()))
        throw Refusal(kConflict, VBOARD_E_BUSY,
                      "a scenario is being played to this board; stop it first");
    std::vector<std::string> words = {"play", boardFolder, scenarios_.file(scenario), "--json"};
    if (!scenarios_.canRun()) // the file may be another one by now
        words.emplace_back("--no-run");
    play = std::make_unique<Play>(
        scenario, view.steps.size(), words,
        [this, boardFolder](const Json &progress) { hubs_.tellPlay(boardFolder, progress); });
}

void Plays::change(const std::string &boardFolder, const std::string &action) {
    using Change = bool (Play::*)();
    static const std::map<std::string, Change> kChanges = {
        {"pause", &Play::pause}, {"resume", &Play::resume}, {"stop", &Play::stop}};
    const auto change = kChanges.find(action);
    if (change == kChanges.end())
        throw Refusal(kBadRequest, VBOARD_E_REFUSED, "action is start, pause, resume or stop");
    const std::lock_guard lock(mutex_);
    const auto play = plays_.find(boardFolder);
    if (play == plays_.end() || play->second == nullptr || !(*play->second.*change->second)())
        throw Refusal(kConflict, VBOARD_E_REFUSED,
                      "no scenario is being played to this board that could be told to " + action);
}

void Plays::end() {
    std::map<std::string, std::unique_ptr<Play>> plays;
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
        plays.swap(plays_);
    }
    for (const auto &[folder, play] : plays) { // at once, before each is waited for
        if (play != nullptr)
            play->stop();
    }
}

} // namespace vboard::server
