#include "virtual_board/server/gate.h"

#include "virtual_board/server/listen_address.h"
#include "virtual_board/server/token.h"

#include <algorithm>
#include <cctype>

namespace vboard::server {

namespace {

constexpr uint16_t kHttpPort = 80;

std::string inLowerCase(std::string text) {
    for (char &character : text)
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    return text;
}

bool hasPort(const std::string &host) {
    const size_t colon = host.rfind(':');
    const size_t bracket = host.rfind(']'); // of an IPv6 address, which is full of colons
    return colon != std::string::npos && (bracket == std::string::npos || bracket < colon);
}

} // namespace

Gate::Gate(std::string token, uint16_t port, const std::string &address,
           const std::vector<std::string> &hosts)
    : token_(std::move(token)), port_(port) {
    const std::string withPort = ":" + std::to_string(port);
    for (const char *own : {"127.0.0.1", "localhost", "[::1]"})
        hosts_.insert(own + withPort);
    hosts_.insert(hostText(address, port));
    for (const std::string &host : hosts)
        hosts_.insert(inLowerCase(hasPort(host) ? host : host + withPort));
}

/** A page from elsewhere can give its own name the address of this machine, but not send another
 * name than its own. */
std::string Gate::hostOf(const Head &head) const {
    std::string given = inLowerCase(head.header("Host").value_or(""));
    const std::string host =
        port_ == kHttpPort && !hasPort(given) ? given + ":" + std::to_string(port_) : given;
    if (!hosts_.contains(host) && host != hostText(head.localAddress, port_))
        throw Refusal(kMisdirected, VBOARD_E_PERMISSION,
                      "this server is not known by the name of the request; use the URL that "
                      "'vboard serve' has printed, or start it with --host NAME");
    return given;
}

void Gate::judgeOrigin(const Head &head, const std::string &host) const {
    const auto origin = head.header("Origin");
    const auto site = head.header("Sec-Fetch-Site");
    const bool isOwn = (!origin.has_value() || inLowerCase(*origin) == "http://" + host) &&
                       (!site.has_value() || *site == "same-origin" || *site == "none");
    if (!isOwn)
        throw Refusal(kForbidden, VBOARD_E_PERMISSION,
                      "pages from elsewhere have no part in this; open the URL that 'vboard serve' "
                      "has printed by itself");
}

bool Gate::hasRightAuthorization(const Head &head) const {
    constexpr char kScheme[] = "bearer ";
    constexpr size_t kLength = sizeof(kScheme) - 1;
    const std::string given = head.header("Authorization").value_or("");
    return inLowerCase(given.substr(0, kLength)) == kScheme &&
           isToken(given.substr(kLength), token_);
}

Target Gate::admit(const Head &head) const {
    judgeOrigin(head, hostOf(head));
    const bool isKnown = hasRightAuthorization(head);
    const size_t end = std::min(head.target.find_first_of("/?", 1), head.target.size());
    const bool hasToken = !head.target.empty() && head.target[0] == '/' &&
                          isToken(head.target.substr(1, end - 1), token_);
    if (!isKnown && !hasToken)
        throw Refusal(kUnauthorized, VBOARD_E_PERMISSION,
                      "the token is missing or wrong; use the URL that 'vboard serve' has printed");
    Target target = parseTarget(head.target);
    if (hasToken)
        target.path = target.path.substr(end);
    return target;
}

} // namespace vboard::server
