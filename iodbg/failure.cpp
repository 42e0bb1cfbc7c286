#include "iodbg/failure.h"

#include "bsp.h"
#include "iodbg/status_table.h"

#include <cerrno>
#include <cstring>

namespace iodbg {

Failure Failure::board(const std::string &what, int32_t status, const std::string &hint) {
    const StatusText text = explain(status);
    Failure failure(ExitCode::Board, "cannot " + what + ": " + nameAndNumber(status) + ", " +
                                         text.meaning + "; " + (hint.empty() ? text.next : hint));
    failure.status_ = status;
    return failure;
}

Failure Failure::file(const std::string &what, const std::string &hint) {
    const std::string reason = std::strerror(errno);
    return {ExitCode::Host, "cannot " + what + ": " + reason + "; " + hint};
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

} // namespace iodbg
