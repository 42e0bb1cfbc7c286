#pragma once
// Where a server listens.

#include <cstdint>
#include <string>

namespace vboard::server {

struct ListenAddress {
    std::string address = "127.0.0.1"; // a number, IPv6 without brackets
    uint16_t port = 0;                 // 0: a free one

    /** Every address of the machine. */
    bool isWildcard() const;
};

/** "127.0.0.1:8080", "[::1]:0", "localhost:8080"; throws Refused for other words. */
ListenAddress parseListenAddress(const std::string &word);

/** "lab.example", "lab.example:8080"; throws Refused for other words. */
std::string parseHostName(const std::string &word);

/** As a URL has it: "127.0.0.1:8080", "[::1]:8080". */
std::string hostText(const std::string &address, uint16_t port);

} // namespace vboard::server
