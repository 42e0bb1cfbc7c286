#include "virtual_board/os/board_files.h"

#include <cstring>

namespace vb {

void traceOpen(const char *path, int error) {
    if (error == 0 && std::strcmp(path, kNodePath) == 0)
        return;
    const BoardFolder &folder = *attachedFolder();
    const BoardLock lock(folder);
    Board &board = *folder.board();
    TraceRecord &trace = traceNext(board.trace, TraceKind::Open, thisSender(board));
    trace.error = error;
    std::strncpy(reinterpret_cast<char *>(trace.data), path, sizeof(trace.data) - 1);
}

FaultRule fileFault(FaultOp op, const char *boardPath) {
    const BoardFolder &folder = *attachedFolder();
    const BoardLock lock(folder);
    const FaultSubject subject = {FaultDevice::File, op, 0, 0, 0, 0, boardPath};
    const FaultRule *rule = faultFor(folder.board()->faults, subject);
    return rule != nullptr ? *rule : FaultRule{};
}

} // namespace vb
