#include "virtual_board/flash_tools/options.h"

#include <cerrno>
#include <cstdlib>
#include <getopt.h>
#include <unistd.h>

namespace flash_tools {

CommandLine parse(const Arguments &arguments, const std::vector<Option> &known) {
    std::string letters;
    std::vector<option> names;
    for (const Option &candidate : known) {
        for (const char *letter = candidate.letters; *letter != '\0'; ++letter)
            letters += std::string(1, *letter) + (candidate.hasValue ? ":" : "");
        if (candidate.name != nullptr)
            names.push_back({candidate.name, candidate.hasValue ? required_argument : no_argument,
                             nullptr, candidate.letters[0]});
    }
    names.push_back({nullptr, 0, nullptr, 0});
    std::vector<char *> words;
    for (const std::string &argument : arguments)
        words.push_back(const_cast<char *>(argument.c_str()));
    words.push_back(nullptr);

    CommandLine line;
    const int count = static_cast<int>(arguments.size());
    int found = 0;
    while ((found = getopt_long(count, words.data(), letters.c_str(), names.data(), nullptr)) !=
           -1) {
        if (found == '?')
            line.isGood = false;
        else
            line.options.push_back({static_cast<char>(found), optarg != nullptr ? optarg : ""});
    }
    line.operands.assign(words.data() + optind, words.data() + count);
    return line;
}

bool parseNumber(const std::string &tool, const char *parser, const std::string &text,
                 int64_t &number) {
    char *end = nullptr;
    errno = 0;
    number = std::strtoll(text.c_str(), &end, 0);
    if (end != text.c_str() && *end == '\0' && errno == 0)
        return true;
    complain(tool, "%s: unable to parse the number '%s'", parser, text.c_str());
    return false;
}

} // namespace flash_tools
