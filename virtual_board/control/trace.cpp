// The trace of a board.

#include "virtual_board/board/trace.h"

#include "language/trace_json.h"
#include "language/trace_names.h"
#include "language/trace_text.h"
#include "virtual_board/control/answer.h"
#include "virtual_board/control/given.h"
#include "virtual_board/control/handle.h"
#include "virtual_board/control/json.h"

#include <algorithm>

namespace vboard {

namespace {

/** Requests copied out of the ring, so that the board is not kept waiting while they are told. */
struct Excerpt {
    std::vector<vb::TraceRecord> records;
    uint64_t first = 0; // number of the first of them
    uint64_t lost = 0;  // older ones that were wanted and are gone
};

Excerpt excerptFrom(const vb::BoardFolder &folder, uint64_t position, uint32_t most) {
    const LockedBoard board(folder);
    const vb::TraceRing &ring = board->trace;
    Excerpt excerpt;
    const uint64_t wanted = std::min(position, ring.total);
    excerpt.first = std::max(wanted, vb::traceOldest(ring));
    excerpt.lost = excerpt.first - std::max(wanted, std::min(ring.cleared, ring.total));
    const uint64_t count = std::min(ring.total - excerpt.first, most == 0 ? UINT64_MAX : most);
    excerpt.records.reserve(static_cast<size_t>(count));
    for (uint64_t i = 0; i < count; ++i)
        excerpt.records.push_back(vb::traceAt(ring, excerpt.first + i));
    return excerpt;
}

VBoardRequest *give(const Excerpt &excerpt) {
    struct Texts {
        std::string kind, text, json;
    };
    std::vector<Texts> texts;
    texts.reserve(excerpt.records.size());
    std::vector<VBoardRequest> rows;
    rows.reserve(excerpt.records.size());
    for (const vb::TraceRecord &record : excerpt.records) {
        const nlohmann::json object = language::traceJson(record);
        const Texts &told = texts.emplace_back(
            Texts{object["kind"], language::traceText(record), jsonText(object)});
        rows.push_back({excerpt.first + rows.size(), record.timeNs, record.pid, record.error,
                        record.result, told.kind.c_str(), told.text.c_str(), told.json.c_str()});
    }
    return giveList(rows, {&VBoardRequest::kind, &VBoardRequest::text, &VBoardRequest::json});
}

} // namespace

} // namespace vboard

int32_t vboardTrace(VBoard *board, uint64_t *position, uint32_t most, VBoardRequest **requests,
                    uint32_t *count, uint64_t *lost, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        vboard::require(position, "position");
        vboard::require(requests, "requests");
        vboard::require(count, "count");
        const vboard::Excerpt excerpt = vboard::excerptFrom(board->folder, *position, most);
        *requests = vboard::give(excerpt);
        *count = static_cast<uint32_t>(excerpt.records.size());
        *position = excerpt.first + excerpt.records.size();
        if (lost != nullptr)
            *lost = excerpt.lost;
    });
}

int32_t vboardClearTrace(VBoard *board, uint64_t position, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        const vboard::LockedBoard locked(board->folder);
        vb::TraceRing &ring = locked->trace;
        ring.cleared = std::max(vb::traceOldest(ring), std::min(position, ring.total));
        locked.tellOfChange();
    });
}
