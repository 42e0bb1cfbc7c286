#pragma once
// The library's calls of the system, counted, and each made to fail.

#include "tests/support/library_holdings.h"

#include <cstdint>
#include <string>

namespace sweep {

/** Which call fails, counted from 1, and in which of the ways that this kind of call has. */
struct Failure {
    uint32_t nth = 0; // 0: none
    uint32_t way = 0;
    bool stays = false; // all calls behind it fail as well
};

/** What a run did. */
struct Outcome {
    uint32_t calls = 0;
    uint32_t ways = 0;      // how many ways the call that failed has; 0 when it was not reached
    std::string failedCall; // its name
    LibraryHoldings left = {};
};

/** From here to end() the calls are counted, and one may fail. */
void begin(const Failure &failure);
Outcome end();

} // namespace sweep
