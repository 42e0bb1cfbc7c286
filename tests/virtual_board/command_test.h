#pragma once
// A test that uses the `vboard` program, with a board of virtual time: of model 0x0709, unless the
// test wants another.

#include "tests/support/files.h"
#include "tests/support/forked_program.h"
#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"

#include <filesystem>
#include <fstream>
#include <map>

using Words = std::vector<std::string>;

class CommandTest : public ::testing::Test {
  protected:
    explicit CommandTest(std::string model = "0x0709") : model_(std::move(model)) {}
    void SetUp() override {
        ASSERT_EQ(vboard({"create", "--model", model_, "--time", "virtual", board()}), "");
    }

    std::string board() const { return path("board"); }
    std::string path(const std::string &name) const { return folder_.path() + "/" + name; }

    /** A run of the command; its command line starts behind the program's name. */
    static ProcessResult answer(Words words, const Environment &environment = {}) {
        words.insert(words.begin(), builtProgram("vboard"));
        return runForked(words, environment);
    }

    /** What a run that succeeds prints on standard output. */
    static std::string vboard(const Words &words) {
        const ProcessResult result = answer(words);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return result.out;
    }

    /** Expects a run to fail with one line on standard error, and nothing on standard output. */
    static void expectFailure(int exitCode, const std::string &reason, const Words &words) {
        const ProcessResult result = answer(words);
        EXPECT_EQ(result.exitCode, exitCode) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(linesOf(result.err).size(), 1u) << result.err;
        EXPECT_EQ(result.err.substr(0, 8), "vboard: ");
        EXPECT_NE(result.err.find(reason), std::string::npos) << result.err;
    }

    std::string showDeviceId() const {
        return runOnBoard(board(), {builtProgram("show_device_id")}).out;
    }

    /** Everything that a board's folder holds, by path. */
    static std::map<std::string, std::string> contentOf(const std::string &folder) {
        std::map<std::string, std::string> content;
        for (const std::string &path : pathsUnder(folder)) {
            std::string &text = content[path];
            if (std::filesystem::is_regular_file(path))
                text = bytesOutsideHoles(path);
        }
        return content;
    }

  private:
    std::string model_;
    TemporaryFolder folder_;
};
