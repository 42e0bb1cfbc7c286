#pragma once
// Requests to the drivers of the flash partitions.

#include "tracer/recorder.h"

namespace tracer {

/** Records one with its answer; error is the errno with which the call failed, or 0. */
void recordFlashRequest(TraceRecord trace, uint8_t partition, unsigned long code,
                        const void *argument, int result, int error);

} // namespace tracer
