#pragma once
// A trace that is sent once more: what of it can be, and how an answer differs from the recorded
// one.

#include "language/trace_record.h"

#include <string>
#include <vector>

namespace language {

/** Why a request is not sent once more. */
enum class NotSent : uint8_t {
    Sent,    // it is
    Waits,   // it asks nothing: a sleep, a step of the clock
    File,    // how a file is opened is not in a trace
    Content, // what is transferred is not in a trace, or not all of it
    Rights,  // it was refused for how the device was opened
    Mapping, // what is done with a mapped page is not in a trace
    Damaged,
};

NotSent notSent(const TraceRecord &record);
/** In JSON, "content", and in a sentence. */
const char *notSentName(NotSent reason);
const char *notSentText(NotSent reason);

/** How an answer is to be judged that differs from the recorded one. */
enum class Variation : uint8_t {
    None,     // it is the same, or has to be
    Time,     // it tells the time, or what happened until then
    Measured, // it is a measurement
    Unknown,  // the virtual board has nothing there that could answer
};

const char *variationName(Variation variation);
const char *variationText(Variation variation);

struct Difference {
    std::vector<std::string> words; // what differs, piece by piece; none: nothing
    Variation variation = Variation::None;
};

/** How the answer to a request differs from the one that is recorded of it. */
Difference difference(const TraceRecord &recorded, const TraceRecord &answered);

} // namespace language
