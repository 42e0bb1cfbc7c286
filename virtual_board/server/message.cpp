#include "virtual_board/server/message.h"

#include "virtual_board/server/json.h"

#include <algorithm>
#include <cctype>

namespace vboard::server {

namespace {

bool isAlike(const std::string &one, const std::string &other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) ==
               std::tolower(static_cast<unsigned char>(b));
    });
}

} // namespace

std::optional<std::string> Head::header(const std::string &name) const {
    std::optional<std::string> found;
    for (const auto &[own, value] : headers) {
        if (!isAlike(own, name))
            continue;
        if (found.has_value()) // programs differ in which of them counts
            throw Refusal(kBadRequest, VBOARD_E_REFUSED,
                          "the request has the header " + name + " twice; send it once");
        found = value;
    }
    return found;
}

Response refusalResponse(const Refusal &refusal) {
    return {refusal.status(), kJsonType,
            dumped(Json{{"error", refusal.what()}, {"status", vboardStatusName(refusal.reason())}}),
            ""};
}

} // namespace vboard::server
