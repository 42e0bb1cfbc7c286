// The board as a whole.

#include "virtual_board/control/answer.h"
#include "virtual_board/control/given.h"
#include "virtual_board/control/handle.h"
#include "virtual_board/words/panel_text.h"

int32_t vboardPanel(VBoard *board, int32_t hasColours, char **text, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        vboard::require(text, "text");
        const vboard::LockedBoard locked(board->folder);
        const uint64_t now = locked.bringUpToDate();
        *text = vboard::giveText(vb::panelText(*locked, now, hasColours != 0));
    });
}
