#include "command_line/parse.h"

#include "language/numbers.h"
#include "language/refused.h"
#include "language/times.h"

#include <sstream>

namespace command_line {

namespace {

std::vector<std::string> choicesIn(const std::string &text) {
    std::vector<std::string> choices;
    std::istringstream words(text);
    for (std::string word; std::getline(words, word, '|');)
        choices.push_back(word);
    return choices;
}

/** All numbers of a range, if they are few. */
std::vector<std::string> fewNumbers(uint32_t lowest, uint32_t highest) {
    constexpr uint32_t kMany = 5;
    std::vector<std::string> numbers;
    for (uint32_t i = lowest; highest - lowest < kMany && i <= highest; ++i)
        numbers.push_back(std::to_string(i));
    return numbers;
}

} // namespace

Parser offering(const std::string &choices, Parser parser, Offers::Files files) {
    return {std::move(parser), {choicesIn(choices), files, nullptr}};
}

Parser number(uint32_t &target, uint32_t highest) {
    return numberWithin(target, 0, highest);
}

Parser numberFromOne(uint32_t &target, uint32_t highest) {
    return numberWithin(target, 1, highest);
}

Parser numberWithin(uint32_t &target, uint32_t lowest, uint32_t highest) {
    const auto take = [&target, lowest, highest](const std::string &word) {
        target = language::parseNumber(word, lowest, highest);
    };
    return {take, {fewNumbers(lowest, highest), Offers::Files::None, nullptr}};
}

Parser seconds(uint32_t &milliseconds, uint32_t lowest, uint32_t highest) {
    return [&milliseconds, lowest, highest](const std::string &word) {
        milliseconds = language::parseSeconds(word, lowest, highest);
    };
}

Parser oneOf(uint32_t &target, const std::vector<std::pair<std::string, uint32_t>> &words) {
    std::string choices;
    for (const auto &[name, value] : words)
        choices += (choices.empty() ? "" : "|") + name;
    const auto take = [&target, words](const std::string &word) {
        std::vector<const char *> names;
        names.reserve(words.size());
        for (const auto &[name, value] : words)
            names.push_back(name.c_str());
        target = words[language::parseChoice(word, names)].second;
    };
    return offering(choices, take);
}

Parser oneOf(std::string &target, const std::vector<const char *> &words) {
    const auto take = [&target, words](const std::string &word) {
        target = words[language::parseChoice(word, words)];
    };
    return {take, {{words.begin(), words.end()}, Offers::Files::None, nullptr}};
}

Parser text(std::string &target) {
    return [&target](const std::string &word) { target = word; };
}

Parser fileName(std::string &target) {
    const auto take = [&target](const std::string &word) {
        if (word.empty())
            language::refuse(word, "is not the name of a file");
        target = word;
    };
    return {take, {{}, Offers::Files::All, nullptr}};
}

Parser hex(language::Bytes &target) {
    return [&target](const std::string &word) { target = language::parseBytes(word); };
}

} // namespace command_line
