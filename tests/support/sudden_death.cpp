#include "tests/support/sudden_death.h"

#include "bsp.h"
#include "tests/support/recorder.h"

#include <csignal>

namespace {

std::optional<Recorder> watching;

std::optional<LibraryCall> kindOf(const SystemCall &call) {
    if (call.is("flock"))
        return call.text().starts_with("un") ? LibraryCall::Unlock : LibraryCall::Lock;
    if (call.is("write"))
        return LibraryCall::Store;
    if (call.is("sleep") || call.is("usleep"))
        return LibraryCall::Sleep;
    if (call.is("ioctl") && call.request == BSP_REQ_I2C_WRITE)
        return LibraryCall::Send;
    if (call.is("ioctl") && call.request == BSP_REQ_I2C_READ)
        return LibraryCall::Fetch;
    return std::nullopt;
}

} // namespace

void watchCalls(const std::function<bool(LibraryCall)> &diesBefore) {
    watching.emplace().before = [diesBefore](const SystemCall &call) -> std::optional<int64_t> {
        if (const auto kind = kindOf(call); kind && diesBefore(*kind))
            raise(SIGKILL);
        return std::nullopt;
    };
}

void ignoreCalls() {
    watching.reset();
}
