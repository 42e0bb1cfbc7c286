#include "virtual_board/server/asked.h"

#include "language/json_limits.h"
#include "language/texts.h"
#include "virtual_board/server/target.h"

#include <algorithm>
#include <charconv>

namespace vboard::server {

namespace {

constexpr language::JsonLimits kLimits = {.levels = 4, .keys = 5000, .values = 10000};

[[noreturn]] void refuseBody(const std::string &text) {
    throw Refusal(kBadRequest, VBOARD_E_REFUSED, text);
}

} // namespace

std::string boardFolder(const Services &services, const Asked &asked) {
    return services.site.folderOf(valueOf(asked.query, "board"));
}

Json objectOfBody(const Asked &asked, const std::vector<std::string> &names) {
    language::requireWithin(kLimits, asked.body);
    Json body = Json::parse(asked.body, nullptr, false);
    if (body.is_discarded() || !body.is_object())
        refuseBody("the body is no object of JSON; see openapi.json");
    for (const auto &[name, value] : body.items()) {
        if (!names.empty() && std::find(names.begin(), names.end(), name) == names.end())
            refuseBody("the body has a member " + language::quoted(name) + "; it can have " +
                       language::listed(names, "and"));
    }
    return body;
}

std::string settableText(const std::string &name, const Json &value) {
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_number())
        return value.dump();
    refuseBody(language::quoted(name) + " is given neither a text nor a number");
}

std::map<std::string, std::string> textsOfBody(const Asked &asked,
                                               const std::vector<std::string> &names) {
    std::map<std::string, std::string> texts;
    const Json body = objectOfBody(asked, names);
    for (const auto &[name, value] : body.items()) {
        texts.emplace(name, settableText(name, value));
    }
    return texts;
}

std::optional<uint64_t> numberOf(const Asked &asked, const std::string &name, uint64_t most) {
    const std::string word = valueOf(asked.query, name);
    if (word.empty())
        return std::nullopt;
    uint64_t number = 0;
    const auto [stop, failure] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (failure != std::errc() || stop != word.data() + word.size() || number > most)
        refuseBody(name + ": " + language::quoted(word) + " is not a number from 0 to " +
                   std::to_string(most));
    return number;
}

Response jsonResponse(const Json &answer, Status status) {
    return {status, kJsonType, dumped(answer), ""};
}

} // namespace vboard::server
