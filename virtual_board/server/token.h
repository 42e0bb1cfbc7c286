#pragma once
// The secret that lets requests in.

#include <string>

namespace vboard::server {

/** A new one, which nobody can guess. */
std::string makeToken();

/** That of a file, which nobody else may read; throws Refused for others. */
std::string readToken(const std::string &path);

/** Whether a word is the token. How long it takes does not tell how much of it is right. */
bool isToken(const std::string &word, const std::string &token);

} // namespace vboard::server
