#include "virtual_board/server/present_users.h"

#include <algorithm>
#include <cerrno>
#include <csignal>

namespace vboard::server {

namespace {

constexpr std::chrono::seconds kMostAge{30};

bool isThere(int32_t pid) {
    return kill(pid, 0) == 0 || errno == EPERM;
}

} // namespace

void PresentUsers::note(int32_t pid) {
    const bool isKnown = std::find(pids_.begin(), pids_.end(), pid) != pids_.end();
    if (!isKnown && isThere(pid))
        hasNew_ = true;
}

bool PresentUsers::isOutdated() const {
    return hasNew_ || Clock::now() - looked_ > kMostAge ||
           !std::all_of(pids_.begin(), pids_.end(), isThere);
}

void PresentUsers::look(const Board &board) {
    const List<VBoardUser> users([&](VBoardUser **list, uint32_t *count, VBoardError *error) {
        return vboardUsers(board, list, count, error);
    });
    pids_.clear();
    text_.clear();
    for (const VBoardUser &user : users) {
        pids_.push_back(user.pid);
        text_ += (text_.empty() ? "" : ", ") + std::string(user.program) + " " +
                 std::to_string(user.pid);
    }
    hasNew_ = false;
    looked_ = Clock::now();
}

const std::string &PresentUsers::text(const Board &board) {
    if (isOutdated())
        look(board);
    return text_;
}

} // namespace vboard::server
