#include "iodbg/core/command.h"

#include <algorithm>
#include <utility>

namespace iodbg {

Command &Command::add(Command command, const Define &define) {
    command.define_ = define;
    command.parent = this;
    return commands.emplace_back(std::move(command));
}

Command &Command::group(const std::string &groupName, const std::string &groupHelp,
                        const Define &define) {
    Command &added = add({groupName, groupHelp}, define);
    added.isGroup = true;
    return added;
}

Command &Command::command(const std::string &commandName, const std::string &commandHelp,
                          const Define &define) {
    return add({commandName, commandHelp}, define);
}

Command &Command::alias(const std::string &other) {
    aliases.push_back(other);
    return *this;
}

Command &Command::onlyAfter(const std::function<void()> &condition) {
    check = condition;
    return *this;
}

Command &Command::does(const Action &what) {
    action = what;
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
    return words.emplace_back(Word{Word::Kind::Flag, word, "", text, nullptr, &target});
}

void Command::complete() {
    if (define_)
        std::exchange(define_, nullptr)(*this);
}

bool Command::isCalled(const std::string &word) const {
    return word == name || std::find(aliases.begin(), aliases.end(), word) != aliases.end();
}

std::string Command::wholeName() const {
    return (parent == nullptr ? "" : parent->wholeName() + " ") + name;
}

std::vector<std::string> Command::namesOfCommands() const {
    std::vector<std::string> names;
    for (const Command &command : commands)
        names.push_back(command.name);
    return names;
}

} // namespace iodbg
