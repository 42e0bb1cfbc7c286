#pragma once
// Programs that a command starts on a board and looks after.

#include "virtual_board/include/vboard.h"

#include <cstddef>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vboard {

/** A file without a name, which is closed when nobody needs it any more. */
class OpenFile {
  public:
    explicit OpenFile(int descriptor) : descriptor_(descriptor) {}
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;
    ~OpenFile();

    int get() const { return descriptor_; }
    /** Everything in it, from a place on. */
    std::string content(size_t from = 0) const;

  private:
    int descriptor_;
};

/** A program with what it starts. What it prints is kept; it has no input. What still runs when
 * this goes is ended. */
class Program {
  public:
    /** Starts it; throws Refused when that cannot be, or it would not be on the board. A stepped
     * clock stands from now on until it waits. */
    Program(VBoard *board, const std::vector<std::string> &words);
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;
    ~Program();

    /** Waits until it has ended, in the host's time; false when it runs on. */
    bool awaitEnd(int milliseconds);
    /** Of one that has ended: 128 and the signal's number where a signal has ended it. */
    int exitCode() const { return exitCode_; }

    /** Ends it: it is asked to, and killed if it does not within two seconds. */
    void end();

    /** What it has printed so far, on standard output and on standard error. */
    std::string output(size_t from = 0) const { return output_.content(from); }
    std::string errors() const { return errors_.content(); }

  private:
    void noteEnd();

    const OpenFile output_, errors_;
    const pid_t id_;
    const OpenFile process_; // readable once it has ended
    bool hasEnded_ = false;
    int exitCode_ = 0;
};

} // namespace vboard
