#pragma once
// A captured unit to ask: a virtual board of it, in a folder that nobody keeps.

#include "command_line/programs.h"
#include "iodbg/core/format.h"

#include <string>
#include <vector>

namespace iodbg {

class Twin {
  public:
    /** A signal that ended the making; what waitpid tells of it. */
    struct Ended {
        int status;
    };

    /**
     * Makes the board of a file, or of standard input. Says on standard error when it is not all
     * that the unit was. Throws when there is none; Ended when somebody
     * wants this program to end.
     */
    explicit Twin(std::string file);
    Twin(const Twin &) = delete;
    Twin &operator=(const Twin &) = delete;
    ~Twin();

    /** Runs this program once more, on the board, with other words and a standard output. */
    int run(const std::vector<std::string> &words, int output);

  private:
    void make();

    const std::string file_;
    const Bytes input_; // what standard input had, if that is the file: Ctrl-C still ends it
    command_line::ProgramRunner programs_; // from here on signals wait until the folder is gone
    std::string folder_;
};

} // namespace iodbg
