#include "virtual_board/server/play.h"

#include "language/times.h"

#include <chrono>
#include <csignal>

namespace vboard::server {

namespace {

constexpr int kLookForEndMs = 100;
/** So long it may take the process to end the programs that it has started. */
constexpr std::chrono::milliseconds kEndTime{700};

std::string textIn(const Json &object, const char *name) {
    const Json value = object.value(name, Json());
    return value.is_string() ? value.get<std::string>() : "";
}

} // namespace

Play::Play(size_t scenario, size_t steps, const std::vector<std::string> &words, Tell tell)
    : scenario_(scenario), tell_(std::move(tell)), process_(words), steps_(steps) {
    if (!steps_.empty())
        steps_.front().state = "under-way";
    thread_ = std::thread([this] { run(); });
}

Play::~Play() {
    stop();
    thread_.join();
}

bool Play::isUnderWay() {
    const std::lock_guard lock(mutex_);
    return isOn();
}

bool Play::pause() {
    const std::lock_guard lock(mutex_);
    if (state_ != State::Running || isStopping_)
        return false;
    process_.signal(SIGSTOP);
    state_ = State::Paused;
    tell();
    return true;
}

bool Play::resume() {
    const std::lock_guard lock(mutex_);
    if (state_ != State::Paused || isStopping_)
        return false;
    process_.signal(SIGCONT);
    state_ = State::Running;
    tell();
    return true;
}

bool Play::stop() {
    const std::lock_guard lock(mutex_);
    if (!isOn())
        return false;
    isStopping_ = true;
    process_.signal(SIGTERM);
    process_.signal(SIGCONT);
    return true;
}

void Play::tell() {
    static constexpr const char *kStates[] = {"running", "paused", "passed", "failed", "stopped"};
    Json steps = Json::array();
    for (const StepState &step : steps_)
        steps.push_back(
            {{"state", step.state}, {"seconds", step.seconds}, {"reason", step.reason}});
    tell_({{"scenario", scenario_},
           {"state", kStates[static_cast<size_t>(state_)]},
           {"passed", passed_},
           {"reason", reason_},
           {"steps", steps}});
}

void Play::take(const std::string &line) {
    const Json object = Json::parse(line, nullptr, false);
    if (!object.is_object())
        return;
    if (object.value("event", "") != "step") {
        reason_ = textIn(object, "reason");
        return;
    }
    const size_t number = object.value("step", size_t{0});
    if (number == 0 || number > steps_.size())
        return;
    StepState &step = steps_[number - 1];
    const bool isPassed = object.value("passed", false);
    step = {isPassed ? "passed" : "failed",
            language::durationText(object.value("time_ns", uint64_t{0})), textIn(object, "reason")};
    if (!isPassed)
        return;
    ++passed_;
    if (number < steps_.size())
        steps_[number].state = "under-way";
}

void Play::finish() {
    state_ = process_.exitCode() == 0 ? State::Passed : State::Failed;
    if (isStopping_ && state_ == State::Failed)
        state_ = State::Stopped;
    if (state_ == State::Failed && reason_.empty())
        reason_ = process_.complaint();
    for (StepState &step : steps_) {
        if (std::string(step.state) == "under-way")
            step.state = "waiting";
    }
}

void Play::run() {
    using Clock = std::chrono::steady_clock;
    auto limit = Clock::time_point::max();
    {
        const std::lock_guard lock(mutex_);
        tell();
    }
    for (;;) {
        const bool goesOn = process_.work(kLookForEndMs);
        const std::lock_guard lock(mutex_);
        bool isNew = false;
        for (std::string line; process_.takeLine(line); isNew = true)
            take(line);
        if (!goesOn)
            finish();
        if (isNew || !goesOn)
            tell();
        if (!goesOn)
            return;
        if (isStopping_ && limit == Clock::time_point::max())
            limit = Clock::now() + kEndTime;
        if (Clock::now() >= limit)
            process_.signal(SIGKILL);
    }
}

} // namespace vboard::server
