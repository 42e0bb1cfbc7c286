#pragma once
// Boards served to browsers.

#include "virtual_board/server/listen_address.h"

#include <string>
#include <vector>

namespace vboard::server {

struct ServeOptions {
    std::string folder, tokenFile;
    ListenAddress listen;
    std::vector<std::string> scenarios, hosts;
    bool canRun = false; // scenarios may start programs
};

/** Prints the page's URL, and serves until it is told to end. Throws Refused when it cannot, and
 * when a single board is gone. */
void serve(const ServeOptions &options);

} // namespace vboard::server
