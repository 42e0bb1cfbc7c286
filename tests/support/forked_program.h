#pragma once
// Programs of the build as children of one that has been started: where an emulator translates a
// program anew at each start, that takes a fifth of the time. Where it does not, they are started.

#include "tests/support/process.h"

/** Runs a program to its end, as run() does. */
ProcessResult runForked(const std::vector<std::string> &argv, const Environment &environment = {},
                        const std::string &input = "");

/** Starts now what the first run of a program would: that one opens no descriptor then. */
void prepareForked(const std::string &program, bool isOnBoard);
