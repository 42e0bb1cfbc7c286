#pragma once
// Everything that can be done with a board, one use after the other in this process: the commands
// of `vboard`, and the requests of programs.

#include <random>
#include <string>
#include <vector>

/** Numbers that are the same on every machine. */
using Random = std::mt19937_64;

inline uint32_t below(Random &random, uint64_t limit) {
    return static_cast<uint32_t>(random() % limit);
}

struct StateUse {
    const char *name;
    void (*use)(const std::string &board, Random &random);
};

/** All uses. What one refuses it throws as vb::Refused. */
const std::vector<StateUse> &stateUses();

/** Sends away what this process prints, but for what is written to the descriptor of errors. */
void silence();
