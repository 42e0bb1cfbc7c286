#include "tests/command_lines/help_tree.h"

#include "tests/support/process.h"

#include <sstream>
#include <stdexcept>

namespace {

using Words = std::vector<std::string>;

constexpr char kAnyArgument[] = "x"; // of a group that takes one; nothing is done with it

Words splitWords(const std::string &line) {
    std::istringstream stream(line);
    Words words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

/** The names of an entry: what stands before two blanks. */
Words namesOf(const std::string &line) {
    const std::string entry = line.substr(2);
    return splitWords(entry.substr(0, entry.find("  ")));
}

HelpEntry optionOf(const Words &names) {
    const std::string name = names[0].substr(names[0].find("--"));
    const bool hasValue = names.size() > 1 && names[1] != "REQUIRED" && !names[1].ends_with(":");
    return {name, hasValue ? names[1].substr(0, names[1].find('=')) : ""};
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
    for (const std::string &command : help.commands) {
        Words deeperPath = path;
        deeperPath.push_back(command);
        Words deeperCall = call;
        deeperCall.push_back(command);
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
    CommandHelp help = {path, call, {}, {}, {}, false, result.out};
    std::string section;
    for (const std::string &line : linesOf(result.out)) {
        if (line.starts_with("Usage: "))
            help.isGroup = line.ends_with(" SUBCOMMAND");
        if (!line.empty() && line[0] != ' ')
            section = line;
        const bool isEntry = line.size() > 2 && line.starts_with("  ") && line[2] != ' ';
        if (!isEntry)
            continue;
        const Words names = namesOf(line);
        if (section == "Positionals:")
            help.arguments.push_back({names[0], ""});
        else if (section == "Options:" && names[0] != "-h,--help")
            help.options.push_back(optionOf(names));
        else if (section == "Subcommands:")
            help.commands.push_back(names[0].substr(0, names[0].find(',')));
    }
    return help;
}

std::vector<CommandHelp> helpTree(const std::string &program) {
    std::vector<CommandHelp> tree;
    addTree(tree, program, {}, {});
    return tree;
}
