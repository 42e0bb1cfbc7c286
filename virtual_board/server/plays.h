#pragma once
// What is played to which board.

#include "virtual_board/server/hubs.h"
#include "virtual_board/server/play.h"
#include "virtual_board/server/scenarios.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace vboard::server {

class Plays {
  public:
    Plays(const Scenarios &scenarios, Hubs &hubs) : scenarios_(scenarios), hubs_(hubs) {}
    Plays(const Plays &) = delete;
    Plays &operator=(const Plays &) = delete;
    ~Plays() { end(); }

    /** Each throws Refusal when it cannot be done. */
    void start(const std::string &boardFolder, size_t scenario);
    void change(const std::string &boardFolder, const std::string &action);
    /** Stops all. */
    void end();

  private:
    const Scenarios &scenarios_;
    Hubs &hubs_;
    std::mutex mutex_;
    std::map<std::string, std::unique_ptr<Play>> plays_;
    bool isEnding_ = false;
};

} // namespace vboard::server
