#include "tests/command_lines/help_tree.h"

#include "tests/iodbg/iodbg_test.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr char kAnyArgument[] = "x"; // of a group that takes one; nothing is done with it

/** A line of help as its names and its text, which begins in a column of its own or below. */
struct HelpLine {
    Words names;
    std::string text;

    explicit HelpLine(const std::string &line) {
        constexpr size_t kColumn = 30;
        const size_t gap = line.find("  ", 2);
        const bool isFull = gap == std::string::npos && line.size() > kColumn;
        const size_t end =
            isFull && line[kColumn - 1] == ' ' ? kColumn : std::min(gap, line.size());
        names = wordsOf(line.substr(0, end));
        text = line.substr(std::min(line.find_first_not_of(' ', end), line.size()));
    }
};

HelpEntry optionOf(const HelpLine &line) {
    const Words &names = line.names;
    const std::string name = names[0].substr(names[0].find("--"));
    const bool hasValue = names.size() > 1 && names[1] != "REQUIRED" && !names[1].ends_with(":");
    return {name, hasValue ? names[1].substr(0, names[1].find('=')) : "", line.text};
}

/** An argument or a command; of a command's names the first. */
HelpEntry wordOf(const HelpLine &line) {
    const std::string &name = line.names[0];
    return {name.substr(0, name.find(',')), "", line.text};
}

std::vector<HelpEntry> *sectionOf(CommandHelp &help, const std::string &title) {
    if (title == "Positionals:")
        return &help.arguments;
    if (title == "Options:")
        return &help.options;
    return title == "Subcommands:" ? &help.commands : nullptr;
}

std::string joined(const Words &words) {
    std::string text;
    for (const std::string &word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

void addTree(std::vector<CommandHelp> &tree, const std::string &program, const Words &path,
             Words call) {
    tree.push_back(commandHelp(program, path, call));
    const CommandHelp help = tree.back();
    call.insert(call.end(), help.arguments.size(), kAnyArgument);
    for (const HelpEntry &command : help.commands) {
        Words deeperPath = path;
        deeperPath.push_back(command.name);
        Words deeperCall = call;
        deeperCall.push_back(command.name);
        addTree(tree, program, deeperPath, deeperCall);
    }
}

} // namespace

std::string CommandHelp::name() const {
    return joined(path);
}

CommandHelp commandHelp(const std::string &program, const Words &path, const Words &call) {
    Words argv = {builtProgram(program)};
    argv.insert(argv.end(), call.begin(), call.end());
    argv.emplace_back("--help");
    const ProcessResult result = run(argv);
    if (result.exitCode != 0 || !result.err.empty())
        throw std::runtime_error(joined(argv) + ": " + result.err);
    CommandHelp help = {path, call, {}, {}, {}, {}, false, result.out};
    std::vector<HelpEntry> *section = nullptr;
    bool isExample = false;
    for (const std::string &line : linesOf(result.out)) {
        if (line.starts_with("Usage: "))
            help.isGroup = line.ends_with(" SUBCOMMAND");
        if (!line.empty() && line[0] != ' ') {
            section = sectionOf(help, line);
            isExample = line == "Examples:";
        }
        if (isExample && line.starts_with("  "))
            help.examples.push_back(line.substr(2));
        if (section == nullptr || line.size() <= 2 || line[0] != ' ')
            continue;
        const HelpLine entry(line);
        if (line[2] != ' ')
            section->push_back(section == &help.options ? optionOf(entry) : wordOf(entry));
        else if (!section->empty())
            section->back().text += (section->back().text.empty() ? "" : " ") + entry.text;
    }
    std::erase_if(help.options, [](const HelpEntry &option) { return option.name == "--help"; });
    return help;
}

std::vector<CommandHelp> helpTree(const std::string &program) {
    std::vector<CommandHelp> tree;
    addTree(tree, program, {}, {});
    return tree;
}
