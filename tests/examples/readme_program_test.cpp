// The program that README.md shows.

#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"

namespace {

using ReadmeProgramTest = VirtualBoardTest;

TEST_F(ReadmeProgramTest, TellsOfAUnit) {
    const ProcessResult result = runOnBoard(boardFolder(), {builtProgram("readme_program")});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "unit VB00000001 has 40 degrees\n");
}

TEST_F(ReadmeProgramTest, EndsWhereABoardDoesNotAnswer) {
    addFault(refuse(vb::FaultDevice::I2c, vb::FaultOp::Any, -5));
    EXPECT_EQ(runOnBoard(boardFolder(), {builtProgram("readme_program")}).exitCode, 1);
}

} // namespace
