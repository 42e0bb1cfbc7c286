#include "command_line/completion.h"

#include <algorithm>
#include <exception>

namespace command_line {

namespace {

using Strings = std::vector<std::string>;

constexpr char kDirective = '\t';

/** Where a command line is at a word. */
class Place {
  public:
    explicit Place(Tool &tool) : tool_(tool), command_(&tool.root) { command_->complete(); }

    void pass(const std::string &word) {
        if (option_ != nullptr)
            option_ = nullptr;
        else if (word == "--" && !isBehindDashes_)
            isBehindDashes_ = true;
        else if (isOption(word))
            option_ = optionWithValue(word);
        else if (Command *next = commandCalled(word))
            enter(*next);
        else {
            arguments_.push_back(word);
            ++taken_;
        }
    }

    /** Whether another program's line begins here. */
    bool isAtProgram() const { return isBehindDashes_ && command_->program; }

    Strings offersFor(const std::string &word) const {
        if (option_ != nullptr)
            return offersOf(option_->parser.offers(), word);
        if (isOption(word))
            return namesOfOptions();
        const auto known = command_->arguments();
        if (known.empty() || (taken_ >= known.size() && !known.back()->isMany))
            return command_->namesOfCommands();
        return offersOf(known[std::min(taken_, known.size() - 1)]->parser.offers(), word);
    }

  private:
    bool isOption(const std::string &word) const {
        return word.starts_with('-') && !isBehindDashes_;
    }

    const Word *optionWithValue(const std::string &name) const {
        for (const Word &word : command_->words) {
            if (word.kind == Word::Kind::Option && word.name == name)
                return &word;
        }
        return nullptr;
    }

    Command *commandCalled(const std::string &word) const {
        const auto found =
            std::find_if(command_->commands.begin(), command_->commands.end(),
                         [&](const Command &command) { return command.isCalled(word); });
        return found == command_->commands.end() ? nullptr : &*found;
    }

    void enter(Command &command) {
        command_ = &command;
        command_->complete();
        taken_ = 0;
    }

    Strings namesOfOptions() const {
        Strings names = {"--help"};
        if (tool_.isJson != nullptr)
            names.emplace_back("--json");
        // Options of the whole tool may follow each of the commands that share one.
        if (tool_.isJson != nullptr || command_->parent == nullptr)
            names.emplace_back("--version");
        for (const Word &word : command_->words) {
            if (word.kind != Word::Kind::Argument)
                names.push_back(word.name);
        }
        return names;
    }

    /** Nothing is offered where there is nobody to ask, no board for example. */
    Strings asked(const Offers &offers) const {
        try {
            return offers.ask ? offers.ask(arguments_) : Strings{};
        } catch (const std::exception &) {
            return {};
        }
    }

    Strings offersOf(const Offers &offers, const std::string &word) const {
        Strings lines = offers.words;
        const Strings told = asked(offers);
        lines.insert(lines.end(), told.begin(), told.end());
        const bool isPath = offers.files == Offers::Files::Paths && word.starts_with('/');
        if (offers.files == Offers::Files::All || isPath)
            lines.push_back(kDirective + std::string("files"));
        if (offers.files == Offers::Files::Folders)
            lines.push_back(kDirective + std::string("folders"));
        return lines;
    }

    Tool &tool_;
    Command *command_;
    const Word *option_ = nullptr; // whose value comes next
    Strings arguments_;            // also of groups
    size_t taken_ = 0;             // of the command's own
    bool isBehindDashes_ = false;
};

} // namespace

std::string completionsOf(Tool &tool, const Strings &words) {
    Place place(tool);
    for (size_t i = 0; i + 1 < words.size(); ++i) {
        place.pass(words[i]);
        if (place.isAtProgram())
            return kDirective + std::string("program ") + std::to_string(i + 1) + "\n";
    }
    const std::string word = words.empty() ? "" : words.back();
    std::string lines;
    for (const std::string &line : place.offersFor(word)) {
        if (line.starts_with(kDirective) || line.starts_with(word))
            lines += line + "\n";
    }
    return lines;
}

} // namespace command_line
