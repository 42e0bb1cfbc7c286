#pragma once
// What the threads of programs are doing, as the kernel shows it.

#include <cstdint>
#include <string>
#include <vector>

namespace vboard {

/** A thread at one moment. */
struct Thread {
    int32_t pid;
    int32_t id;
    char state;    // as in /proc: 'S' sleeps until something comes
    uint64_t runs; // how often it has been let run

    bool operator==(const Thread &other) const = default;
};

/** The threads of some processes and of those that they have started, and so on. */
std::vector<Thread> threadsOf(std::vector<int32_t> processes);

/** The name of a process's program; empty when there is none. */
std::string programOf(int32_t pid);

} // namespace vboard
