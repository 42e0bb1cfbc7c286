#pragma once
// A board's folder while it is made: it appears with all that is in it, or not at all.

#include "virtual_board/board/folder.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vb {

/** Tells why a board cannot be made; false. */
bool refuseFolder(FolderError &error, FolderProblem problem, const std::string &reason,
                  int osError = 0);

/** The same of a file that cannot be written; errno tells why. */
bool failToWrite(FolderError &error, const std::string &what, int osError);

/**
 * A folder beside the final one, removed again with all that was made in it unless it was moved.
 * What was made is known by name: nothing else is ever removed.
 */
class NewFolder {
  public:
    NewFolder() = default;
    NewFolder(const NewFolder &) = delete;
    NewFolder &operator=(const NewFolder &) = delete;
    ~NewFolder();

    /** Begins a folder for a place where nothing is, or an empty folder; false when it is taken. */
    bool begin(const std::string &place, FolderError &error);

    /** Where it is until it is moved. */
    const std::string &path() const { return path_; }

    /** Where something of it is until it is moved; it is removed with the folder. */
    std::string add(const std::string &name);

    // False when it cannot be done; errno tells why.
    bool makeFolder(const std::string &name);
    bool writeFile(const std::string &name, const void *data, size_t size);
    /** A file that is one hole. */
    bool makeHole(const std::string &name, uint32_t size);

    bool makePipe(const std::string &name);

    /** Gives it its final name. */
    bool finish(FolderError &error);

  private:
    std::filesystem::path final_;
    std::string path_;
    std::vector<std::string> made_; // each behind the folder that it is in
};

} // namespace vb
