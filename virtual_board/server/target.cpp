#include "virtual_board/server/target.h"

#include "language/texts.h"

#include <charconv>

namespace vboard::server {

namespace {

/** "fan.%2A" is "fan.*"; a plus is a blank, as forms of pages write it. */
std::string decoded(const std::string &text) {
    constexpr size_t kEscape = 2;
    constexpr int kHexadecimal = 16;
    std::string plain;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            plain += text[i] == '+' ? ' ' : text[i];
            continue;
        }
        unsigned char byte = 0;
        const char *begin = text.data() + i + 1;
        const char *end = text.data() + std::min(text.size(), i + 1 + kEscape);
        const auto [stop, failure] = std::from_chars(begin, end, byte, kHexadecimal);
        if (failure != std::errc() || stop != begin + kEscape || byte == 0)
            throw Refusal(kBadRequest, VBOARD_E_REFUSED,
                          language::quoted(text) +
                              " is wrongly encoded: a percent sign is %25, and zeros are refused");
        plain += static_cast<char>(byte);
        i += kEscape;
    }
    return plain;
}

Query parseQuery(const std::string &text) {
    Query query;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('&', at), text.size());
        const std::string word = text.substr(at, end - at);
        const size_t mark = std::min(word.find('='), word.size());
        if (!word.empty())
            query.emplace_back(decoded(word.substr(0, mark)),
                               mark < word.size() ? decoded(word.substr(mark + 1)) : "");
        at = end + 1;
    }
    return query;
}

} // namespace

Target parseTarget(const std::string &text) {
    if (text.empty() || text[0] != '/')
        throw Refusal(kBadRequest, VBOARD_E_REFUSED,
                      "a request is for a path, which begins with a slash");
    const size_t mark = std::min(text.find('?'), text.size());
    return {text.substr(0, mark), mark < text.size() ? parseQuery(text.substr(mark + 1)) : Query()};
}

std::vector<std::string> valuesOf(const Query &query, const std::string &name) {
    std::vector<std::string> values;
    for (const auto &[own, value] : query) {
        if (own == name)
            values.push_back(value);
    }
    return values;
}

std::string valueOf(const Query &query, const std::string &name) {
    const std::vector<std::string> values = valuesOf(query, name);
    if (values.size() > 1)
        throw Refusal(kBadRequest, VBOARD_E_REFUSED, name + " is given twice; give it once");
    return values.empty() ? "" : values.front();
}

} // namespace vboard::server
