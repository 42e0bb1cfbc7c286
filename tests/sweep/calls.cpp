#include "tests/sweep/calls.h"

#include "bsp.h"
#include "tests/support/recorder.h"
#include "virtual_board/os/seam.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace {

using sweep::Failure;
using sweep::Outcome;

constexpr int32_t kRefused = -5; // the kernel module's own code
constexpr int kExitStatus1 = 1 << 8;
constexpr int64_t kAllButOne = -1000; // bytes of a transfer
constexpr int64_t kByDriver = -1001;  // it takes the request, and refuses what it asks for

/** A way in which a call fails. */
struct Way {
    int64_t result;
    int error = 0;
};

struct Kind {
    const char *function;
    std::vector<Way> ways;
};

const Kind kKinds[] = {
    {"open", {{-1, EMFILE}}},
    {"close", {{-1, EIO}}},
    {"fcntl", {{-1, ENOLCK}}},
    {"flock", {{-1, ENOLCK}}},
    {"ioctl", {{-1, EIO}}},
    {"read", {{-1, EIO}, {0}, {kAllButOne}}},
    {"write", {{-1, EIO}, {0}, {kAllButOne}}},
    {"lseek", {{-1, EINVAL}}},
    {"stat", {{-1, EACCES}}},
    {"fopen", {{0, EMFILE}}},
    {"fread", {{0}, {kAllButOne}}},
    {"fgets", {{0, EIO}}},
    {"fclose", {{EOF, EIO}}},
    {"malloc", {{0}}},
    {"calloc", {{0}}},
    {"system", {{-1, EAGAIN}, {kExitStatus1}}}, // no process could be made; the command failed
    {"mmap", {{-1, EPERM}}},
    {"munmap", {{-1, EINVAL}}},
    {"clock_settime", {{-1, EPERM}}},
};
const std::vector<Way> kOfDriver = {{-1, EIO}, {kByDriver}};

Failure askedFailure;
Outcome currentRun;
std::optional<Recorder> recorder;

/** Counts a call, and tells the way in which it is to fail, if it is. */
std::optional<uint32_t> wayOf(const char *name, uint32_t ways) {
    ++currentRun.calls;
    const bool isNth = currentRun.calls == askedFailure.nth;
    if (isNth) {
        currentRun.ways = ways;
        currentRun.failedCall = name;
    }
    if (!isNth &&
        (!askedFailure.stays || askedFailure.nth == 0 || currentRun.calls < askedFailure.nth))
        return std::nullopt;
    return askedFailure.way < ways ? askedFailure.way : 0;
}

/** No sleep fails, but the MDIO controller may do its work meanwhile, or not, or wrongly. */
std::optional<int64_t> slept() {
    if (libraryHas.mappings.empty())
        return std::nullopt;
    vb::MdioState &controller = vb::attachedFolder()->board()->devices.mdio.state;
    if (controller == vb::MdioState::Stuck)
        return 0; // for good: thousands of polls need not ask
    constexpr vb::MdioState kStates[] = {vb::MdioState::Stuck, vb::MdioState::Error};
    if (const auto way = wayOf("controller", std::size(kStates)))
        controller = kStates[*way];
    return std::nullopt;
}

bool isForDriver(const SystemCall &call) {
    return call.request >= BSP_REQ_CPLD_READ && call.request <= BSP_REQ_CPLD_UPGRADE;
}

std::optional<int64_t> failed(const SystemCall &call) {
    if (call.is("usleep"))
        return slept();
    const Kind *kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                    [&](const Kind &known) { return call.is(known.function); });
    if (kind == std::end(kKinds))
        return std::nullopt;
    const std::vector<Way> &ways = isForDriver(call) ? kOfDriver : kind->ways;
    const auto number = wayOf(call.function, static_cast<uint32_t>(ways.size()));
    if (!number)
        return std::nullopt;
    const Way &way = ways[*number];
    if (way.result == kAllButOne)
        return static_cast<int64_t>(call.size) - 1;
    if (way.result == kByDriver) {
        static_cast<BspIoctlRecord *>(call.argument)->result = kRefused;
        return 0;
    }
    errno = way.error;
    return way.result;
}

} // namespace

// The seam's own, not the library's.
extern "C" int wrappedYield() __asm__("__wrap_sched_yield");

void sweep::begin(const Failure &wanted) {
    askedFailure = wanted;
    currentRun = {};
    libraryHas = {};
    recorder.emplace().before = failed;
}

Outcome sweep::end() {
    recorder.reset();
    currentRun.left = libraryHas;
    return currentRun;
}

// Nobody else is on the board to yield to. On a busy machine each of some hundred thousand sleeps
// would cost a time slice.
int wrappedYield() {
    return 0;
}
