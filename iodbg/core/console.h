#pragma once
// Where answers go. Standard output carries nothing else, so that it can be piped: the library
// prints its diagnostics there too, and these are led to standard error.

#include "command_line/command.h"
#include "command_line/screen.h"
#include "iodbg/core/exit_code.h"
#include "iodbg/core/format.h"
#include "iodbg/core/report.h"
#include "support/owned.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace iodbg {

class Failure;

class Console : public command_line::Output {
  public:
    /** Takes standard output over. */
    Console();

    /** The words of the command line, the program's name among them. */
    const std::vector<std::string> &words() const { return words_; }
    void takeWords(std::vector<std::string> words) { words_ = std::move(words); }

    /** Whether answers are for programs. */
    bool &isJson() { return isJson_; }
    /** From here on answers for programs are lines. */
    void answerInLines() { isInLines_ = true; }
    /** The same, and a reader that goes away ends nothing. */
    void beginLongWork();
    AnswerForm form() const;

    /** Prints an answer; its exit code. */
    ExitCode print(const Report &report) const { return print(report, report.toText()); }
    /** The same with another form of it for people. */
    ExitCode print(const Report &report, const std::string &text) const;

    void printText(const std::string &text) const override;

    /** Gives bytes on standard output, which then carries them alone: answers go to people. */
    void giveData(ByteView data);

    /** Standard output, for a program that has it in this one's place. */
    int outputDescriptor() const { return out_.get(); }

    /** Of the terminal that answers go to; none when they go elsewhere. */
    std::optional<terminal::Size> terminalSize() const;

    /** Lets the library print on standard output for once; what it prints is the answer. */
    template <typename Call>
    auto printedByLibrary(Call call) const {
        const LibraryOutput output(*this);
        return call();
    }

    /** Prints why there is no answer: a line on standard error, and an object for programs. */
    ExitCode print(const Failure &cause) const;

  private:
    /** Leads what is printed on standard output there as long as it lives. */
    class LibraryOutput {
      public:
        explicit LibraryOutput(const Console &console);
        LibraryOutput(const LibraryOutput &) = delete;
        LibraryOutput &operator=(const LibraryOutput &) = delete;
        ~LibraryOutput();
    };

    bsp::Descriptor out_;
    std::vector<std::string> words_;
    bool isJson_ = false;
    bool isInLines_ = false;
    bool isDataGiven_ = false;
};

} // namespace iodbg
