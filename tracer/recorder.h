#pragma once
// What becomes of the requests that pass.

#include "language/trace_record.h"

namespace tracer {

using language::TraceKind;
using language::TraceRecord;

/** Whether somebody listens. */
bool isRecording();

/** A request that begins now. */
TraceRecord begun(TraceKind kind);

/** Hands it on once its answer is known; errno stays as it is. */
void record(const TraceRecord &record);

/** Stores a text where records have theirs. */
void setPath(TraceRecord &record, const char *path);

} // namespace tracer
