// Waiting for what happens on a board.

#include "virtual_board/board/kernel.h"
#include "virtual_board/board/moments.h"
#include "virtual_board/control/answer.h"
#include "virtual_board/control/handle.h"
#include "virtual_board/control/stepping.h"
#include "virtual_board/words/board_condition.h"
#include "virtual_board/words/values.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <sched.h>

namespace vboard {

namespace {

uint32_t changesOf(const vb::BoardFolder &folder) {
    return std::atomic_ref(folder.board()->changes.count).load();
}

/** A wait for a condition, from its first look on. */
class Wait {
  public:
    Wait(const vb::BoardFolder &folder, const std::string &text, uint64_t timeoutNs)
        : folder_(folder), text_(text), timeoutNs_(timeoutNs), condition_(folder, text) {}

    /** Whether there is something left to wait for. */
    bool goesOn() {
        const LockedBoard board(folder_);
        const uint64_t now = board.bringUpToDate();
        if (beganNs_ == UINT64_MAX)
            beganNs_ = now;
        if (condition_.holds())
            return false;
        const uint64_t passed = now - std::min(now, beganNs_);
        if (passed >= timeoutNs_)
            throw Failure(VBOARD_E_TIMEOUT, text_ + " did not come true within " +
                                                language::durationText(timeoutNs_) +
                                                " s: " + condition_.state());
        stepNs_ = std::min(timeoutNs_ - passed, vb::nextMoment(*board, now) - now);
        changes_ = changesOf(folder_);
        pace_ = board->clock.pace;
        if (pace_.mode == vb::TimeMode::Virtual)
            moveClock(board->clock, stepNs_);
        return true;
    }

    /** Lets the time pass until the condition is worth another look. */
    void pause() const {
        switch (pace_.mode) {
        case vb::TimeMode::Virtual:
            folder_.tellOfChange();
            sched_yield(); // programs that have waited for this moment
            break;
        case vb::TimeMode::Stepped:
            Stepper(folder_, VBOARD_USUAL_PATIENCE).advanceBy(stepNs_);
            break;
        case vb::TimeMode::Real:
        case vb::TimeMode::Scaled:
            vb::kernel::waitForChange(&folder_.board()->changes.count, changes_,
                                      vb::unscaled(stepNs_, pace_.rate));
            break;
        }
    }

  private:
    const vb::BoardFolder &folder_;
    const std::string text_;
    const uint64_t timeoutNs_;
    const vb::BoardCondition condition_;
    uint64_t beganNs_ = UINT64_MAX;
    uint32_t changes_ = 0;
    uint64_t stepNs_ = 0;
    vb::Pace pace_;
};

} // namespace

} // namespace vboard

uint32_t vboardChanges(const VBoard *board) {
    return vboard::changesOf(board->folder);
}

int32_t vboardAwaitChange(VBoard *board, uint32_t since, uint64_t timeout, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        const uint32_t *count = &board->folder.board()->changes.count;
        const bool isOver = vb::kernel::waitForChange(count, since, timeout) == ETIMEDOUT;
        if (board->folder.isGone())
            vboard::failGone(board->folder);
        if (isOver && vboard::changesOf(board->folder) == since)
            throw vboard::Failure(VBOARD_E_TIMEOUT, "nothing has changed");
    });
}

int32_t vboardWait(VBoard *board, const char *condition, uint64_t timeout, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        vboard::require(condition, "condition");
        vboard::Wait wait(board->folder, condition, timeout);
        while (wait.goesOn())
            wait.pause();
    });
}
