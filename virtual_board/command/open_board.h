#pragma once
// The board that a command works on.

#include "virtual_board/board/lock.h"

#include <memory>
#include <string>

namespace vboard {

/** Opens the board in a folder, or throws vb::Refused. */
void openBoard(vb::BoardFolder &board, const std::string &folder);

/** A board that no other process changes for the lifetime of this object. */
class LockedBoard {
  public:
    explicit LockedBoard(const std::string &folder);

    const vb::BoardFolder &folder() const { return folder_; }
    vb::Board &operator*() const { return *folder_.board(); }
    vb::Board *operator->() const { return folder_.board(); }

  private:
    vb::BoardFolder folder_;
    std::unique_ptr<vb::BoardLock> lock_;
};

/** Takes a board's lock, or throws vb::Refused. */
std::unique_ptr<vb::BoardLock> lockBoard(const vb::BoardFolder &board);

} // namespace vboard
