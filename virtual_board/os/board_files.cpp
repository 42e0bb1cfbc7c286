#include "virtual_board/os/board_files.h"

namespace vb {

FaultRule fileFault(FaultOp op, const char *boardPath) {
    const BoardFolder &folder = *attachedFolder();
    const BoardLock lock(folder);
    const FaultSubject subject = {FaultDevice::File, op, 0, 0, 0, 0, boardPath};
    const FaultRule *rule = faultFor(folder.board()->faults, subject);
    return rule != nullptr ? *rule : FaultRule{};
}

} // namespace vb
