#pragma once
// Files on the host: read whole, written whole or not at all. One place decides for all commands
// what may be written to.

#include "iodbg/core/console.h"
#include "iodbg/core/format.h"
#include "iodbg/core/temporary_file.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace iodbg {

constexpr char kForceHelp[] = "Replace a file that exists";

/** "-" in the place of a file: standard input, or standard output. */
bool isStandardStream(const std::string &path);

/** The name of a file that is read, in messages. */
std::string inputName(const std::string &path);

/** The content of a file of at most maxSize bytes. */
Bytes readHostFile(const std::string &path, size_t maxSize);
/** The same where it is small enough to be taken from standard input, too. */
Bytes readHostFileOrInput(const std::string &path, size_t maxSize);

/** Throws for standard input where the content is read more than once, or by others. */
void requireNamedFile(const std::string &path);

/** Reads so many bytes; false, with the reason in errno, when they are not there. */
bool readAt(int file, uint64_t offset, std::span<uint8_t> bytes);

/** Writes to an open file; false, with the reason in errno, when not all bytes could be written. */
bool writeAll(int file, ByteView bytes);

/** Where a command saves bytes, as its user has said. */
struct Destination {
    std::string path; // "-" and the names of standard output: that
    bool mayReplace = false;
    bool isSecret = false; // nobody but the owner may read it
    bool isForAll = false; // everybody may, whatever the mask and the file before it say

    bool isStandardOutput() const;
    /** Its name in answers. */
    std::string name() const { return isStandardOutput() ? "standard output" : path; }
};

/** Throws where nothing may be saved. */
void requireSavable(Console &console, const Destination &destination);

/**
 * What is saved, on its way. It appears under its name once it is whole; until then, and if it
 * never gets there, what was there before stays.
 */
class Saving {
  public:
    /**
     * Throws where nothing may be saved: in a device, through a link, in the place of a folder, or
     * of another file unless it may be replaced.
     */
    Saving(Console &console, const Destination &destination);

    /** The new file, for those who write it by its name. */
    const std::string &path() const { return file_->path(); }
    void write(ByteView bytes);
    /** Puts the new file in its place, or gives its bytes on standard output. */
    void finish();

  private:
    Console &console_;
    const Destination &destination_;
    mode_t mode_ = 0;
    std::optional<TemporaryFile> file_;
};

/** Saves bytes in one go. */
void save(Console &console, const Destination &destination, ByteView content);

} // namespace iodbg
