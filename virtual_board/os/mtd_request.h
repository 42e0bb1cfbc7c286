#pragma once
// One request to the driver of a flash partition, whichever call it comes from.

#include "virtual_board/board/mtd.h"
#include "virtual_board/os/seam.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace vb {

/** Whether a descriptor was opened for writing. */
inline bool canWrite(int fd) {
    return (fcntl(fd, F_GETFL) & O_ACCMODE) != O_RDONLY;
}

/** Sends a request under the board's lock; errno is untouched unless the request fails. */
template <typename Send>
MtdAnswer sendRequest(uint32_t partition, Send send) {
    const int savedErrno = errno;
    const BoardFolder &folder = *attachedFolder();
    BoardLock lock(folder);
    if (!lock.isHeld()) {
        errno = ENODEV; // the board is gone
        return {ENODEV, 0, false};
    }
    const uint64_t now = clockNow(folder.board()->clock, hostNow());
    const ChipTime time = {&lock, [](void *held, uint64_t ns) {
                               return static_cast<BoardLock *>(held)->letOthersIn(
                                   [ns] { letTimePass(ns); });
                           }};
    const MtdAnswer answer = send(MtdRequest{folder, {getpid(), now}, partition, time});
    if (answer.isPowerCut)
        cutPower();
    errno = answer.error != 0 ? answer.error : savedErrno;
    return answer;
}

/** What the call answers. */
inline int resultOf(const MtdAnswer &answer) {
    return answer.error != 0 ? -1 : static_cast<int>(answer.value);
}

} // namespace vb
