// Lines of a trace that somebody has kept: the recorded one, and what a board answers now.

#include "fuzz/input.h"
#include "language/refused.h"
#include "language/trace_json.h"
#include "language/trace_reader.h"
#include "language/trace_replay.h"
#include "language/trace_text.h"

#include <nlohmann/json.hpp>
#include <string>

namespace {

using language::TraceRecord;

TraceRecord readBack(const std::string &line) {
    const TraceRecord record = language::readTraceLine(line);
    const nlohmann::json told = language::traceJson(record);
    const std::string text = told.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    fuzz::require(!language::traceText(record).empty(), "a request that no words are for");
    fuzz::require(language::traceJson(language::readTraceLine(text)) == told,
                  "what is written reads otherwise");
    return record;
}

void use(const std::string &recorded, const std::string &answered) {
    const TraceRecord record = readBack(recorded);
    fuzz::require(language::difference(record, record).words.empty(), "it differs from itself");
    fuzz::require(language::notSentText(language::notSent(record)) != nullptr, "no reason");
    for (const std::string &words : language::difference(record, readBack(answered)).words)
        fuzz::require(!words.empty(), "a difference without words");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    const std::string content(bytes, bytes + size);
    const size_t end = content.find('\n');
    try {
        use(content.substr(0, end), end != std::string::npos ? content.substr(end + 1) : "");
    } catch (const language::Refused &refused) {
        fuzz::require(*refused.what() != '\0', "a refusal without a reason");
    }
    return 0;
}
