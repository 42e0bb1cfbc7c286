#include "virtual_board/command/open_board.h"

#include "virtual_board/words/values.h"

#include <cerrno>
#include <cstring>

namespace vboard {

void openBoard(vb::BoardFolder &board, const std::string &folder) {
    vb::FolderError error = {};
    if (!board.open(folder.c_str(), error))
        throw vb::Refused(error.text);
}

std::unique_ptr<vb::BoardLock> lockBoard(const vb::BoardFolder &board) {
    auto lock = std::make_unique<vb::BoardLock>(board, vb::BoardLock::Use::Looks);
    const std::string reason = std::strerror(errno);
    if (board.isGone())
        throw vb::Refused(
            std::string(board.path()) +
            ": the board is gone; its folder was removed, or holds another board now");
    if (!lock->isHeld())
        throw vb::Refused(std::string(board.ownFile(vb::kLockFile).text) +
                          " cannot be opened for writing: " + reason);
    return lock;
}

LockedBoard::LockedBoard(const std::string &folder) {
    openBoard(folder_, folder);
    lock_ = lockBoard(folder_);
}

} // namespace vboard
