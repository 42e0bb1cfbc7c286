#include "tests/support/recorder.h"

#include "tests/support/library_holdings.h"

#include <algorithm>
#include <iterator>

namespace {
std::vector<Recorder *> recorders; // the youngest first
}

Recorder::Recorder() {
    recorders.insert(recorders.begin(), this);
}

Recorder::~Recorder() {
    std::erase(recorders, this);
}

void Recorder::fail(const std::string &call, int nth, int64_t result, int times, int error) {
    failures_.push_back({call, nth, times, result, error});
}

bool Recorder::allFailed() const {
    return std::all_of(failures_.begin(), failures_.end(),
                       [](const Failure &failure) { return failure.seen >= failure.nth; });
}

std::optional<int64_t> Recorder::answerOf(const SystemCall &call) {
    for (Recorder *recorder : recorders)
        recorder->note(call);
    for (Recorder *recorder : recorders)
        if (const auto answer = recorder->answerTo(call))
            return answer;
    return std::nullopt;
}

void Recorder::note(const SystemCall &call) {
    if (isRunning_)
        calls.push_back(call.text());
}

std::optional<int64_t> Recorder::answerTo(const SystemCall &call) {
    const std::string text = failures_.empty() ? "" : call.text();
    for (Failure &failure : failures_) {
        if (!text.starts_with(failure.call))
            continue;
        const int seen = ++failure.seen;
        if (seen >= failure.nth && seen - failure.nth < failure.times) {
            errno = failure.error;
            return failure.result;
        }
    }
    return before ? before(call) : std::nullopt;
}

Answer Recorder::run(const std::function<int32_t()> &call) {
    calls.clear();
    libraryHas = {};
    Answer answer = {};
    complaints = complainedBy([&] {
        answer = ::answerOf([&] {
            isRunning_ = true;
            const int32_t status = call();
            isRunning_ = false;
            return status;
        });
    });
    libraryHas.expectNothing();
    return answer;
}

Calls Recorder::work() const {
    Calls found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [](const std::string &call) {
                     return call != "free" && !call.starts_with("close ") &&
                            !call.starts_with("fclose ") && !call.starts_with("unmap ");
                 });
    return found;
}

Calls Recorder::callsOf(std::string_view words) const {
    Calls found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [&](const std::string &call) { return call.starts_with(words); });
    return found;
}
