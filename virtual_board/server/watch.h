#pragma once
// A thread that waits for what happens on a board, and tells those who look at it.

#include "virtual_board/server/hub.h"
#include "virtual_board/server/present_users.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace vboard::server {

class Watch {
  public:
    /** Begins. Asks, when nobody looks any more, whether it shall end. What it tells in the end is
     * why the board is gone; empty: it is not. Throws CallFailed for a board that cannot be opened.
     */
    Watch(const std::string &folder, std::function<bool(Watch &)> mayEnd,
          std::function<void(const std::string &reason)> onGone);
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;
    /** Ends it, at once. */
    ~Watch();

    Hub hub;

    /** Looks at the board now, for who has just come. */
    void wake();

  private:
    void run();
    void look(uint64_t &position);
    void tellRequests(uint64_t &position);
    bool pause(uint32_t changes);

    const std::unique_ptr<Board> board_;
    const std::function<bool(Watch &)> mayEnd_;
    const std::function<void(const std::string &reason)> onGone_;
    PresentUsers users_;
    bool isMoving_ = true;

    std::mutex mutex_;
    std::condition_variable changed_;
    bool isStopping_ = false;
    bool hasEnded_ = false;
    std::thread thread_;
};

} // namespace vboard::server
