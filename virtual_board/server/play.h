#pragma once
// A scenario that is played to a board, by a process of its own.

#include "virtual_board/server/child_process.h"
#include "virtual_board/server/json.h"

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace vboard::server {

class Play {
  public:
    using Tell = std::function<void(const Json &)>;

    /** Begins; how it goes is told from then on, by another thread. */
    Play(size_t scenario, size_t steps, const std::vector<std::string> &words, Tell tell);
    Play(const Play &) = delete;
    Play &operator=(const Play &) = delete;
    /** Stops it. */
    ~Play();

    bool isUnderWay();
    // False when it is too late.
    bool pause();
    bool resume();
    bool stop();

  private:
    enum class State { Running, Paused, Passed, Failed, Stopped };
    struct StepState {
        const char *state = "waiting";
        std::string seconds, reason;
    };

    void run();
    void take(const std::string &line);
    void finish();
    void tell();
    bool isOn() const { return state_ == State::Running || state_ == State::Paused; }

    const size_t scenario_;
    const Tell tell_;
    ChildProcess process_;
    std::mutex mutex_;
    State state_ = State::Running;
    bool isStopping_ = false;
    size_t passed_ = 0;
    std::string reason_;
    std::vector<StepState> steps_;
    std::thread thread_;
};

} // namespace vboard::server
