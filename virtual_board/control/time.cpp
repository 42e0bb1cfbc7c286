// The clock of a board.

#include "virtual_board/control/answer.h"
#include "virtual_board/control/handle.h"
#include "virtual_board/control/stepping.h"

namespace vboard {

namespace {

vb::TimeMode modeOf(const vb::BoardFolder &folder) {
    const LockedBoard board(folder);
    return board->clock.pace.mode;
}

void moveVirtualClock(const vb::BoardFolder &folder, uint64_t ns) {
    const LockedBoard board(folder);
    moveClock(board->clock, ns);
    board.bringUpToDate();
}

} // namespace

} // namespace vboard

int32_t vboardTime(VBoard *board, uint64_t *time, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        vboard::require(time, "time");
        const vboard::LockedBoard locked(board->folder);
        *time = clockNow(locked->clock, vb::hostNow());
    });
}

int32_t vboardAdvance(VBoard *board, uint64_t time, uint64_t patience, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        switch (vboard::modeOf(board->folder)) {
        case vb::TimeMode::Virtual:
            vboard::moveVirtualClock(board->folder, time);
            break;
        case vb::TimeMode::Stepped: {
            vboard::Stepper stepper(board->folder, patience);
            stepper.advanceBy(time);
            break;
        }
        case vb::TimeMode::Real:
        case vb::TimeMode::Scaled:
            throw vboard::Failure(VBOARD_E_REFUSED, "the board's time moves by itself; set 'time' "
                                                    "to virtual or stepped first");
        }
        board->folder.tellOfChange(); // time alone is no change, but a hand has moved it
    });
}

int32_t vboardExpectProgram(VBoard *board, int32_t process, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        if (process <= 0)
            throw vboard::Failure(VBOARD_E_ARGUMENT,
                                  "there is no process " + std::to_string(process));
        const vboard::LockedBoard locked(board->folder);
        noteProgram(locked->waiters, process);
    });
}
