#pragma once
// Changing stored bytes so that nothing goes wrong unseen: show what changes, write, read back.

#include "iodbg/core/console.h"
#include "iodbg/core/format.h"

#include <functional>
#include <string>

namespace iodbg {

/** A change of stored bytes. */
struct Update {
    std::string name; // "the board's record"
    Bytes before;
    Bytes wanted;
    std::function<int32_t()> write;
    std::function<int32_t(Bytes &)> readBack;
    std::string repair; // what to do after a write that went wrong
};

/** One row of what an update changes. */
struct Change {
    std::string item;
    std::string before;
    std::string after;
};

/** Carries an update out, or only shows what it would change. */
ExitCode carryOut(Console &console, const Update &update, const std::vector<Change> &changes,
                  bool isDryRun);

} // namespace iodbg
