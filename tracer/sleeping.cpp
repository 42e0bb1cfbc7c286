// Sleeps, which are recorded when they begin.

#include "tracer/recorder.h"
#include "virtual_board/board/user_memory.h"
#include "virtual_board/os/durations.h"
#include "virtual_board/os/next.h"

#include <time.h>
#include <unistd.h>

namespace {

constexpr uint64_t kNsPerUs = 1000;

void noteSleep(uint64_t ns) {
    if (!tracer::isRecording())
        return;
    tracer::TraceRecord trace = tracer::begun(tracer::TraceKind::Sleep);
    trace.sleepNs = ns;
    tracer::record(trace);
}

/** One for a time that a program gives; those that are none are the C library's to refuse. */
template <typename Time>
void noteSleepFor(const Time *address) {
    Time time = {};
    uint64_t ns = 0;
    if (tracer::isRecording() && vb::copyFromUser(&time, address, sizeof(time)) &&
        vb::readDuration(time, ns))
        noteSleep(ns);
}

} // namespace

VB_SEAM(int, usleep, useconds_t us) {
    noteSleep(us * kNsPerUs);
    return VB_NEXT(usleep)(us);
}

VB_SEAM(unsigned, sleep, unsigned seconds) {
    noteSleep(seconds * vb::kNsPerSecond);
    return VB_NEXT(sleep)(seconds);
}

#define TRACE_NANOSLEEP(symbol, Time)                                                              \
    VB_SEAM(int, symbol, const Time *time, vb::PointerTo<Time> rest) {                             \
        noteSleepFor(time);                                                                        \
        return VB_NEXT(symbol)(time, rest);                                                        \
    }
TRACE_NANOSLEEP(nanosleep, timespec)
TRACE_NANOSLEEP(__nanosleep64, vb::Timespec64)

#define TRACE_CLOCK_NANOSLEEP(symbol, Time)                                                        \
    VB_SEAM(int, symbol, clockid_t clock, int flags, const Time *time, vb::PointerTo<Time> rest) { \
        if ((flags & TIMER_ABSTIME) == 0)                                                          \
            noteSleepFor(time);                                                                    \
        return VB_NEXT(symbol)(clock, flags, time, rest);                                          \
    }
TRACE_CLOCK_NANOSLEEP(clock_nanosleep, timespec)
TRACE_CLOCK_NANOSLEEP(__clock_nanosleep_time64, vb::Timespec64)
