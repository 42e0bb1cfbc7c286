#pragma once
// What a traced program and those that it starts hand over.

#include "language/trace_record.h"
#include "support/owned.h"
#include "tracer/ring.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace iodbg {

class Recording {
  public:
    /** Throws when the system has no memory for it. */
    Recording();
    Recording(const Recording &) = delete;
    Recording &operator=(const Recording &) = delete;
    ~Recording();

    /** Where programs find the memory. */
    std::string path() const;

    /** The next request, if there is one. */
    std::optional<language::TraceRecord> take();
    /** The same once all programs have ended: nobody will finish what is unfinished. */
    std::optional<language::TraceRecord> takeLast();

    /** How many requests are missing. */
    uint32_t lost() const { return ring_->lost.load(); }

  private:
    using Clock = std::chrono::steady_clock;

    std::optional<language::TraceRecord> taken(const language::TraceRecord &record);

    bsp::Descriptor memory_;
    tracer::Ring *ring_;
    std::optional<Clock::time_point> unfinishedSince_;
};

/** Waits a moment of the host's; a virtual board would take a sleep for its own. */
void pauseOnHost();

} // namespace iodbg
