#pragma once
// Programs that tick each second of a stepped clock.

#include "tests/control/held_board.h"
#include "tests/support/process.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class TickingTest : public ControlTest {
  protected:
    TickingTest() : ControlTest("0x0709", "stepped") {}

    /** Starts a program, and waits until it is on the board. */
    std::unique_ptr<Process> start(const std::string &way, const std::string &count) const {
        auto program =
            std::make_unique<Process>(std::vector<std::string>{builtProgram("tick"), way, count},
                                      boardEnvironment(vboardFolder(board)));
        EXPECT_TRUE(comesTrue([&] { return program->errors() == "ready\n"; }));
        return program;
    }
    /** The same until it waits. */
    std::unique_ptr<Process> startTicks(const std::string &way, const std::string &count) const {
        auto program = start(way, count);
        EXPECT_EQ(advance(0), kDone);
        return program;
    }
};

/** What programs print that tick so often, as their clocks do. */
inline std::string ticks(uint64_t count) {
    std::string lines;
    for (uint64_t i = 1; i <= count; ++i) {
        const std::string seconds = std::to_string(i) + ".000000000";
        lines += seconds + " " + seconds + "\n";
    }
    return lines;
}
