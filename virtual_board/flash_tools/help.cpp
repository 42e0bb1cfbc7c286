// What the tools say of themselves: that they are not the system's, and what they can do.

#include "virtual_board/flash_tools/help.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string_view>

namespace flash_tools {

namespace {

struct ToolHelp {
    const char *name;
    const char *model; // whose options, messages and statuses it has
    const char *usage; // behind the name
    const char *what;
    const char *options;
};

constexpr char kMtdUtils[] = "mtd-utils 2.1.5";
constexpr char kSystem[] = "the system";

constexpr ToolHelp kHelp[] = {
    {"flash_erase", kMtdUtils, "[OPTION]... MTD_DEVICE START COUNT",
     "Erases COUNT blocks of a partition, 0 for all, from byte START on.",
     "  -q, --quiet, --silent       say nothing of what goes well\n"
     "  -N, --noskipbad             erase bad blocks, too\n"},
    {"nandwrite", kMtdUtils, "[OPTION]... MTD_DEVICE [INPUTFILE|-]",
     "Writes a file, or standard input, to a partition, past its bad blocks.",
     "  -s, --start=ADDRESS         begin there\n"
     "  -p, --pad                   fill the last page up with 0xFF\n"
     "  -m, --markbad               mark blocks that do not take their data as bad\n"
     "  -N, --noskipbad             write to bad blocks, too\n"
     "  -q, --quiet                 say nothing of what goes well\n"},
    {"nanddump", kMtdUtils, "[OPTION]... MTD_DEVICE",
     "Copies a partition, or a part of it, to standard output or into a file.",
     "  -f, --file=FILE             into that file; '-' is standard output\n"
     "  -s, --startaddress=ADDRESS  begin there\n"
     "  -l, --length=LENGTH         that many bytes\n"
     "      --bb=METHOD             bad blocks: skipbad (left out), padbad, dumpbad\n"
     "  -a, --forcebinary           also to a terminal\n"
     "  -q, --quiet                 say nothing of what goes well\n"},
    {"stty", kSystem, "-F /dev/ttyS0 [SETTING]...",
     "Shows or sets the speed of the board's console; other terminals are as ever.",
     "  -F, --file=DEVICE           the terminal\n"
     "  SPEED, ispeed SPEED, ospeed SPEED, cs8\n"},
    {"rm", kSystem, "[OPTION]... FILE...", "Removes files, the board's where it has them.",
     "  options are those of the system's rm, which does the work\n"},
};

const ToolHelp &helpOf(const std::string &tool) {
    return *std::find_if(std::begin(kHelp), std::end(kHelp),
                         [&](const ToolHelp &help) { return tool == help.name; });
}

void printUsage(std::FILE *stream, const ToolHelp &help) {
    std::fprintf(stream, "Usage: %s %s\n", help.name, help.usage);
}

void printWhatItIs(const ToolHelp &help) {
    std::printf("%s of a virtual board " VBOARD_VERSION ", in place of that of %s\n", help.name,
                help.model);
}

void printHelp(const ToolHelp &help) {
    printWhatItIs(help);
    printUsage(stdout, help);
    std::printf(
        "%s\n\n%s"
        "      --help                  show this text\n"
        "      --version               say what this is\n"
        "\n"
        "It works on the board in VBOARD_DIR, whose fault rules it meets, and leaves the\n"
        "machine's own devices alone. More: docs/virtual-board.md (\"Tools\"), man vboard.\n",
        help.what, help.options);
}

} // namespace

bool answersAboutItself(const Arguments &arguments) {
    const ToolHelp &help = helpOf(arguments[0]);
    const bool isMtdTool = help.model == std::string_view(kMtdUtils);
    for (size_t i = 1; i < arguments.size() && arguments[i] != "--"; ++i) {
        const std::string &word = arguments[i];
        const bool isHelp = word == "--help" || (isMtdTool && word == "-h");
        const bool isVersion = word == "--version" || (isMtdTool && word == "-V");
        if (isHelp)
            printHelp(help);
        else if (isVersion)
            printWhatItIs(help);
        if (isHelp || isVersion)
            return true;
    }
    return false;
}

int refuseUsage(const std::string &tool) {
    printUsage(stderr, helpOf(tool));
    std::fprintf(stderr, "Try '%s --help'.\n", tool.c_str());
    return kFailed;
}

} // namespace flash_tools
