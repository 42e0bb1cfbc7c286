#pragma once
// The last requests that reached the board, oldest overwritten first.

#include "language/trace_record.h"

#include <algorithm>
#include <cstdint>

namespace vb {

using language::kPowerCutResult;
using language::kTraceDataSize;
using language::TraceKind;
using language::TraceRecord;

constexpr uint32_t kTraceCapacity = 16384;

struct TraceRing {
    alignas(8) uint64_t total;   // records ever made
    alignas(8) uint64_t cleared; // how many of these somebody has forgotten
    TraceRecord record[kTraceCapacity];
};

/** Who makes a request. */
struct Sender {
    int32_t pid;
    uint64_t nowNs; // on the board's clock
};

/** Starts the record of a new request, in the place of the oldest. */
constexpr TraceRecord &traceNext(TraceRing &ring, TraceKind kind, const Sender &sender) {
    TraceRecord &record = ring.record[ring.total++ % kTraceCapacity];
    record = TraceRecord{};
    record.timeNs = sender.nowNs;
    record.pid = sender.pid;
    record.kind = kind;
    return record;
}

/**
 * The record with a running number, which must be one of the last kTraceCapacity. Whatever the ring
 * holds, this copy can be followed: its kind and lengths are possible, its texts end.
 */
TraceRecord traceAt(const TraceRing &ring, uint64_t number);

/** The record with a running number, or null when a later one has its place. */
constexpr TraceRecord *traceKept(TraceRing &ring, uint64_t number) {
    return ring.total - number <= kTraceCapacity ? &ring.record[number % kTraceCapacity] : nullptr;
}

/** Number of the oldest record that is still there. */
constexpr uint64_t traceOldest(const TraceRing &ring) {
    const uint64_t kept = ring.total > kTraceCapacity ? ring.total - kTraceCapacity : 0;
    return std::max(kept, std::min(ring.cleared, ring.total));
}

} // namespace vb
