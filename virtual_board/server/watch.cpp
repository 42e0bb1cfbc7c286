#include "virtual_board/server/watch.h"

#include "virtual_board/server/trace_view.h"

#include <chrono>
#include <csignal>
#include <pthread.h>
#include <utility>

namespace vboard::server {

namespace {

/** Between two looks at a board that changes all the time. */
constexpr std::chrono::milliseconds kLeastPause{50};
/** What time alone changes is looked at so often. */
constexpr std::chrono::seconds kTick{1};
/** Of more requests at once the newest are told. */
constexpr uint32_t kMostRequests = 500;

/** Ends waits; nothing else. */
void letWakeUp() {
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
}

} // namespace

Watch::Watch(const std::string &folder, std::function<bool(Watch &)> mayEnd,
             std::function<void(const std::string &reason)> onGone)
    : board_(std::make_unique<Board>(folder)), mayEnd_(std::move(mayEnd)),
      onGone_(std::move(onGone)) {
    letWakeUp();
    thread_ = std::thread([this] { run(); });
}

Watch::~Watch() {
    std::unique_lock lock(mutex_);
    isStopping_ = true;
    changed_.notify_all();
    while (!hasEnded_) { // the signal may come before the wait that it is to end
        pthread_kill(thread_.native_handle(), SIGUSR1);
        changed_.wait_for(lock, std::chrono::milliseconds(5));
    }
    lock.unlock();
    thread_.join();
    hub.end();
}

void Watch::wake() {
    const std::lock_guard lock(mutex_);
    if (!hasEnded_)
        pthread_kill(thread_.native_handle(), SIGUSR1);
}

void Watch::tellRequests(uint64_t &position) {
    const uint64_t next = nextRequest(*board_);
    if (next == position)
        return;
    uint64_t first = position;
    if (next - position > kMostRequests)
        first = next - kMostRequests;
    const uint64_t left = first - position;
    Json requests = traceJson(*board_, first, kMostRequests);
    requests["lost"] = requests["lost"].get<uint64_t>() + left;
    position = first;
    for (const Json &request : requests["requests"])
        users_.note(request["pid"].get<int32_t>());
    hub.tellTrace(requests);
}

void Watch::look(uint64_t &position) {
    Snapshot snapshot = Snapshot::of(*board_);
    snapshot.users = users_.text(*board_);
    isMoving_ = snapshot.isMoving();
    hub.publish(std::move(snapshot));
    tellRequests(position);
}

/** The pause that other work on the machine is left; false when all shall end. */
bool Watch::pause(uint32_t changes) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kLeastPause, [this] { return isStopping_; });
    if (isStopping_)
        return false;
    lock.unlock();
    VBoardError error = {};
    const auto tick = std::chrono::duration_cast<std::chrono::nanoseconds>(kTick);
    const int32_t status =
        vboardAwaitChange(*board_, changes, static_cast<uint64_t>(tick.count()), &error);
    if (status != VBOARD_OK && status != VBOARD_E_TIMEOUT)
        throw CallFailed(error);
    return true;
}

void Watch::run() {
    try {
        uint64_t position = nextRequest(*board_);
        uint32_t changes = 0;
        bool isWatched = false;
        do {
            const uint32_t seen = std::exchange(changes, vboardChanges(*board_));
            const bool wasWatched = std::exchange(isWatched, hub.isWatched());
            if (!isWatched && mayEnd_(*this))
                break;
            if (isWatched && !wasWatched)
                position = nextRequest(*board_);
            if (isWatched &&
                (isMoving_ || changes != seen || hub.isAwaited() || users_.isOutdated()))
                look(position);
        } while (pause(changes));
    } catch (const std::exception &failure) {
        hub.tellGone(failure.what());
        onGone_(failure.what());
    }
    const std::lock_guard lock(mutex_);
    hasEnded_ = true;
    changed_.notify_all();
}

} // namespace vboard::server
