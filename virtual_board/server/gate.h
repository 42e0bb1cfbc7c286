#pragma once
// Who is let in: what knows the token, and was not sent by a page from elsewhere.

#include "virtual_board/server/message.h"
#include "virtual_board/server/target.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace vboard::server {

class Gate {
  public:
    /** Host names besides those of the machine itself, with a port if it is another. */
    Gate(std::string token, uint16_t port, const std::string &address,
         const std::vector<std::string> &hosts);

    /** What a request is for, without the token in its path. Throws Refusal for who is a stranger,
     * who learns nothing else. */
    Target admit(const Head &head) const;

    const std::string &token() const { return token_; }

  private:
    std::string hostOf(const Head &head) const;
    void judgeOrigin(const Head &head, const std::string &host) const;
    bool hasRightAuthorization(const Head &head) const;

    const std::string token_;
    const uint16_t port_;
    std::set<std::string> hosts_; // "localhost:8080"
};

} // namespace vboard::server
