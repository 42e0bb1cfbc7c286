#pragma once
// What can be asked of the server: one table, of which its description is made, too.

#include "virtual_board/server/message.h"

#include <cstddef>
#include <span>
#include <string>

namespace vboard::server {

class Services;

/** A request that was let in. */
struct Asked {
    const Query &query;
    const std::string &body;
};

/** A word behind the question mark. */
struct Parameter {
    const char *name;
    const char *description;
    bool isRequired = false;
    bool isRepeated = false;
};

constexpr size_t kMostParameters = 4;

struct Route {
    const char *method;
    const char *path;                              // "/api/boards"
    Response (*answer)(Services &, const Asked &); // null: a stream of events
    const char *summary;
    const char *answerSchema; // "Boards"; null: it is no JSON
    Parameter parameters[kMostParameters] = {};
    const char *bodySchema = nullptr; // null: no body
    size_t mostBody = 0;
    Status success = kOk;
};

std::span<const Route> routes();

/** The route for a request; throws Refusal where there is none. HEAD asks for what GET does. */
const Route &routeFor(const std::string &method, const std::string &path);

/** Refuses words behind the question mark that the route does not know. */
void judgeQuery(const Route &route, const Query &query);

} // namespace vboard::server
