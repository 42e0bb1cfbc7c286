#pragma once
// A unit as those see it who unpack, install, run and repair it: through `iodbg`, which runs on it,
// and through `vboard`, which is their hands. Nothing here looks at the board in any other way.

#include "tests/iodbg/iodbg_test.h"
#include "tests/support/json.h"
#include "tests/virtual_board/command_test.h"

using Json = nlohmann::ordered_json;

class UnitTest : public CommandTest {
  protected:
    using CommandTest::CommandTest;

    /**
     * From here on what iodbg has sent to the unit is sent once more to a copy of the unit as it
     * was before: each answer has to be the same.
     */
    void repeatOnCopies();
    void TearDown() override;

    /** Runs a line of iodbg's on the unit; what it prints. The exit code must be this one. */
    std::string iodbg(const std::string &line, int exitCode = 0,
                      const std::string &input = "") const;
    /** The same with --json: the answer, or the last line of one that has several. */
    Json json(const std::string &line, int exitCode = 0) const;
    /** The line that iodbg refuses a command with. */
    std::string refusal(const std::string &line, int exitCode) const;

    /** Changes the world around the unit. */
    void set(const std::string &property, const std::string &value) const;
    /** What the world is like, in the order asked for. */
    Lines get(const Words &properties) const;
    /** The front panel, without the lines and words that tell the time. */
    Lines panel() const;

    /** The virtual time that some work takes, in milliseconds. */
    template <typename Work>
    int64_t millisecondsOf(Work work) const {
        const int64_t start = now();
        work();
        return now() - start;
    }
    /** Lets time pass while the watchdog is fed. */
    void pass(unsigned seconds) const;

    /** What `check` finds that is not good: "fault fan 1: not there; plug it". */
    Lines complaints(int exitCode) const;

    /** A file of a person who looks after the unit; its path. */
    std::string makeFile(const std::string &name, const std::string &bytes) const;

  private:
    class Repetition;

    int64_t now() const;

    bool repeats_ = false;
    mutable uint64_t repeated_ = 0; // requests whose answers were the same

    mutable Environment environment_; // asked for once
};

/** The findings of a unit that nobody has given software and settings, behind others. */
Lines withEmptyFlash(Lines findings = {});

/** The value of a key in every element of an array: "4 4 0". */
std::string column(const Json &rows, const std::string &key);

/** What people tell by its name alone: an operating-system image with its header at its end. */
std::string osImage(const std::string &name, size_t size = 300000);
