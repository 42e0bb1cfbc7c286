#pragma once
// iodbg as children of one that has been started: where an emulator translates a program anew at
// each start, that takes a fifth of the time.

#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"

#include <memory>
#include <string>
#include <vector>

using Words = std::vector<std::string>;

class ForkedIodbg {
  public:
    /** Whether this build has the server. */
    static bool isThere();

    ForkedIodbg();
    ForkedIodbg(const ForkedIodbg &) = delete;
    ForkedIodbg &operator=(const ForkedIodbg &) = delete;
    ~ForkedIodbg();

    /** Runs a command line on the board that the variables name. */
    ProcessResult run(const Words &argv, const Environment &environment,
                      const std::string &input) const;

  private:
    TemporaryFolder folder_; // of a board that no other program is on
    int socket_ = -1;
    std::unique_ptr<Process> server_;
};
