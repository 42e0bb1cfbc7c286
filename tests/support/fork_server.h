#pragma once
// What a test tells a server that runs programs for it.

#include <cstdint>
#include <sys/stat.h>

/** Names the descriptor of the socket that requests come on. */
constexpr char kServerVariable[] = "BSP_TEST_FORK_SOCKET";

/** What comes along with a request: the standard streams, and the folder to work in. */
struct ForkDescriptors {
    int streams[3], folder;
};

/** Words and variables follow it, each with its null byte. */
struct ForkRequest {
    uint32_t length, words, variables;
    mode_t mask;
};
