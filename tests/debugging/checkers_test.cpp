// Threads of a program on a board, as valgrind and ThreadSanitizer see them.

#include "tests/virtual_board/command_test.h"

namespace {

constexpr int kReported = 9;

class ThreadsUnderCheckTest : public CommandTest {
  protected:
    enum class Suppressions { None, Own };

    ProcessResult watched(const std::string &tool, Suppressions suppressions,
                          const Words &arguments = {}) const {
        Words words = {
            "run",      board(),          "--",
            "valgrind", "--tool=" + tool, "--error-exitcode=" + std::to_string(kReported)};
        if (suppressions == Suppressions::Own)
            words.push_back("--suppressions=" BSP_TEST_CHECKERS "/vboard.supp");
        words.push_back(builtProgram("use_board"));
        words.insert(words.end(), arguments.begin(), arguments.end());
        return answer(words);
    }

    ProcessResult sanitized(const Words &arguments = {}) const {
        Words words = {"run", board(), "--", builtProgram("use_board_sanitized")};
        words.insert(words.end(), arguments.begin(), arguments.end());
        const std::string file = BSP_TEST_CHECKERS "/vboard-tsan.supp";
        return answer(words, {"TSAN_OPTIONS=exitcode=" + std::to_string(kReported) +
                              ":suppressions=" + file});
    }

    static void expectClean(const ProcessResult &result) {
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.out, "9 rounds\n");
    }

    /** The race is in a function of the program's, and nothing else is reported. */
    static void expectRace(const ProcessResult &result, const std::string &start,
                           const std::string &frame) {
        EXPECT_EQ(result.exitCode, kReported);
        size_t reports = 0, ofProgram = 0;
        const Words lines = linesOf(result.err);
        for (size_t i = 0; i < lines.size(); ++i) {
            if (lines[i].find(start) == std::string::npos)
                continue;
            ++reports;
            for (size_t next = i + 1; next < lines.size() && next < i + 4; ++next)
                ofProgram += lines[next].find(frame) != std::string::npos;
        }
        EXPECT_GT(reports, 0u) << result.err;
        EXPECT_EQ(ofProgram, reports) << result.err;
    }
};

TEST_F(ThreadsUnderCheckTest, HelgrindSeesOnlyWhatIsTheProgramsFault) {
    expectClean(watched("helgrind", Suppressions::Own));
    expectRace(watched("helgrind", Suppressions::Own, {"race"}), "Possible data race", ": work (");
}

TEST_F(ThreadsUnderCheckTest, DrdSeesOnlyWhatIsTheProgramsFault) {
    expectClean(watched("drd", Suppressions::Own));
    expectRace(watched("drd", Suppressions::Own, {"race"}), "Conflicting ", ": work (");
}

TEST_F(ThreadsUnderCheckTest, ThreadSanitizerSeesOnlyWhatIsTheProgramsFault) {
    expectClean(sanitized());
    expectRace(sanitized({"race"}), "WARNING: ThreadSanitizer: data race", "#0 work ");
}

/**
 * When the tools understand the board by themselves, the file can go. What ThreadSanitizer sees of
 * an optimised library is chance.
 */
TEST_F(ThreadsUnderCheckTest, ValgrindNeedsTheFile) {
    EXPECT_EQ(watched("helgrind", Suppressions::None).exitCode, kReported);
    EXPECT_EQ(watched("drd", Suppressions::None).exitCode, kReported);
}

TEST_F(ThreadsUnderCheckTest, MemcheckHasNothingToReport) {
    expectClean(watched("memcheck", Suppressions::None));
}

/** Valgrind outside of the board, which follows `vboard run` into the program. */
TEST_F(ThreadsUnderCheckTest, ValgrindFollowsToTheBoard) {
    expectClean(run({"valgrind", "-q", "--trace-children=yes",
                     "--error-exitcode=" + std::to_string(kReported), builtProgram("vboard"), "run",
                     board(), "--", builtProgram("use_board")}));
}

} // namespace
