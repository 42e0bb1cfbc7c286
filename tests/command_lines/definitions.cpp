#include "tests/command_lines/definitions.h"

#include "iodbg/commands.h"
#include "virtual_board/command/tool.h"

#include <exception>
#include <ostream>

namespace {

using command_line::Command;
using command_line::Tool;
using Words = std::vector<std::string>;

constexpr char kAnyArgument[] = "x"; // of a group that takes one; nothing is done with it

class Kept : public command_line::Output {
  public:
    void printText(const std::string &text) const override { text_ += text; }
    const std::string &text() const { return text_; }

  private:
    mutable std::string text_;
};

command_line::Action actionFor(Tool &tool, const Words &words) {
    std::vector<const char *> pointers;
    pointers.reserve(words.size());
    for (const std::string &word : words)
        pointers.push_back(word.c_str());
    return command_line::actionFor(tool, pointers);
}

void addCommands(std::vector<const Command *> &found, Command &command) {
    command.complete();
    found.push_back(&command);
    for (Command &next : command.commands)
        addCommands(found, next);
}

} // namespace

void PrintTo(const NamedTool &tool, std::ostream *stream) {
    *stream << tool.name;
}

Tool iodbgTool() {
    static bool isJson = false;
    return iodbg::makeTool(isJson);
}

const NamedTool kIodbgTool = {"iodbg", iodbgTool};
const NamedTool kVboardTool = {"vboard", vboard::makeTool};

std::vector<const Command *> commandsOf(Tool &tool) {
    std::vector<const Command *> found;
    addCommands(found, tool.root);
    return found;
}

Words callOf(const Command &command) {
    if (command.parent == nullptr)
        return {};
    Words call = callOf(*command.parent);
    call.insert(call.end(), command.parent->arguments().size(), kAnyArgument);
    call.push_back(command.name);
    return call;
}

std::string printed(const NamedTool &named, const Words &words) {
    Tool tool = named.make();
    Kept output;
    actionFor(tool, words)(output);
    return output.text();
}

RefusedAction refusedActionOf(const NamedTool &named, const Words &words) {
    Tool tool = named.make();
    Kept output;
    try {
        actionFor(tool, words)(output);
    } catch (const command_line::WrongUsage &refusal) {
        return {refusal.what(), true};
    } catch (const std::exception &refusal) {
        return {refusal.what(), false};
    }
    return {"", false};
}

std::string refusalOf(const NamedTool &named, const Words &words) {
    Tool tool = named.make();
    try {
        actionFor(tool, words);
    } catch (const command_line::WrongUsage &refusal) {
        return refusal.what();
    }
    return "";
}
