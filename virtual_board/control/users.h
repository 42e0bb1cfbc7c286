#pragma once
// Who has a board in use.

#include <cstdint>
#include <string>
#include <vector>

namespace vboard {

struct User {
    int32_t pid;
    std::string program;
};

/** The processes that have mapped the board in a folder, but for this one; as far as they can be
 * seen. */
std::vector<User> usersOf(const std::string &folder);

/** Throws where there are such. */
void requireNoUsers(const std::string &folder);

} // namespace vboard
