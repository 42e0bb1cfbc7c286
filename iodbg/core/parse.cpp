#include "iodbg/core/parse.h"

#include "language/times.h"

namespace iodbg {

Parser number(uint32_t &target, uint32_t highest) {
    return numberWithin(target, 0, highest);
}

Parser numberFromOne(uint32_t &target, uint32_t highest) {
    return numberWithin(target, 1, highest);
}

Parser numberWithin(uint32_t &target, uint32_t lowest, uint32_t highest) {
    return [&target, lowest, highest](const std::string &word) {
        target = parseNumber(word, lowest, highest);
    };
}

Parser seconds(uint32_t &milliseconds, uint32_t lowest, uint32_t highest) {
    return [&milliseconds, lowest, highest](const std::string &word) {
        milliseconds = language::parseSeconds(word, lowest, highest);
    };
}

Parser oneOf(uint32_t &target, const std::vector<std::pair<std::string, uint32_t>> &words) {
    return [&target, words](const std::string &word) {
        std::vector<const char *> names;
        names.reserve(words.size());
        for (const auto &[name, value] : words)
            names.push_back(name.c_str());
        target = words[language::parseChoice(word, names)].second;
    };
}

Parser text(std::string &target) {
    return [&target](const std::string &word) { target = word; };
}

Parser fileName(std::string &target) {
    return [&target](const std::string &word) {
        if (word.empty())
            language::refuse(word, "is not the name of a file");
        target = word;
    };
}

Parser hex(Bytes &target) {
    return [&target](const std::string &word) { target = language::parseBytes(word); };
}

} // namespace iodbg
