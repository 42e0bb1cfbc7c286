#pragma once
// The folder and the lock files in /tmp through which the programs of a board work together. Others
// who can change them have a hand in what root reads, writes and waits for there.

#include <string>
#include <sys/types.h>
#include <unistd.h>
#include <vector>

namespace iodbg {

/** The folder of the files that the programs of a board share. */
constexpr char kSharedFolder[] = "/tmp/bsp";

/** What is wrong with one of them, and what to do. */
struct SharedFileFlaw {
    std::string path;   // "/tmp/bsp"
    std::string found;  // "belongs to user 1000"
    std::string advice; // "make it as root: mkdir -m 0755 /tmp/bsp"
};

/**
 * Judges /tmp/bsp and both lock files: they must belong to root or to this user, nobody else may
 * change them, and none of them is a link. A lock file that is missing is made when it is needed.
 */
std::vector<SharedFileFlaw> sharedFileFlaws(uid_t user = geteuid());

} // namespace iodbg
