#pragma once
// A request and its answer, whatever has read the one and writes the other.

#include "virtual_board/server/refusal.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vboard::server {

/** What a request begins with. */
struct Head {
    std::string method; // "GET"
    std::string target; // "/TOKEN/api/boards?name=3"
    std::vector<std::pair<std::string, std::string>> headers;
    std::string localAddress; // at which it has come: "127.0.0.1", "[::1]"

    /** The value of a header that may be there once at most; names are alike in either case. */
    std::optional<std::string> header(const std::string &name) const;
};

using Query = std::vector<std::pair<std::string, std::string>>;

struct Response {
    Status status = kOk;
    std::string contentType, body;
    std::string location; // of what has moved
};

/** The answer in place of one. */
Response refusalResponse(const Refusal &refusal);

} // namespace vboard::server
