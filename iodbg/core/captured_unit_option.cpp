#include "iodbg/core/captured_unit_option.h"

#include "iodbg/core/twin.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <unistd.h>

namespace iodbg {

namespace {

constexpr char kFrom[] = "--from";

/** The words without the option, and without the program's name. */
std::vector<std::string> otherWords(const Console &console) {
    const std::vector<std::string> &words = console.words();
    const std::string joined = std::string(kFrom) + "=";
    std::vector<std::string> others;
    for (size_t i = 1; i < words.size(); ++i) {
        if (words[i] == kFrom)
            ++i; // its file
        else if (words[i].compare(0, joined.size(), joined) != 0)
            others.push_back(words[i]);
    }
    return others;
}

int answerFrom(const std::string &file, const Console &console) {
    int status = 0;
    try {
        Twin twin(file);
        status = twin.run(otherWords(console), console.outputDescriptor());
    } catch (const Twin::Ended &end) {
        status = end.status;
    }
    return command_line::endAs(status);
}

} // namespace

Command &takesCapturedUnit(Command &command) {
    const auto file = std::make_shared<std::string>();
    command.option(
        kFrom, "FILE",
        "A captured unit, - is standard input, which answers in place of this one; see 'iodbg "
        "capture --help'",
        fileName(*file));
    return command.unless([file](Output &output) -> std::optional<int> {
        if (file->empty())
            return {};
        return answerFrom(*file, static_cast<const Console &>(output));
    });
}

} // namespace iodbg
