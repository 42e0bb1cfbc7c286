#include "virtual_board/board/trace.h"

#include <algorithm>

namespace vb {

namespace {

bool isText(TraceKind kind) {
    return kind == TraceKind::Open || kind == TraceKind::CpldUpgrade || kind == TraceKind::Map;
}

} // namespace

TraceRecord traceAt(const TraceRing &ring, uint64_t number) {
    TraceRecord record = ring.record[number % kTraceCapacity];
    record.kind = std::min(record.kind, TraceKind::Damaged);
    record.stored = std::min(record.stored, kTraceDataSize);
    if (isText(record.kind))
        record.data[kTraceDataSize - 1] = '\0';
    return record;
}

} // namespace vb
