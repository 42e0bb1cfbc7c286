#pragma once
// Files that are made under another name first, so that nobody finds them half written.

#include "iodbg/core/interrupt.h"
#include "support/owned.h"

#include <optional>
#include <string>
#include <sys/types.h>

namespace iodbg {

/**
 * A new file in a folder, readable by its owner alone. It is gone with this object, and with the
 * program when a signal ends that, unless it has taken its final place.
 */
class TemporaryFile {
  public:
    /** Throws when the folder takes no file. what: the file that is to be written, in messages. */
    TemporaryFile(const std::string &folder, const std::string &what);
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    ~TemporaryFile();

    const std::string &path() const { return path_; }
    int descriptor() const { return file_->get(); }

    /**
     * Gets this mode and the final name, replacing a file of that name only if it may; false, with
     * the reason in errno, when it could not be stored or named.
     */
    bool takePlace(const std::string &finalPath, mode_t mode, bool mayReplace);

  private:
    static void remove(const void *temporaryFile);

    std::string path_;
    std::optional<bsp::Descriptor> file_;
    bool isMade_ = false;
    BeforeEnd removal_{remove, this};
};

/** The folder for files that nobody keeps. */
std::string folderForTemporaryFiles();

} // namespace iodbg
