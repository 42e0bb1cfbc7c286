#include "iodbg/core/failure.h"

#include "bsp.h"
#include "iodbg/core/status_table.h"

#include <cerrno>
#include <cstring>

namespace iodbg {

Failure Failure::of(ExitCode code, const std::string &what, int32_t status,
                    const std::string &hint) {
    const StatusText text = explain(status);
    Failure failure(code, "cannot " + what + ": " + nameAndNumber(status) + ", " + text.meaning +
                              "; " + (hint.empty() ? text.next : hint));
    failure.status_ = status;
    return failure;
}

Failure Failure::board(const std::string &what, int32_t status, const std::string &hint) {
    return of(ExitCode::Board, what, status, hint);
}

Failure Failure::refused(const std::string &what, int32_t status, const std::string &hint) {
    return of(ExitCode::Usage, what, status, hint);
}

Failure Failure::file(const std::string &what, const std::string &hint) {
    const std::string reason = std::strerror(errno);
    return {ExitCode::Host, "cannot " + what + ": " + reason, hint};
}

Failure Failure::with(const std::string &hint) const {
    Failure failure(code_, std::string(what()) + "; " + hint);
    failure.status_ = status_;
    return failure;
}

void require(int32_t status, const std::string &what) {
    if (status != BSP_OK)
        throw Failure::board(what, status);
}

void refuseOutOfRange(int32_t status, const std::string &what) {
    // The library's answer, or the kernel module's, which alone knows its registers and lines.
    if (status == BSP_E_INVALID || status == -EINVAL)
        throw Failure::refused(what, status, "give a number that this board has");
}

void requireInRange(int32_t status, const std::string &what) {
    refuseOutOfRange(status, what);
    require(status, what);
}

} // namespace iodbg
