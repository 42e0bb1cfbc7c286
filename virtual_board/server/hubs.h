#pragma once
// The boards that are looked at.

#include "virtual_board/server/site.h"
#include "virtual_board/server/watch.h"

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace vboard::server {

class Hubs {
  public:
    /** Tells when a single board that is served is gone. */
    Hubs(const Site &site, std::function<void(const std::string &reason)> onGone);
    Hubs(const Hubs &) = delete;
    Hubs &operator=(const Hubs &) = delete;
    ~Hubs() { end(); }

    /** Lets a stream follow a board. Throws CallFailed for one that cannot be opened. */
    void join(const std::string &folder, const std::shared_ptr<EventStream> &stream);
    void tellPlay(const std::string &folder, const Json &play);
    void end();

  private:
    struct Entry {
        std::unique_ptr<Watch> watch; // null once its board is looked at no more
        std::optional<Json> play;     // how a scenario goes, if one was played
    };

    void begin(const std::string &folder, Entry &entry);
    bool mayEnd(const std::string &folder, const Watch &watch);
    void leave(const std::string &folder, const std::string &reason);

    const Site &site_;
    const std::function<void(const std::string &reason)> onGone_;
    std::mutex mutex_;
    std::map<std::string, Entry> entries_;
    std::list<std::unique_ptr<Watch>> ended_; // to be waited for by another thread than their own
    bool isEnding_ = false;
};

} // namespace vboard::server
