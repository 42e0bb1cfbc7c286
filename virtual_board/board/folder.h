#pragma once
// A board's folder:
//
//   board.state   the whole board, mapped by every process of it
//   lock          locked around each request
//   wake          a pipe without a writer, at which programs wait for the clock and for descriptors
//   registers     the page of memory with the MDIO command register, mapped by programs that use it
//   flash/        what the flash partitions hold
//   root/         the board's own files under their paths: /dev/bspHandle, /dev/mem and /dev/mtdN
//                 (placeholders that make the nodes' descriptors recognisable), /proc/cmdline,
//                 /tmp/bsp...

#include "virtual_board/board/board.h"
#include "virtual_board/board/kernel.h"
#include "virtual_board/board/paths.h"

#include <sys/types.h>

namespace vb {

constexpr char kStateFile[] = "board.state";
constexpr char kRegisterPageFile[] = "registers";
constexpr char kLockFile[] = "lock";
constexpr char kWakeFile[] = "wake";
constexpr char kRootFolder[] = "root";

/** What is wrong with a folder. */
enum class FolderProblem {
    None,
    Nothing,      // it is not there, or there is no board in it
    Damaged,      // the board is not whole
    OtherVersion, // made by another version, or on a machine of the other byte order
    Permission,
    Occupied, // something is in the place of a new board
    Refused,  // what a new board shall be made with
    System,
};

/** Why a board cannot be used: one line that says what to do. */
struct FolderError {
    char text[512];
    FolderProblem problem;
    int osError; // errno of the call that failed, or 0
};

constexpr unsigned kMaxFolderPath = 4096;

/** A path on the host; long enough for every path of a board in every folder. */
struct HostPathBuffer {
    char text[kMaxFolderPath + 2 * kMaxBoardPath + 32];
};

/** A mapped board folder. */
class BoardFolder {
  public:
    BoardFolder() = default;
    BoardFolder(const BoardFolder &) = delete;
    BoardFolder &operator=(const BoardFolder &) = delete;
    ~BoardFolder() { close(); }

    /** Maps the board in a folder; false, with the reason, when it is not a whole, fitting board.
     */
    bool open(const char *path, FolderError &error);
    void close();

    Board *board() const { return board_; }

    /** The folder's absolute path. */
    const char *path() const { return path_; }

    /** The folder with the board's own files, below which they have their paths on the board. */
    const char *rootPath() const { return rootPath_; }
    const char *lockPath() const { return lockPath_; }

    /** Where a file of the board lies on the host: the folder's root and the path on the board. */
    HostPathBuffer hostPath(const char *boardPath) const;

    /** One of the folder's own files. */
    HostPathBuffer ownFile(const char *name) const;
    /** Opens one of them; -1 when it cannot be opened. */
    int openOwnFile(const char *name, int flags) const;

    /** Where the placeholder of a flash partition's node lies on the host. */
    HostPathBuffer flashNode(uint32_t index) const;

    /**
     * Whether the folder has been removed, or holds another board, since it was opened. A folder
     * that is being removed counts as soon as its lock or its state is gone.
     */
    bool isGone() const;

    /** Tells those who watch the board that it has changed. */
    void tellOfChange() const;

    /**
     * Makes a new file that of the folder's owner, who goes on with it. Root's files would be in
     * the way of that user; other users cannot give theirs away.
     */
    void giveToOwner(const char *hostPath) const;

  private:
    bool map(const char *path, FolderError &error);
    bool check(const char *path, FolderError &error);
    bool hasItsFiles(const char *path, FolderError &error) const;
    bool hasFile(const char *path, const char *name, uint64_t size, FolderError &error) const;
    bool failToOpen(const char *path, const char *file, FolderError &error) const;

    Board *board_ = nullptr;
    kernel::Owner owner_ = {};
    kernel::Identity state_; // tells this board from another one in the same place
    // What every request needs is made once: programs may send them on small stacks.
    char path_[kMaxFolderPath] = {};
    char rootPath_[kMaxFolderPath + sizeof(kRootFolder)] = {};
    char lockPath_[kMaxFolderPath + sizeof(kLockFile)] = {};
};

/** The host's time in nanoseconds. */
uint64_t hostNow();

} // namespace vb
