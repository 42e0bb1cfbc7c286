#include "virtual_board/control/handle.h"

#include "virtual_board/board/circuits.h"
#include "virtual_board/control/answer.h"

#include <cerrno>
#include <cstring>

namespace vboard {

namespace {

int32_t statusOf(vb::FolderProblem problem) {
    switch (problem) {
    case vb::FolderProblem::Nothing:
        return VBOARD_E_NO_BOARD;
    case vb::FolderProblem::Damaged:
        return VBOARD_E_DAMAGED;
    case vb::FolderProblem::OtherVersion:
        return VBOARD_E_VERSION;
    case vb::FolderProblem::Permission:
        return VBOARD_E_PERMISSION;
    case vb::FolderProblem::Occupied:
        return VBOARD_E_EXISTS;
    case vb::FolderProblem::Refused:
        return VBOARD_E_REFUSED;
    case vb::FolderProblem::None:
    case vb::FolderProblem::System:
        break;
    }
    return VBOARD_E_SYSTEM;
}

} // namespace

void fail(const vb::FolderError &error) {
    throw Failure(statusOf(error.problem), error.text, error.osError);
}

void openFolder(vb::BoardFolder &board, const char *path) {
    vb::FolderError error = {};
    if (!board.open(path, error))
        fail(error);
}

void failGone(const vb::BoardFolder &folder) {
    throw Failure(VBOARD_E_GONE,
                  std::string(folder.path()) +
                      ": the board is gone; its folder was removed, or holds another board now");
}

LockedBoard::LockedBoard(const vb::BoardFolder &folder)
    : folder_(folder), lock_(folder, vb::BoardLock::Use::Looks) {
    const int reason = errno;
    if (folder.isGone())
        failGone(folder);
    if (!lock_.isHeld())
        throw Failure(reason == EACCES || reason == EPERM || reason == EROFS ? VBOARD_E_PERMISSION
                                                                             : VBOARD_E_SYSTEM,
                      std::string(folder.lockPath()) +
                          " cannot be opened for writing: " + std::strerror(reason),
                      reason);
}

uint64_t LockedBoard::bringUpToDate() const {
    vb::Board &board = *folder_.board();
    const uint64_t now = clockNow(board.clock, vb::hostNow());
    advanceBoard(board, now);
    return now;
}

} // namespace vboard
