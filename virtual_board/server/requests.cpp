#include "virtual_board/server/requests.h"

#include "language/refused.h"
#include "language/texts.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/server/asked.h"
#include "virtual_board/server/json.h"
#include "virtual_board/server/page_files.h"

#include <algorithm>

namespace vboard::server {

namespace {

const PageFile *pageFile(const std::string &path) {
    const std::string name = path == "/" ? "index.html" : path.substr(1);
    for (const PageFile &file : pageFiles()) {
        if (file.name == name)
            return &file;
    }
    return nullptr;
}

bool isReading(const std::string &method) {
    return method == "GET" || method == "HEAD";
}

/** Of "application/json; charset=utf-8" the first part. */
bool isJsonType(const std::string &type) {
    const size_t end = std::min(type.find_first_of("; "), type.size());
    return type.substr(0, end) == kJsonType;
}

/** What browsers send by themselves, to any server, is of another kind. */
void judgeBody(const Head &head, const Route &route) {
    if (route.bodySchema != nullptr && !isJsonType(head.header("Content-Type").value_or("")))
        throw Refusal(kNoSuchMediaType, VBOARD_E_REFUSED,
                      "the body has to be JSON, and to say so: Content-Type: application/json");
}

Status httpStatus(int32_t status) {
    switch (status) {
    case VBOARD_E_ARGUMENT:
    case VBOARD_E_REFUSED:
        return kBadRequest;
    case VBOARD_E_PERMISSION:
        return kForbidden;
    case VBOARD_E_NO_BOARD:
    case VBOARD_E_GONE:
        return kNotFound;
    case VBOARD_E_SYSTEM:
    case VBOARD_E_NO_MEMORY:
        return kInternalError;
    default:
        return kConflict;
    }
}

} // namespace

Response failureResponse(const std::exception &failure) {
    if (const auto *refusal = dynamic_cast<const Refusal *>(&failure))
        return refusalResponse(*refusal);
    if (const auto *failed = dynamic_cast<const CallFailed *>(&failure))
        return refusalResponse({httpStatus(failed->status()), failed->status(), failed->what()});
    if (const auto *refused = dynamic_cast<const language::Refused *>(&failure))
        return refusalResponse({kBadRequest, VBOARD_E_REFUSED, refused->what()});
    return refusalResponse({kInternalError, VBOARD_E_SYSTEM, failure.what()});
}

Requests::Wish Requests::judge(const Head &head) const {
    Wish wish;
    wish.target = gate_.admit(head);
    const std::string &path = wish.target.path;
    if (path.empty() || pageFile(path) != nullptr) {
        if (!isReading(head.method))
            throw Refusal(kNoSuchMethod, VBOARD_E_REFUSED, "the page is there to be read: GET");
        return wish;
    }
    wish.route = &routeFor(head.method, path);
    judgeQuery(*wish.route, wish.target.query);
    judgeBody(head, *wish.route);
    wish.mostBody = wish.route->mostBody;
    wish.isStream = wish.route->answer == nullptr;
    return wish;
}

Response Requests::pageAnswer(const std::string &path) const {
    // The page's own links are relative to it.
    if (path.empty())
        return {kMovedPermanently, "", "", "/" + gate_.token() + "/"};
    const PageFile &file = *pageFile(path);
    return {kOk, std::string(file.contentType), std::string(file.bytes), ""};
}

Response Requests::answerOrThrow(const Wish &wish, const std::string &body) const {
    if (wish.route == nullptr)
        return pageAnswer(wish.target.path);
    Response response = wish.route->answer(services_, {wish.target.query, body});
    response.status = wish.route->success;
    return response;
}

Response Requests::answer(const Wish &wish, const std::string &body) const {
    try {
        return answerOrThrow(wish, body);
    } catch (const std::exception &failure) {
        return failureResponse(failure);
    }
}

std::optional<Response> Requests::follow(const Wish &wish,
                                         const std::shared_ptr<EventStream> &stream) const {
    try {
        services_.hubs.join(boardFolder(services_, {wish.target.query, ""}), stream);
        return std::nullopt;
    } catch (const std::exception &failure) {
        return failureResponse(failure);
    }
}

} // namespace vboard::server
