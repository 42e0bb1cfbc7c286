// The clock of a board.

#include "virtual_board/control/answer.h"
#include "virtual_board/control/handle.h"

int32_t vboardTime(VBoard *board, uint64_t *time, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        vboard::require(time, "time");
        const vboard::LockedBoard locked(board->folder);
        *time = clockNow(locked->clock, vb::hostNow());
    });
}

int32_t vboardAdvance(VBoard *board, uint64_t time, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        const vboard::LockedBoard locked(board->folder);
        if (locked->clock.mode != vb::TimeMode::Virtual)
            throw vboard::Failure(VBOARD_E_REFUSED,
                                  "the board's time moves by itself; set 'time' to virtual first");
        locked->clock.sleptNs += time;
        locked.bringUpToDate();
        locked.tellOfChange();
    });
}
