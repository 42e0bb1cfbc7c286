#pragma once
// A board that is held open.

#include "virtual_board/board/folder.h"
#include "virtual_board/board/lock.h"
#include "virtual_board/include/vboard.h"

struct VBoard {
    vb::BoardFolder folder;
};

namespace vboard {

/** Opens the board in a folder; throws Failure. */
void openFolder(vb::BoardFolder &board, const char *path);

/** Throws what is told of a folder. */
[[noreturn]] void fail(const vb::FolderError &error);

/** Fails because a board was removed. */
[[noreturn]] void failGone(const vb::BoardFolder &folder);

/** Keeps everybody else away from a board. */
class LockedBoard {
  public:
    explicit LockedBoard(const vb::BoardFolder &folder);

    vb::Board *operator->() const { return folder_.board(); }
    vb::Board &operator*() const { return *folder_.board(); }

    /** Its time, up to which everything on it has happened. */
    uint64_t bringUpToDate() const;

    /** What was done to it is done: those who watch it hear of it. */
    void tellOfChange() const { folder_.tellOfChange(); }

  private:
    const vb::BoardFolder &folder_;
    vb::BoardLock lock_;
};

} // namespace vboard
