#pragma once
// iodbg run as its users run it, on a virtual board that the test sees from the inside.

#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"

#include <map>
#include <string>
#include <sys/resource.h>
#include <vector>

using Words = std::vector<std::string>;

/** The words of a line: wordsOf("poe port 3"). */
Words wordsOf(const std::string &line);

/** What can be compared of a whole board: device memory, and its files with their content. */
struct BoardContent {
    std::string devices;
    std::map<std::string, std::string> files;

    bool operator==(const BoardContent &) const = default;
};

/** Lets no file of this process and of the programs that it runs grow beyond a size. */
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes);
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;
    ~FileSizeLimit();

  private:
    rlimit before_{};
    void (*handler_)(int) = nullptr;
};

class IodbgTest : public VirtualBoardTest {
  protected:
    IodbgTest();

    /** Limits what iodbg writes, but not what tells how it is run on the board. */
    FileSizeLimit limitFiles(rlim_t bytes) const;
    /** Runs iodbg on the board. */
    ProcessResult iodbg(const Words &arguments, const std::string &input = "") const;
    /** Starts it there. */
    Process start(const Words &arguments) const;
    /** Runs it on a terminal; what appears there. */
    std::string iodbgOnTerminal(const Words &arguments, const Typing &typing = {},
                                const TerminalKind &kind = {}, TerminalEnd *end = nullptr) const;

    /** Runs it with --json; the answer must parse and the exit code must be this one. */
    std::string json(const Words &arguments, int exitCode = 0) const;

    /** Expects a command to end with this exit code, no output, and a last line with these texts.
     */
    ProcessResult expectFailure(const Words &arguments, int exitCode, const Words &texts) const;
    /** The same for wrong usage and host problems: a single line, and the board untouched. */
    void expectRefusal(const Words &arguments, int exitCode, const std::string &text) const;

    BoardContent content() const;

    std::string hostFile(const std::string &name) const { return files_.path() + "/" + name; }
    /** Makes a file on the host; its path. */
    std::string makeFile(const std::string &name, const std::string &bytes) const;

    /** A rule that spoils one byte of the n-th request. */
    vb::FaultRule corrupt(vb::FaultDevice device, vb::FaultOp op, int32_t byte,
                          uint32_t nth = 1) const;
    /** A rule that leaves every request of a kind without an answer. */
    vb::FaultRule silence(vb::FaultDevice device, vb::FaultOp op) const;

    /** The board's record as it is stored. */
    uint8_t *record() const { return devices().eeprom.bytes + 256; }
    /** A supply's, 1 or 2. */
    uint8_t *supplyRecord(unsigned supply) const {
        return devices().supply[supply - 1].eeprom.bytes + 176;
    }

    /** The same rule for one register, line or command alone. */
    static vb::FaultRule at(vb::FaultRule rule, uint32_t offset);

  private:
    const Environment &environment() const;
    bool isMadeInPassing(const std::string &path) const;

    TemporaryFolder files_;
    mutable Environment environment_; // asked for once
};

/** One value of a JSON answer by its JSON pointer, written as JSON: jsonAt(text, "/board/mac"). */
std::string jsonAt(const std::string &text, const std::string &pointer);
/** The keys of the object at a JSON pointer, in their order. */
Words jsonKeys(const std::string &text, const std::string &pointer);

std::string readFile(const std::string &path);
