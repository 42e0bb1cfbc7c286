#pragma once
// The scenarios that may be played, as the command line of the server names them.

#include "virtual_board/server/json.h"
#include "virtual_board/server/site.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vboard::server {

/** A scenario as a board could be played it. */
struct ScenarioView {
    std::string title;
    Json steps = Json::array(); // "text", "moment", "hasRun" of each
    std::string problem;        // why the board cannot; empty: it can
};

class Scenarios {
  public:
    /** Throws Refused for files that cannot be read. */
    Scenarios(const Site &site, std::vector<std::string> files, bool canRun);

    size_t count() const { return files_.size(); }
    const std::string &file(size_t id) const { return files_[id]; }
    /** Whether steps may run programs. */
    bool canRun() const { return canRun_; }

    /** Asks the program that plays it. */
    ScenarioView look(size_t id, const std::string &boardFolder) const;
    Json list(const std::string &boardFolder) const;

  private:
    const Site &site_;
    const std::vector<std::string> files_;
    const bool canRun_;
};

} // namespace vboard::server
