// What the documents show is tried as it stands: commands are carried out in their order, in one
// folder, and what is shown below one is what it prints. "..." stands for anything.

#include "tests/support/patterns.h"
#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

struct Command {
    std::string text;
    Words shown; // lines of its output
};

using Transcript = std::vector<Command>;

/** The transcripts of a document: its blocks that are marked as such. */
std::vector<Transcript> transcriptsOf(const std::string &document) {
    std::vector<Transcript> transcripts;
    bool isInTranscript = false;
    std::ifstream text(std::string(BSP_TEST_DOCUMENTS) + "/" + document);
    for (std::string line; std::getline(text, line);) {
        if (line == "```console")
            transcripts.emplace_back();
        if (line.starts_with("```")) {
            isInTranscript = line == "```console";
        } else if (!isInTranscript) {
            continue;
        } else if (line.starts_with("$ ")) {
            transcripts.back().push_back({line.substr(2), {}});
        } else if (transcripts.back().empty()) {
            ADD_FAILURE() << document << ": " << line << ": output of no command";
        } else {
            Command &command = transcripts.back().back();
            const bool goesOn = command.shown.empty() && (line.starts_with("> ") || line == ">" ||
                                                          command.text.ends_with("\\"));
            if (goesOn)
                command.text +=
                    "\n" +
                    (line.starts_with(">") ? line.substr(std::min<size_t>(2, line.size())) : line);
            else
                command.shown.push_back(line);
        }
    }
    return transcripts;
}

/** What differs from run to run. */
std::string steady(const std::string &line) {
    return replaced(line, "^([0-9]+\\.[0-9]{9}) +[0-9]+ |\"pid\":[0-9]+", "$1 PID ");
}

bool isAsShown(const std::string &shown, const std::string &printed) {
    const std::string quoted = replaced(steady(shown), "[^A-Za-z0-9 ]", "\\$&");
    return matches(steady(printed), replaced(quoted, "\\\\\\.\\\\\\.\\\\\\.", ".*"));
}

/** Whether lines are as shown; a line "..." stands for any number of them. */
bool areAsShown(const std::string *shown, const std::string *shownEnd, const std::string *printed,
                const std::string *printedEnd) {
    if (shown == shownEnd)
        return printed == printedEnd;
    if (*shown == "...")
        return areAsShown(shown + 1, shownEnd, printed, printedEnd) ||
               (printed != printedEnd && areAsShown(shown, shownEnd, printed + 1, printedEnd));
    return printed != printedEnd && isAsShown(*shown, *printed) &&
           areAsShown(shown + 1, shownEnd, printed + 1, printedEnd);
}

class DocumentsTest : public ::testing::TestWithParam<const char *> {
  protected:
    std::string path(const std::string &name) const { return folder_.path() + "/" + name; }

    /** The folder in which the documents' users work, and an installed tree. */
    void SetUp() override {
        const fs::path build = fs::path(builtProgram("vboard")).parent_path().parent_path();
        fs::create_directories(path("installed/share"));
        fs::create_directories(path("work"));
        fs::create_directory_symlink(BSP_TEST_CHECKERS, path("installed/share/bsp"));
        fs::create_directory_symlink(build, path("installed/lib"));
        fs::create_symlink(builtProgram("readme_program"), path("work/my-program"));
        fs::create_symlink(BSP_TEST_README_PROGRAM, path("work/my-program.c"));
    }

    /** Runs a transcript; the output of each command and its exit code. */
    std::vector<ProcessResult> carryOut(const Transcript &transcript) const {
        std::string script = "exec 2>&1\n";
        const std::string mark = "-- end of a command: ";
        for (const Command &command : transcript)
            script += command.text + "\necho \"" + mark + "$?\"\n";
        const std::string lib = path("installed/lib");
        const fs::path programs = fs::path(builtProgram("vboard")).parent_path();
        const ProcessResult result = run(
            {"bash", "-c", "cd \"$0\" && eval \"$1\"", path("work"), script},
            {"PATH=" + programs.string() + ":" + std::getenv("PATH"), "PREFIX=" + path("installed"),
             "C_INCLUDE_PATH=" BSP_TEST_INCLUDE, "LIBRARY_PATH=" + lib, "LD_LIBRARY_PATH=" + lib});
        std::vector<ProcessResult> results;
        std::string rest = result.out;
        for (size_t at = 0; (at = rest.find(mark)) != std::string::npos;) {
            const size_t end = rest.find('\n', at);
            results.push_back({std::stoi(rest.substr(at + mark.size())), rest.substr(0, at), ""});
            rest.erase(0, end + 1);
        }
        return results;
    }

    static void expectShown(const Command &command, const ProcessResult &result) {
        const Words printed = linesOf(result.out);
        const bool isShown =
            areAsShown(command.shown.data(), command.shown.data() + command.shown.size(),
                       printed.data(), printed.data() + printed.size());
        EXPECT_TRUE(isShown) << "$ " << command.text << "\n" << result.out;
        if (command.shown.empty()) {
            EXPECT_EQ(result.exitCode, 0) << command.text;
        }
    }

  private:
    TemporaryFolder folder_;
};

TEST_P(DocumentsTest, CommandsDoWhatIsShown) {
    size_t count = 0;
    for (const Transcript &transcript : transcriptsOf(GetParam())) {
        const std::vector<ProcessResult> results = carryOut(transcript);
        ASSERT_EQ(results.size(), transcript.size()) << transcript[0].text;
        for (size_t i = 0; i < transcript.size(); ++i)
            expectShown(transcript[i], results[i]);
        count += transcript.size();
    }
    EXPECT_GT(count, 10u);
}

INSTANTIATE_TEST_SUITE_P(, DocumentsTest,
                         ::testing::Values("debugging-and-ci.md", "front-panel.md",
                                           "virtual-board.md"),
                         [](const auto &document) {
                             const std::string name = document.param;
                             return replaced(name.substr(0, name.find('.')), "-", "_");
                         });

} // namespace
