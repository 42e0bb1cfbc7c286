#pragma once
// Those who look at one board, and what they are told.

#include "virtual_board/server/snapshot.h"
#include "virtual_board/server/stream.h"

#include <list>
#include <memory>
#include <mutex>
#include <string>

namespace vboard::server {

class Hub {
  public:
    /** Adds one, who is told all as soon as it is known. */
    void join(std::shared_ptr<EventStream> stream);
    /** Whether anybody is left. */
    bool isWatched();
    /** Whether somebody waits for all. */
    bool isAwaited();

    /** Tells what is new, and all to those who have come, or were too slow, meanwhile. */
    void publish(Snapshot snapshot);
    /** Tells of requests, which are kept elsewhere. */
    void tellTrace(const Json &requests);
    /** Tells how a scenario goes, also those who come later. */
    void tellPlay(const Json &play);
    /** Tells that the board is gone, which ends the streams. */
    void tellGone(const std::string &reason);
    void end();

  private:
    struct Member {
        std::shared_ptr<EventStream> stream;
        bool needsWhole = true;
    };

    void forgetClosed();
    void tellAll(const EventText &event);

    std::mutex mutex_;
    std::list<Member> members_;
    Snapshot snapshot_;
    bool isKnown_ = false;
    EventText play_; // null: none has begun
};

} // namespace vboard::server
