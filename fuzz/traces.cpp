// Records of a trace that hold anything, in words and in JSON. What is printed as JSON is JSON.

#include "fuzz/input.h"
#include "language/trace_json.h"
#include "language/trace_text.h"
#include "virtual_board/board/trace.h"

#include <nlohmann/json.hpp>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    using nlohmann::json;
    fuzz::Input input(bytes, size);
    static vb::TraceRing ring;
    input.fill(&ring.record[0], sizeof(ring.record[0]));
    ring.total = 1;
    const language::TraceRecord record = vb::traceAt(ring, 0);
    const json told = language::traceJson(record);
    const std::string text = told.dump(-1, ' ', false, json::error_handler_t::replace);
    fuzz::require(json::parse(text, nullptr, false).is_object(), "what is printed is no JSON");
    fuzz::require(!language::traceText(record).empty(), "a request that no words are for");
    return 0;
}
