#pragma once
// What a request is for: a path and the words behind it.

#include "virtual_board/server/message.h"

#include <string>

namespace vboard::server {

struct Target {
    std::string path; // as it came, beginning with a slash
    Query query;      // names and values, decoded
};

/** Throws Refusal for what is no path, or has words that are wrongly encoded. */
Target parseTarget(const std::string &text);

/** The value of a name that may be there once; empty without it. */
std::string valueOf(const Query &query, const std::string &name);
std::vector<std::string> valuesOf(const Query &query, const std::string &name);

} // namespace vboard::server
