#include "command_line/command.h"

#include <algorithm>
#include <utility>

namespace command_line {

Command &Command::group(const std::string &groupName, const std::string &groupHelp,
                        const Define &define) {
    Command &added = command(groupName, groupHelp, define);
    added.isGroup = true;
    return added;
}

Command &Command::command(const std::string &commandName, const std::string &commandHelp,
                          const Define &define) {
    Command &added = commands.emplace_back(commandName, commandHelp, define);
    added.parent = this;
    added.inChapter = chapters.size();
    return added;
}

void Command::chapter(const std::string &title, const std::string &text) {
    chapters.push_back({title, text});
}

Command &Command::alias(const std::string &other) {
    aliases.push_back(other);
    return *this;
}

Command &Command::detail(const std::string &sentences) {
    details = sentences;
    return *this;
}

Command &Command::glossary(const Glossary &added) {
    glossaries.push_back(added);
    return *this;
}

Command &Command::example(const std::string &line) {
    examples.push_back(line);
    return *this;
}

Command &Command::unless(const Detour &other) {
    detour = other;
    return *this;
}

Command &Command::onlyAfter(const std::function<void()> &condition) {
    check = condition;
    return *this;
}

Command &Command::takesProgram(const ProgramTaker &taker) {
    program = taker;
    return *this;
}

Word &Command::argument(const std::string &word, const std::string &text, const Parser &parser) {
    Word &added = optionalArgument(word, text, parser);
    added.isRequired = true;
    return added;
}

Word &Command::optionalArgument(const std::string &word, const std::string &text,
                                const Parser &parser) {
    return words.emplace_back(Word{Word::Kind::Argument, word, "", text, parser});
}

Word &Command::optionalArguments(const std::string &word, const std::string &text,
                                 const Parser &parser) {
    Word &added = optionalArgument(word, text, parser);
    added.isMany = true;
    return added;
}

Word &Command::option(const std::string &word, const std::string &valueName,
                      const std::string &text, const Parser &parser) {
    return words.emplace_back(Word{Word::Kind::Option, word, valueName, text, parser});
}

Word &Command::requiredOption(const std::string &word, const std::string &valueName,
                              const std::string &text, const Parser &parser) {
    Word &added = option(word, valueName, text, parser);
    added.isRequired = true;
    return added;
}

Word &Command::flag(const std::string &word, const std::string &text, bool &target) {
    return words.emplace_back(Word{Word::Kind::Flag, word, "", text, {}, &target});
}

void Command::complete() {
    if (const Define define = std::exchange(define_, nullptr))
        define(*this);
}

bool Command::isCalled(const std::string &word) const {
    return word == name || std::find(aliases.begin(), aliases.end(), word) != aliases.end();
}

std::string Command::wholeName() const {
    return (parent == nullptr ? "" : parent->wholeName() + " ") + name;
}

std::string Command::call() const {
    if (parent == nullptr)
        return name;
    std::string line = parent->call();
    for (const Word *argument : parent->arguments())
        line += " " + argument->name;
    return line + " " + name;
}

std::vector<const Word *> Command::arguments() const {
    std::vector<const Word *> found;
    for (const Word &word : words) {
        if (word.kind == Word::Kind::Argument)
            found.push_back(&word);
    }
    return found;
}

std::vector<std::string> Command::namesOfCommands() const {
    std::vector<std::string> names;
    for (const Command &command : commands)
        names.push_back(command.name);
    return names;
}

} // namespace command_line
