#pragma once
// C library functions that fail on command, for the failures that no board can bring about.

#include <cstddef>
#include <cstdint>

struct LibraryFaults {
    bool flockFails = false;             // exclusive locks of the PoE lock file
    size_t refusedAllocation = SIZE_MAX; // malloc of this size
    size_t lostBytes = 0;                // fread gives that many fewer

    void clear() { *this = LibraryFaults{}; }
};

extern LibraryFaults libraryFaults;
