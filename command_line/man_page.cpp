#include "command_line/man_page.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>
#include <utility>

namespace command_line {

namespace {

constexpr size_t kLongestLine = 78;
constexpr char kQuote = '\'';

using Strings = std::vector<std::string>;

/** A word of prose apart from the marks around it. */
struct Token {
    std::string before, core, behind; // "(", "auto", "),"

    explicit Token(const std::string &word) {
        const size_t begin = std::min(word.find_first_not_of('('), word.size());
        const size_t end = word.find_last_not_of(".,;:)") + 1;
        before = word.substr(0, begin);
        core = word.substr(begin, std::max(end, begin) - begin);
        behind = word.substr(std::max(end, begin));
    }
};

/** Marks are words of their own on a line with a macro. */
std::string apart(const std::string &marks) {
    std::string text;
    for (const char mark : marks)
        text += (text.empty() ? "" : " ") + std::string(1, mark);
    return text;
}

std::string escaped(const std::string &text) {
    std::string safe;
    for (const char character : text)
        safe += character == '\\' ? "\\e" : std::string(1, character);
    return safe;
}

/** A word of a macro's line, also one that would be a macro itself: "No". */
std::string asArgument(const std::string &word) {
    const bool isLikeMacro = word.size() == 2 &&
                             std::isupper(static_cast<unsigned char>(word[0])) &&
                             std::islower(static_cast<unsigned char>(word[1]));
    return (isLikeMacro ? "\\&" : "") + escaped(word);
}

/** Prose as lines of the page: what stands in quotes, options and names of words get their macros.
 */
class Prose {
  public:
    explicit Prose(std::set<std::string> names) : names_(std::move(names)) {}

    /** Adds lines of text, which are sentences without their full stops. */
    void add(const std::string &text) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            if (!line.empty())
                addSentence(line.ends_with('.') || line.ends_with(';') ? line : line + ".");
        }
    }

    std::string lines() {
        endLine();
        return std::exchange(lines_, "");
    }

  private:
    void addSentence(const std::string &sentence) {
        std::istringstream words(sentence);
        for (std::string word; words >> word;) {
            const size_t quote = std::min(word.find_first_not_of('('), word.size());
            while (quote < word.size() && word[quote] == kQuote && !isClosed(word, quote)) {
                std::string next;
                if (!(words >> next))
                    break;
                word += " " + next;
            }
            addWord(Token(word));
        }
        endLine();
    }

    static bool isClosed(const std::string &word, size_t quote) {
        const size_t last = word.find_last_not_of(".,;:)");
        return last > quote && word[last] == kQuote;
    }

    void addWord(const Token &token) {
        const std::string &core = token.core;
        if (core.size() > 2 && core.front() == kQuote && core.back() == kQuote)
            addMacro("Ql", core.substr(1, core.size() - 2), token);
        else if (core.starts_with("--"))
            addMacro("Fl", core.substr(1), token);
        else if (names_.contains(core))
            addMacro("Ar", core, token);
        else
            addText(token);
    }

    void addMacro(const std::string &macro, const std::string &content, const Token &token) {
        endLine();
        lines_ += "." + macro + " ";
        if (!token.before.empty())
            lines_ += apart(token.before) + " ";
        std::istringstream words(content);
        bool isFirst = true;
        for (std::string word; words >> word; isFirst = false)
            lines_ += (isFirst ? "" : " ") + asArgument(word);
        lines_ += (token.behind.empty() ? "" : " ") + apart(token.behind) + "\n";
    }

    void addText(const Token &token) {
        std::string text = token.before + escaped(token.core) + token.behind;
        if (line_.size() + 1 + text.size() > kLongestLine)
            endLine();
        if (line_.empty() && (text[0] == '.' || text[0] == kQuote))
            text = "\\&" + text;
        line_ += (line_.empty() ? "" : " ") + text;
        if (token.behind.ends_with(".")) // a sentence begins on a line of its own
            endLine();
    }

    void endLine() {
        if (!line_.empty())
            lines_ += line_ + "\n";
        line_.clear();
    }

    std::set<std::string> names_;
    std::string line_, lines_;
};

/** What the prose about a command calls by its name. */
std::set<std::string> namesIn(const Command &command) {
    std::set<std::string> names;
    for (const Command *any = &command; any != nullptr; any = any->parent) {
        for (const Word &word : any->words) {
            if (word.kind != Word::Kind::Flag)
                names.insert(word.kind == Word::Kind::Option ? word.valueName : word.name);
        }
    }
    return names;
}

/** "Fl -every Ar SECONDS" */
std::string nameOf(const Word &word) {
    const std::string dots = word.isMany ? " ..." : "";
    if (word.kind == Word::Kind::Argument)
        return "Ar " + asArgument(word.name) + dots;
    const std::string option = "Fl " + word.name.substr(1);
    return word.kind == Word::Kind::Flag ? option
                                         : option + " Ar " + asArgument(word.valueName) + dots;
}

/** The command's name with the words that its groups take, a line for each macro. */
std::string callLines(const Command &command) {
    if (command.parent == nullptr)
        return "";
    std::string lines = callLines(*command.parent);
    for (const Word *argument : command.parent->arguments())
        lines += ".Ar " + argument->name + "\n";
    const bool isBehindName = lines.starts_with(".Cm ") && lines.find('\n') == lines.size() - 1;
    if (isBehindName)
        lines = lines.substr(0, lines.size() - 1) + " " + command.name + "\n";
    else
        lines += ".Cm " + command.name + "\n";
    return lines;
}

std::string headOf(const Command &command) {
    std::string lines = callLines(command);
    for (const Word &word : command.words)
        lines += (word.isRequired ? "." : ".Op ") + nameOf(word) + "\n";
    if (command.program)
        lines += ".Fl -\n.Ar PROGRAM\n.Op Ar ARGUMENT ...\n";
    const bool isOneLine = lines.find('\n') == lines.size() - 1;
    return isOneLine ? ".It " + lines.substr(1) : ".It Xo\n" + lines + ".Xc\n";
}

std::string textOf(const Word &word, Prose &prose) {
    prose.add(word.help + (word.usual.empty() ? "" : ";\nby default '" + word.usual + "'"));
    return ".It " + nameOf(word) + "\n" + prose.lines();
}

/** An entry of a glossary: its word, in which the end can stand for something else, and what it
 * means. */
std::string textOf(const std::string &word, const std::string &meaning,
                   std::set<std::string> names) {
    const size_t begin = word.find_last_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ:") + 1;
    std::istringstream variables(word.substr(begin));
    for (std::string name; std::getline(variables, name, ':');)
        names.insert(name);
    std::string item = begin > 0 ? " Cm " + escaped(word.substr(0, begin)) : "";
    if (begin < word.size())
        item += (begin > 0 ? " Ns Ar " : " Ar ") + word.substr(begin);
    Prose prose(std::move(names));
    prose.add(meaning);
    return ".It" + item + "\n" + prose.lines();
}

std::string listOf(const std::string &items) {
    return items.empty() ? "" : ".Bl -tag -width Ds\n" + items + ".El\n";
}

std::string itemOf(const Command &command) {
    const std::set<std::string> names = namesIn(command);
    Prose prose(names);
    prose.add(command.help);
    prose.add(command.details);
    std::string item = headOf(command) + prose.lines();
    std::string options;
    for (const Word &word : command.words)
        options += textOf(word, prose);
    item += listOf(options);
    for (const Glossary &glossary : command.glossaries) {
        std::string entries;
        for (const auto &[word, meaning] : glossary.entries)
            entries += textOf(word, meaning, names);
        item += ".Pp\n" + glossary.title + ":\n" + listOf(entries);
    }
    return item;
}

/** A command and its commands; a group does nothing by itself. */
std::string itemsOf(Command &command) {
    command.complete();
    std::string items = command.isGroup ? "" : itemOf(command);
    for (Command &next : command.commands)
        items += itemsOf(next);
    return items;
}

/** The commands of a chapter, a list of them. */
std::string listOf(Command &root, size_t chapter) {
    std::string items;
    for (Command &command : root.commands) {
        if (command.inChapter == chapter)
            items += itemsOf(command);
    }
    return listOf(items);
}

void addNames(std::set<std::string> &names, const Command &command) {
    names.merge(namesIn(command));
    for (const Command &next : command.commands)
        addNames(names, next);
}

std::string chapterOf(Command &root, size_t number) {
    const std::string list = listOf(root, number); // completes the commands
    std::set<std::string> names;
    for (const Command &command : root.commands) {
        if (command.inChapter == number)
            addNames(names, command);
    }
    const Chapter &chapter = root.chapters[number - 1];
    Prose prose(names);
    prose.add(chapter.text);
    return ".Ss " + chapter.title + "\n" + prose.lines() + list;
}

} // namespace

std::string manPageOf(Tool &tool) {
    Command &root = tool.root;
    root.complete();
    std::string page = ".Sh COMMANDS\n" + listOf(root, 0);
    for (size_t number = 1; number <= root.chapters.size(); ++number)
        page += chapterOf(root, number);
    return page;
}

} // namespace command_line
