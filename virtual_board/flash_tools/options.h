#pragma once
// Command lines as all tools take them.

#include "virtual_board/flash_tools/tools.h"

#include <cstdint>
#include <string>
#include <vector>

namespace flash_tools {

/** The options and operands of a command line, taken apart as getopt_long does. */
struct Option {
    const char *letters; // short names
    const char *name;    // long name, or null
    bool hasValue;
};

struct ParsedOption {
    char letter; // the first of its letters
    std::string value;
};

struct CommandLine {
    bool isGood = true; // an unknown option, or one without its value, has been told otherwise
    std::vector<ParsedOption> options;
    Arguments operands;
};

CommandLine parse(const Arguments &arguments, const std::vector<Option> &known);

/** A whole number, decimal, octal or hexadecimal; false, after a message, for another text. */
bool parseNumber(const std::string &tool, const char *parser, const std::string &text,
                 int64_t &number);

} // namespace flash_tools
