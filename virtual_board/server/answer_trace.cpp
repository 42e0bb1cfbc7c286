// The trace and the rules of what goes wrong.

#include "virtual_board/server/answers.h"
#include "virtual_board/server/asked.h"
#include "virtual_board/server/snapshot.h"
#include "virtual_board/server/trace_view.h"

#include <algorithm>

namespace vboard::server {

namespace {

constexpr uint32_t kMostTraced = 1000; // in one answer

const char *given(const std::map<std::string, std::string> &words, const char *name) {
    const auto place = words.find(name);
    return place == words.end() ? nullptr : place->second.c_str();
}

} // namespace

Response listFaults(Services &services, const Asked &asked) {
    const Board board(boardFolder(services, asked));
    return jsonResponse({{"faults", faultsJson(board)}});
}

Response addFault(Services &services, const Asked &asked) {
    const Board board(boardFolder(services, asked));
    const auto words = textsOfBody(asked, {"device", "op", "offset", "nth", "when", "effect"});
    VBoardFault fault = {};
    fault.size = sizeof(fault);
    fault.device = given(words, "device");
    fault.op = given(words, "op");
    fault.offset = given(words, "offset");
    fault.nth = given(words, "nth");
    fault.when = given(words, "when");
    fault.effect = given(words, "effect");
    if (fault.device == nullptr || fault.effect == nullptr)
        throw Refusal(kBadRequest, VBOARD_E_REFUSED,
                      "a rule has a device and an effect; see 'vboard fault DIR add --help'");
    uint32_t id = 0;
    call([&](VBoardError *error) { return vboardAddFault(board, &fault, &id, error); });
    return jsonResponse({{"id", id}}, kCreated);
}

Response clearFaults(Services &services, const Asked &asked) {
    const Board board(boardFolder(services, asked));
    const auto given = numberOf(asked, "id", UINT32_MAX);
    const auto id = static_cast<uint32_t>(given.value_or(0));
    call([&](VBoardError *error) {
        return vboardClearFaults(board, &id, given.has_value() ? 1 : 0, error);
    });
    return jsonResponse({{"faults", faultsJson(board)}});
}

Response getTrace(Services &services, const Asked &asked) {
    const Board board(boardFolder(services, asked));
    uint64_t position = numberOf(asked, "from", UINT64_MAX).value_or(0);
    auto most = numberOf(asked, "most", kMostTraced).value_or(kMostTraced);
    if (const auto last = numberOf(asked, "last", kMostTraced)) {
        const uint64_t next = nextRequest(board);
        position = next - std::min(next, *last);
        most = *last;
    }
    return jsonResponse(
        traceJson(board, position, static_cast<uint32_t>(std::max<uint64_t>(most, 1))));
}

Response clearTrace(Services &services, const Asked &asked) {
    const Board board(boardFolder(services, asked));
    call([&](VBoardError *error) { return vboardClearTrace(board, UINT64_MAX, error); });
    return jsonResponse(Json::object());
}

} // namespace vboard::server
