#pragma once
// What a request says, taken apart.

#include "virtual_board/calls/board.h"
#include "virtual_board/server/json.h"
#include "virtual_board/server/routes.h"
#include "virtual_board/server/services.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vboard::server {

/** The folder of the board that a request names. */
std::string boardFolder(const Services &services, const Asked &asked);

/** The body, an object that has no other members than these, each of them a text or a number, which
 * stands for its text. Throws Refusal. */
std::map<std::string, std::string> textsOfBody(const Asked &asked,
                                               const std::vector<std::string> &names);
/** The body, an object; with names, one that has no other members than these. */
Json objectOfBody(const Asked &asked, const std::vector<std::string> &names = {});

/** A member as a text; Refusal for one that is neither a text nor a number. */
std::string settableText(const std::string &name, const Json &value);

/** A number behind the question mark. */
std::optional<uint64_t> numberOf(const Asked &asked, const std::string &name, uint64_t most);

Response jsonResponse(const Json &answer, Status status = kOk);

} // namespace vboard::server
