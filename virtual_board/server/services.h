#pragma once
// What answers are made of.

#include "virtual_board/server/hubs.h"
#include "virtual_board/server/plays.h"
#include "virtual_board/server/scenarios.h"
#include "virtual_board/server/site.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vboard::server {

class Services {
  public:
    Services(const std::string &folder, std::vector<std::string> files, bool canRun,
             std::function<void(const std::string &reason)> onGone)
        : site(folder), scenarios(site, std::move(files), canRun), hubs(site, std::move(onGone)),
          plays(scenarios, hubs) {}

    /** Lets nothing go on. */
    void end() {
        site.end();
        plays.end();
        hubs.end();
    }

    Site site;
    Scenarios scenarios;
    Hubs hubs;
    Plays plays;
};

} // namespace vboard::server
