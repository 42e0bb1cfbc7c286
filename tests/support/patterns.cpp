#include "tests/support/patterns.h"

#include <map>
#include <mutex>
#include <regex>

namespace {

/** Each pattern is taken apart once: some are asked for with every call of the library. */
const std::regex &expressionOf(const std::string &pattern) {
    static std::mutex mutex;
    static std::map<std::string, std::regex> known;
    const std::lock_guard lock(mutex);
    const auto [entry, isNew] = known.try_emplace(pattern);
    if (isNew)
        entry->second = std::regex(pattern);
    return entry->second;
}

} // namespace

bool matches(const std::string &text, const std::string &pattern) {
    return std::regex_match(text, expressionOf(pattern));
}

bool hasMatch(const std::string &text, const std::string &pattern) {
    return std::regex_search(text, expressionOf(pattern));
}

std::string replaced(const std::string &text, const std::string &pattern, const std::string &by) {
    return std::regex_replace(text, expressionOf(pattern), by);
}

std::vector<std::vector<std::string>> matchesIn(const std::string &text,
                                                const std::string &pattern) {
    const std::regex &expression = expressionOf(pattern);
    std::vector<std::vector<std::string>> found;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
         ++match) {
        std::vector<std::string> &groups = found.emplace_back();
        for (const std::ssub_match &group : *match)
            groups.push_back(group.str());
    }
    return found;
}
