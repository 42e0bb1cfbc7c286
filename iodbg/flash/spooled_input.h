#pragma once
// Files that commands write into flash, from a name or from standard input. The library opens them
// by name and reads them more than once, so that standard input is spooled into a file first: all
// of it is there, and has been judged, before anything is erased.

#include "iodbg/core/command.h"
#include "iodbg/core/temporary_file.h"

#include <cstdint>
#include <optional>
#include <string>

namespace iodbg {

/** What a command line says of a file that is written into flash. */
struct FlashInput {
    std::string file;
    std::string spool; // folder for standard input; empty: the one for temporary files
    bool isDryRun = false;
    bool isYes = false;
};

class SpooledInput {
  public:
    /**
     * Takes standard input, up to so many bytes, where that is the file; throws where it is empty
     * or longer, or where nobody could answer a question.
     */
    SpooledInput(const FlashInput &input, uint64_t largest);

    /** The file to read. */
    const std::string &path() const { return path_; }
    /** Its name in messages. */
    const std::string &name() const { return name_; }

  private:
    std::string path_;
    std::string name_;
    std::optional<TemporaryFile> file_;
};

void addSpoolOption(Command &command, std::string &folder);

} // namespace iodbg
