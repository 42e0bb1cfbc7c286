#pragma once
// Programs that wait where that is easily got wrong.

#include "tests/control/held_board.h"
#include "tests/support/process.h"

#include <string>

class WaitersTest : public ControlTest {
  protected:
    WaitersTest() : ControlTest("0x0709", "stepped") {}

    /** What a program prints by the board's clock, which is moved until it has ended. */
    std::string outputOf(const std::string &way) const {
        const Process program({builtProgram("waiters"), way},
                              boardEnvironment(vboardFolder(board)));
        EXPECT_TRUE(comesTrue([&] {
            EXPECT_EQ(advance(program.errors() == "ready\n" ? 10 : 0), kDone);
            return program.output().ends_with("done\n");
        })) << program.output();
        return program.output();
    }
};
