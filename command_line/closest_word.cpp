#include "command_line/closest_word.h"

#include <algorithm>
#include <numeric>

namespace command_line {

namespace {

constexpr size_t kLongestWord = 32; // longer ones are no slips of the finger

/** How many letters have to be put in, taken out or replaced to make one word of the other. */
size_t lettersBetween(const std::string &from, const std::string &to) {
    std::vector<size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (size_t i = 1; i <= from.size(); ++i) {
        size_t diagonal = row[0]++;
        for (size_t j = 1; j <= to.size(); ++j) {
            const size_t replaced = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

/** The one word that begins like this; none where several do. */
std::string onlyWordWith(const std::string &beginning, const std::vector<std::string> &known) {
    std::string found;
    for (const std::string &candidate : known) {
        if (!candidate.starts_with(beginning))
            continue;
        if (!found.empty())
            return "";
        found = candidate;
    }
    return found;
}

} // namespace

std::string closestWord(const std::string &word, const std::vector<std::string> &known) {
    if (word.size() > kLongestWord)
        return "";
    if (std::string begun = onlyWordWith(word, known); !begun.empty())
        return begun;
    std::string closest;
    size_t fewest = std::max<size_t>(word.size() / 2, 1) + 1; // more is another word
    for (const std::string &candidate : known) {
        const size_t letters = lettersBetween(word, candidate);
        if (letters < fewest && letters < candidate.size()) {
            fewest = letters;
            closest = candidate;
        }
    }
    return closest;
}

} // namespace command_line
