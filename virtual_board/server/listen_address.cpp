#include "virtual_board/server/listen_address.h"

#include "language/refused.h"

#include <arpa/inet.h>
#include <charconv>
#include <netinet/in.h>

namespace vboard::server {

namespace {

[[noreturn]] void refuseAddress(const std::string &word) {
    language::refuse(word, "is not ADDRESS:PORT, as '127.0.0.1:8080', '[::1]:8080', "
                           "'localhost:8080' or, with a free port, '127.0.0.1:0'");
}

bool isNumber(int family, const std::string &address) {
    in6_addr bytes = {};
    return inet_pton(family, address.c_str(), &bytes) == 1;
}

} // namespace

ListenAddress parseListenAddress(const std::string &word) {
    const size_t colon = word.rfind(':');
    if (colon == std::string::npos)
        refuseAddress(word);
    ListenAddress listen;
    listen.address = word.substr(0, colon);
    const char *begin = word.data() + colon + 1;
    const char *end = word.data() + word.size();
    const auto [stop, failure] = std::from_chars(begin, end, listen.port);
    if (begin == end || failure != std::errc() || stop != end)
        refuseAddress(word);
    if (listen.address == "localhost")
        listen.address = "127.0.0.1";
    const size_t size = listen.address.size();
    if (size > 2 && listen.address.front() == '[' && listen.address.back() == ']') {
        listen.address = listen.address.substr(1, size - 2);
        if (!isNumber(AF_INET6, listen.address))
            refuseAddress(word);
    } else if (!isNumber(AF_INET, listen.address)) {
        refuseAddress(word);
    }
    return listen;
}

std::string parseHostName(const std::string &word) {
    constexpr char kCharacters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                   "0123456789-._:[]";
    if (word.empty() || word.find_first_not_of(kCharacters) != std::string::npos)
        language::refuse(word, "is not NAME or NAME:PORT, as 'lab.example:8080'");
    return word;
}

bool ListenAddress::isWildcard() const {
    return address == "0.0.0.0" || address == "::";
}

std::string hostText(const std::string &address, uint16_t port) {
    const bool isIpv6 = address.find(':') != std::string::npos;
    return (isIpv6 ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

} // namespace vboard::server
