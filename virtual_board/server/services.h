#pragma once
// What answers are made of.

#include "virtual_board/server/hubs.h"
#include "virtual_board/server/site.h"

#include <functional>
#include <string>
#include <utility>

namespace vboard::server {

class Services {
  public:
    Services(const std::string &folder, std::function<void(const std::string &reason)> onGone)
        : site(folder), hubs(site, std::move(onGone)) {}

    Site site;
    Hubs hubs;
};

} // namespace vboard::server
