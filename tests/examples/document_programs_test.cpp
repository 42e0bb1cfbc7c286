// What docs/virtual-board.md and bsp.h show as programs.

#include "tests/support/files.h"
#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"
#include "tests/support/world.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;

/** They work in the folder that the board is in. */
class DocumentProgramsTest : public VirtualBoardTest {
  protected:
    void SetUp() override {
        VirtualBoardTest::SetUp();
        fs::current_path(fs::path(boardFolder()).parent_path());
    }
    void TearDown() override {
        fs::current_path(cameFrom_);
        VirtualBoardTest::TearDown();
    }

  private:
    fs::path cameFrom_ = fs::current_path();
};

TEST_F(DocumentProgramsTest, AFanIsStoppedAndWaitedFor) {
    const ProcessResult result = run({builtProgram("vboard_program")});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(world::get("fan.1.state"), "stuck");
    EXPECT_EQ(world::get("fan.1.speed"), "0");
}

TEST_F(DocumentProgramsTest, WithoutABoardTheReasonIsPrinted) {
    fs::current_path("/");
    const ProcessResult result = run({builtProgram("vboard_program")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("board"), std::string::npos) << result.err;
}

TEST_F(DocumentProgramsTest, WhatTheLibraryPrintsIsKeptApart) {
    const ProcessResult result = runOnBoard(boardFolder(), {builtProgram("output_program")});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "refused\n");
    const std::string log = bytesOutsideHoles("bsp.log");
    EXPECT_NE(log.find("firmware"), std::string::npos) << log;
}

} // namespace
