// Time, moved by hand.

#include "language/times.h"
#include "virtual_board/server/answers.h"
#include "virtual_board/server/asked.h"

#include <algorithm>

namespace vboard::server {

namespace {

constexpr uint32_t kMostMs = 86400000; // at once: a day
constexpr uint64_t kNsPerMs = 1000000;
/** A server that ends waits for so much of a board's time at most. */
constexpr uint64_t kSliceNs = 1000000000;

} // namespace

Response advance(Services &services, const Asked &asked) {
    const Board board(boardFolder(services, asked));
    const auto words = textsOfBody(asked, {"seconds"});
    const auto seconds = words.find("seconds");
    if (seconds == words.end())
        throw Refusal(kBadRequest, VBOARD_E_REFUSED, R"(seconds is missing: {"seconds":"0.5"})");
    uint64_t leftNs = kNsPerMs * language::about("seconds", [&] {
                          return language::parseSeconds(seconds->second, 0, kMostMs);
                      });
    do {
        const uint64_t sliceNs = std::min(leftNs, kSliceNs);
        call([&](VBoardError *error) {
            return vboardAdvance(board, sliceNs, VBOARD_USUAL_PATIENCE, error);
        });
        leftNs -= sliceNs;
    } while (leftNs > 0 && !services.site.isEnding());
    uint64_t time = 0;
    call([&](VBoardError *error) { return vboardTime(board, &time, error); });
    return jsonResponse({{"clock", language::secondsText(time)}});
}

} // namespace vboard::server
