#pragma once
// A word that a command takes.

#include <concepts>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace command_line {

/** What may stand for a word: completion offers it. */
struct Offers {
    enum class Files {
        None,
        All,
        Paths, // that begin with a slash
        Folders,
    };
    /** Words that only the moment tells; arguments are those that stand before. */
    using Ask = std::function<std::vector<std::string>(const std::vector<std::string> &arguments)>;

    std::vector<std::string> words;
    Files files = Files::None;
    Ask ask;
};

/** Takes a word, or throws language::Refused with a line that says what would be right. */
class Parser {
  public:
    Parser() = default;
    template <std::invocable<const std::string &> Take>
    Parser(Take take, Offers offers = {}) : take_(std::move(take)), offers_(std::move(offers)) {}

    void operator()(const std::string &word) const { take_(word); }
    const Offers &offers() const { return offers_; }

  private:
    std::function<void(const std::string &word)> take_;
    Offers offers_;
};

/** A word by its position, or an option, with a value or without. */
struct Word {
    enum class Kind { Argument, Option, Flag };

    Kind kind;
    std::string name;      // "LEVEL", "--every"
    std::string valueName; // of an option: "SECONDS"
    std::string help;
    Parser parser = {};   // of arguments and options
    bool *flag = nullptr; // of flags
    bool isRequired = false;
    bool isMany = false; // an argument takes all that follow, an option may be repeated
    std::string usual = {};
    std::vector<std::string> others = {}; // options that cannot stand beside it
    std::string condition = {};           // an option that must

    /** Shows what it is where it is not given. */
    Word &usually(const std::string &value);
    Word &repeatable();
    Word &notWith(const std::string &option);
    Word &onlyWith(const std::string &option);
};

} // namespace command_line
