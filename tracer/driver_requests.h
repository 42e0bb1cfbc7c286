#pragma once
// Requests to the kernel module.

#include "tracer/recorder.h"

namespace tracer {

/** Records one with its answer; error is the errno with which the call failed, or 0. */
void recordDriverRequest(TraceRecord trace, unsigned long code, const void *argument, int error);

} // namespace tracer
