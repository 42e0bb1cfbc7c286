#pragma once
// `iodbg trace` on a virtual board, which records what it is asked, too.

#include "tests/support/files.h"
#include "tests/support/json.h"
#include "tests/virtual_board/command_test.h"

#include <map>
#include <set>

class TraceCommandTest : public CommandTest {
  protected:
    /** Runs `iodbg trace` with these words on the board. */
    ProcessResult trace(Words words) const {
        words.insert(words.begin(), {builtProgram("iodbg"), "trace"});
        return runOnBoard(board(), words);
    }

    /** How often a register is read, and by which processes. */
    struct Reads {
        int count = 0;
        std::set<int> processes;
    };
    static std::map<int, Reads> readsIn(const std::string &trace) {
        std::map<int, Reads> reads;
        for (const std::string &line : linesOf(trace)) {
            const nlohmann::json object = parsedJson(line);
            if (object["kind"] != "cpld-read")
                continue;
            Reads &found = reads[object["register"].get<int>()];
            ++found.count;
            found.processes.insert(object["pid"].get<int>());
        }
        return reads;
    }
};
