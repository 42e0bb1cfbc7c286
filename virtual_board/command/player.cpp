#include "virtual_board/command/player.h"

#include "language/conditions.h"
#include "language/texts.h"
#include "language/times.h"
#include "virtual_board/command/json_condition.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>
#include <vector>

namespace vboard {

namespace {

using nlohmann::json;
using HostClock = std::chrono::steady_clock;

constexpr uint64_t kSecond = 1000000000;

/** A stepped clock is moved by so much while something is waited for that nobody can see coming. */
constexpr uint64_t kStepNs = kSecond / 10;
/** How often a program's output is looked at, in the host's time. */
constexpr int kLookEveryMs = 5;

/** The documents in a text: the text itself, or lines of it. */
std::vector<json> documentsIn(const std::string &text) {
    std::vector<json> documents;
    const auto take = [&documents](const std::string &part) {
        json document = json::parse(part, nullptr, false);
        if (!document.is_discarded())
            documents.push_back(std::move(document));
        return !documents.empty();
    };
    if (!take(text)) {
        for (const std::string &line : language::linesOf(text))
            take(line);
    }
    return documents;
}

/** The last line of what a program has said, for a sentence about it. */
std::string lastWords(const Program &program) {
    std::vector<std::string> lines = language::linesOf(program.errors());
    if (lines.empty())
        lines = language::linesOf(program.output());
    return lines.empty() ? "" : "; it said " + language::quoted(lines.back());
}

std::string wrongEnd(const Step &step, const Program &program) {
    if (program.exitCode() == step.exitCode)
        return "";
    return "it ended with " + std::to_string(program.exitCode()) + ", not with " +
           std::to_string(step.exitCode) + lastWords(program);
}

/** Why what a program has printed is not as it should be; empty when it is. */
std::string wrongOutput(const std::string &expected, const Program &program) {
    const language::Condition condition = language::parseCondition(expected);
    const std::vector<json> documents = documentsIn(program.output());
    const bool isThere = std::any_of(documents.begin(), documents.end(), [&](const json &document) {
        return holds(condition, document);
    });
    if (isThere)
        return "";
    if (documents.empty())
        return "it printed no JSON" + lastWords(program);
    return expected + " is not so: " + membersText(condition, documents.back());
}

/** Looks at the whole lines of a new part of an output; those up to the one that is as it should
 * be are seen. */
bool sees(const std::string &part, const language::Condition &condition, size_t &seen,
          std::string &state) {
    const size_t end = part.rfind('\n');
    if (end == std::string::npos)
        return false;
    for (const std::string &line : language::linesOf(part.substr(0, end + 1))) {
        seen += line.size() + 1;
        const json document = json::parse(line, nullptr, false);
        if (document.is_discarded())
            continue;
        if (holds(condition, document))
            return true;
        state = membersText(condition, document);
    }
    return false;
}

std::string secondsText(uint64_t ns) {
    return language::durationText(ns) + " s";
}

/** How long a program may run, in the host's time. */
class Limit {
  public:
    explicit Limit(const Step &step)
        : allNs_(step.limitNs), end_(HostClock::now() + std::chrono::nanoseconds(allNs_)) {}

    uint64_t leftNs() const {
        const std::chrono::nanoseconds left = end_ - HostClock::now();
        return static_cast<uint64_t>(std::max<int64_t>(left.count(), 0));
    }

    /** Throws NotAsExpected when it is over. */
    void judge(const Program &program, const std::string &why) const {
        if (leftNs() == 0)
            throw NotAsExpected("it still ran after " + secondsText(allNs_) +
                                " of the host's time" + why + lastWords(program));
    }

  private:
    const uint64_t allNs_;
    const HostClock::time_point end_;
};

} // namespace

Player::Player(const Board &board, std::chrono::milliseconds mostSilence)
    : board_(board), hands_(board), mostSilence_(mostSilence), beganNs_(now()) {}

uint64_t Player::now() const {
    uint64_t time = 0;
    call([&](VBoardError *error) { return vboardTime(board_, &time, error); });
    return time;
}

uint64_t Player::passedNs() const {
    return now() - beganNs_;
}

bool Player::isTime(const std::string &mode) const {
    return board_.properties({"time"}).begin()->value == mode;
}

/** Lets the programs in the background come to rest, where they can. */
void Player::settle() const {
    if (!programs_.empty() && isTime("stepped"))
        hands_.advance(0);
}

void Player::play(const Step &step) {
    settle();
    awaitMoment(step);
    switch (step.deed) {
    case Deed::Wait:
        break;
    case Deed::Set:
        hands_.set(step.changes);
        break;
    case Deed::AddFault:
        hands_.addFault(step);
        break;
    case Deed::ClearFaults:
        hands_.clearFaults(step.subject->text);
        break;
    case Deed::Advance:
        hands_.advance(step.advanceNs);
        break;
    case Deed::Run:
        run(step);
        break;
    case Deed::Stop:
        stop(step.subject->text);
        break;
    case Deed::Expect:
        expect(step);
        break;
    }
}

void Player::awaitMoment(const Step &step) const {
    if (step.atNs.has_value())
        awaitTime(beganNs_ + *step.atNs);
    if (step.afterNs.has_value())
        awaitTime(now() + *step.afterNs);
    if (step.when.has_value())
        awaitCondition(step.when->text, step.withinNs.value_or(kUsualPatienceNs));
}

/** Waits as for any condition, which every kind of clock knows how to. */
void Player::awaitTime(uint64_t time) const {
    const uint64_t begin = now();
    if (begin < time)
        awaitCondition("clock >= " + language::secondsText(time), time - begin);
}

void Player::awaitCondition(const std::string &condition, uint64_t timeoutNs) const {
    VBoardError error = {};
    const int32_t status = vboardWait(board_, condition.c_str(), timeoutNs, &error);
    if (status == VBOARD_E_TIMEOUT)
        throw NotAsExpected(error.text);
    if (status != VBOARD_OK)
        throw CallFailed(error);
}

void Player::run(const Step &step) {
    if (!step.isInBackground) {
        runInForeground(step);
        return;
    }
    programs_.push_back({&step, std::make_unique<Program>(board_, step.program)});
}

/** Runs a program once, or each second until it prints what it is to. */
void Player::runInForeground(const Step &step) const {
    // What it waited for before was within a time of its own.
    const uint64_t patience = step.expected.has_value() ? step.withinNs.value_or(0) : 0;
    const uint64_t deadline = now() + patience;
    for (;;) {
        const std::string reason = runOnce(step);
        if (reason.empty())
            return;
        const uint64_t time = now();
        if (time >= deadline)
            throw NotAsExpected(reason);
        awaitTime(std::min(time + kSecond, deadline));
    }
}

/** Why it did not do what it should. */
std::string Player::runOnce(const Step &step) const {
    Program program(board_, step.program);
    awaitEnd(program, step);
    std::string reason = wrongEnd(step, program);
    if (!reason.empty() || !step.expected.has_value())
        return reason;
    return wrongOutput(step.expected->text, program);
}

/** Waits for the end of a program, which moves the clock by itself, or is moved by it. */
void Player::awaitEnd(Program &program, const Step &step) const {
    if (isTime("stepped")) {
        awaitEndByStepping(program, step);
        return;
    }
    const Limit limit(step);
    while (!program.awaitEnd(kLookEveryMs))
        limit.judge(program, "");
}

/** The clock is moved only while the program waits; what it computes takes its limit alone. */
void Player::awaitEndByStepping(Program &program, const Step &step) const {
    const Limit limit(step);
    std::string busy;
    uint64_t ns = 0;
    do {
        limit.judge(program, busy);
        try {
            hands_.advance(std::exchange(ns, kStepNs), limit.leftNs());
        } catch (const CallFailed &failure) {
            if (failure.status() != VBOARD_E_BUSY)
                throw;
            busy = std::string(": ") + failure.what();
        }
    } while (!program.awaitEnd(1));
}

std::vector<Player::Running>::iterator Player::running(const std::string &name) {
    return std::find_if(programs_.begin(), programs_.end(), [&name](const Running &one) {
        return one.step->label.has_value() && one.step->label->text == name;
    });
}

/** Ends a program, unless it has done that by itself: then it has to have ended well. */
void Player::stop(const std::string &name) {
    const auto place = running(name);
    const Running ended = std::move(*place);
    programs_.erase(place);
    const bool isEnded = ended.program->awaitEnd(0);
    ended.program->end();
    const std::string reason = isEnded ? wrongEnd(*ended.step, *ended.program) : "";
    if (!reason.empty())
        throw NotAsExpected(reason);
}

const Step *Player::finish(std::string &reason) {
    const Step *wrong = nullptr;
    for (const Running &one : programs_) {
        if (wrong == nullptr && one.program->awaitEnd(0)) {
            reason = wrongEnd(*one.step, *one.program);
            wrong = reason.empty() ? nullptr : one.step;
        }
    }
    programs_.clear();
    return wrong;
}

void Player::expect(const Step &step) {
    if (step.subject.has_value())
        expectLine(step);
    else
        awaitCondition(step.expected->text, step.withinNs.value_or(0));
}

void Player::expectLine(const Step &step) {
    Running &one = *running(step.subject->text);
    const std::string &expected = step.expected->text;
    const language::Condition condition = language::parseCondition(expected);
    const uint64_t within = step.withinNs.value_or(kUsualPatienceNs);
    const uint64_t deadline = now() + within;
    const bool isMovedByPrograms = isTime("virtual");
    const auto silence = HostClock::now() + mostSilence_;
    std::string state = "it printed no JSON";
    for (;;) {
        // In this order: what is printed until then is seen.
        const uint64_t time = now();
        const bool hasEnded = one.program->awaitEnd(0);
        if (sees(one.program->output(one.seen), condition, one.seen, state))
            return;
        std::string missing = "no line has " + expected;
        if (hasEnded)
            throw NotAsExpected(missing + ", and it has ended with " +
                                std::to_string(one.program->exitCode()).append(": ").append(state));
        if (time >= deadline)
            throw NotAsExpected(missing + " within " +
                                secondsText(within).append(": ").append(state));
        if (isMovedByPrograms && HostClock::now() >= silence)
            throw NotAsExpected(
                missing.append(", and nobody moves the board's clock: ").append(state));
        letTimePass(*one.program, deadline - time);
    }
}

/** Lets a moment pass in which a program may print something. */
void Player::letTimePass(Program &program, uint64_t mostNs) const {
    if (isTime("stepped"))
        hands_.advance(std::min(kStepNs, mostNs));
    else
        program.awaitEnd(kLookEveryMs);
}

} // namespace vboard
