#include "tests/system/unit_test.h"

#include "language/trace_reader.h"
#include "language/trace_replay.h"
#include "tests/support/forked_program.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/replay.h"

#include <fstream>
#include <optional>
#include <utility>

/** A copy of a board, which is asked what the board was asked meanwhile. */
class UnitTest::Repetition {
  public:
    Repetition(const std::string &board, const std::string &copy) : board_(board) {
        vboard::call(
            [&](VBoardError *error) { return vboardCopy(board.c_str(), copy.c_str(), error); });
        copy_.emplace(copy);
        listFrom(UINT64_MAX);
    }
    Repetition(const Repetition &) = delete;
    Repetition &operator=(const Repetition &) = delete;
    ~Repetition() {
        const std::string folder = vboardFolder(*copy_);
        copy_.reset();
        vboardDelete(folder.c_str(), nullptr);
    }

    /** Asks; how many answers were the same. */
    uint64_t run(const std::string &line) {
        uint64_t same = 0;
        uint64_t clock = 0;
        vboard::call([&](VBoardError *error) { return vboardTime(*copy_, &clock, error); });
        vboard::ReplayTimes times(clock);
        const vboard::List<VBoardRequest> requests = listFrom(position_);
        for (const VBoardRequest &request : requests) {
            const language::TraceRecord recorded = language::readTraceLine(request.json);
            const uint64_t due = times.dueAt(recorded);
            if (language::notSent(recorded) != language::NotSent::Sent)
                continue;
            vboard::call([&](VBoardError *error) {
                return vboardAdvance(*copy_, due - std::exchange(clock, due), 0, error);
            });
            const std::string answer = vboard::textOf([&](char **text, VBoardError *error) {
                return vboardSend(*copy_, request.json, text, error);
            });
            const language::Difference found =
                language::difference(recorded, language::readTraceLine(answer));
            EXPECT_TRUE(found.words.empty()) << "iodbg " << line << ": " << request.text << ": "
                                             << (found.words.empty() ? "" : found.words.front());
            same += found.words.empty() ? 1u : 0u;
        }
        return same;
    }

  private:
    vboard::List<VBoardRequest> listFrom(uint64_t position) {
        position_ = position;
        return vboard::List<VBoardRequest>(
            [&](VBoardRequest **list, uint32_t *count, VBoardError *error) {
                return vboardTrace(board_, &position_, 0, list, count, nullptr, error);
            });
    }

    vboard::Board board_;
    std::optional<vboard::Board> copy_;
    uint64_t position_ = 0;
};

void UnitTest::repeatOnCopies() {
#ifndef BSP_TEST_SANITIZED // which would double a day; what sends requests has tests of its own
    repeats_ = true;
#endif
}

void UnitTest::TearDown() {
    EXPECT_EQ(repeats_, repeated_ > 0);
}

std::string UnitTest::iodbg(const std::string &line, int exitCode, const std::string &input) const {
    if (environment_.empty())
        environment_ = boardEnvironment(board());
    Words words = wordsOf(line);
    words.insert(words.begin(), builtProgram("iodbg"));
    std::optional<Repetition> repetition;
    if (repeats_)
        repetition.emplace(board(), path("copy"));
    const ProcessResult result = runForked(words, environment_, input);
    if (repeats_)
        repeated_ += repetition->run(line);
    EXPECT_EQ(result.exitCode, exitCode) << "iodbg " << line << "\n" << result.out << result.err;
    return exitCode == 0 || !result.out.empty() ? result.out : result.err;
}

Json UnitTest::json(const std::string &line, int exitCode) const {
    const std::string text = iodbg(line + " --json", exitCode);
    if (Json::accept(text))
        return Json::parse(text);
    const Lines lines = linesOf(text);
    return Json::parse(lines.empty() ? "" : lines.back(), nullptr, false);
}

std::string UnitTest::refusal(const std::string &line, int exitCode) const {
    const Lines lines = linesOf(iodbg(line, exitCode));
    return lines.empty() ? "" : lines.back();
}

void UnitTest::set(const std::string &property, const std::string &value) const {
    EXPECT_EQ(vboard({"set", board(), property, value}), "") << property;
}

Lines UnitTest::get(const Words &properties) const {
    Words words = {"get", board()};
    words.insert(words.end(), properties.begin(), properties.end());
    return linesOf(vboard(words));
}

Lines UnitTest::panel() const {
    Lines lines = linesOf(vboard({"panel", board()}));
    EXPECT_FALSE(lines.empty());
    if (!lines.empty())
        lines.erase(lines.begin()); // the model and the board's clock
    for (std::string &line : lines)
        line = line.substr(0, line.find(", calendar"));
    return lines;
}

int64_t UnitTest::now() const {
    constexpr size_t kMilliseconds = 3; // of the nine digits behind the point
    std::string text = get({"clock"}).at(0);
    const size_t point = text.find('.');
    return std::stoll(text.substr(0, point) + text.substr(point + 1, kMilliseconds));
}

void UnitTest::pass(unsigned seconds) const {
    iodbg("watchdog feed --count 2 --every " + std::to_string(seconds));
}

Lines UnitTest::complaints(int exitCode) const {
    Lines lines;
    const Json answer = json("check", exitCode);
    for (const Json &finding : answer.at("findings")) {
        const auto text = [&finding](const char *key) {
            return finding.at(key).get<std::string>();
        };
        const std::string advice = finding.at("advice").is_null() ? "" : "; " + text("advice");
        if (text("verdict") != "good")
            lines.push_back(text("verdict") + " " + text("subject") + ": " + text("found") +
                            advice);
    }
    return lines;
}

std::string UnitTest::makeFile(const std::string &name, const std::string &bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
}

Lines withEmptyFlash(Lines findings) {
    for (const char *finding :
         {"warning boot settings: none is stored, the defaults hold; set them with 'iodbg boot "
          "set'",
          "warning bank 0: holds no image; write one with 'iodbg upgrade os FILE --bank 0'",
          "warning bank 1: holds no image; write one with 'iodbg upgrade os FILE --bank 1'"})
        findings.emplace_back(finding);
    return findings;
}

std::string column(const Json &rows, const std::string &key) {
    std::string text;
    for (const Json &row : rows)
        text += (text.empty() ? "" : " ") + row.at(key).dump();
    return text;
}

std::string osImage(const std::string &name, size_t size) {
    constexpr size_t kHeader = 512;
    std::string bytes(size - kHeader, '\0');
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * 31 + i / 256 * 7);
    return bytes + name + std::string(kHeader - name.size(), '\0');
}
