// The way of the requests to iodbg, which has made the memory for them.

#include "tracer/recorder.h"

#include "tracer/device_files.h"
#include "tracer/ring.h"
#include "virtual_board/board/kernel.h"
#include "virtual_board/os/next.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

namespace tracer {

namespace {

namespace kernel = vb::kernel;

Ring *ring = nullptr; // never given back: programs come here before and after main

/** Waits until the reader has made room; not once somebody has waited in vain. */
bool awaitRoom() {
    constexpr int kTries = 100;
    constexpr uint64_t kPauseNs = 10000000;
    for (int i = 0; i < kTries; ++i) {
        const uint32_t taken = ring->taken.load();
        if (ring->stalled.load() != 0 || !kernel::isProcess(ring->reader))
            return false;
        kernel::waitForChange(reinterpret_cast<const uint32_t *>(&ring->taken), taken, kPauseNs);
        if (ring->taken.load() != taken)
            return true;
    }
    ring->stalled.store(1);
    return false;
}

void complain(const char *path, const char *reason) {
    std::fprintf(stderr, "iodbg: what %s sends to the board is not recorded: %s: %s\n",
                 program_invocation_short_name, path, reason);
}

bool isRing(int file) {
    struct statx info = {};
    return kernel::call(SYS_statx, file, "", AT_EMPTY_PATH, STATX_SIZE, &info) == 0 &&
           info.stx_size == sizeof(Ring);
}

/** Maps the memory that the environment names. */
Ring *openRing(const char *path) {
    const int file = kernel::open(path, O_RDWR);
    if (file < 0) {
        complain(path, std::strerror(errno));
        return nullptr;
    }
    void *memory = MAP_FAILED;
    if (isRing(file))
        memory = mmap(nullptr, sizeof(Ring), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    kernel::close(file);
    auto *opened = memory != MAP_FAILED ? static_cast<Ring *>(memory) : nullptr;
    if (opened != nullptr && opened->mark == kRingMark)
        return opened;
    complain(path, "it is not this version's");
    return nullptr;
}

__attribute__((constructor)) void start() {
    vb::findNextDefinitions();
    const char *path = std::getenv(kRingVariable);
    if (path == nullptr || *path == '\0')
        return;
    const int savedErrno = errno;
    learnDevices();
    ring = openRing(path);
    errno = savedErrno;
}

} // namespace

bool isRecording() {
    return ring != nullptr;
}

TraceRecord begun(TraceKind kind) {
    TraceRecord record = {};
    const uint64_t now = kernel::clockNow(CLOCK_MONOTONIC);
    record.timeNs = now > ring->startNs ? now - ring->startNs : 0;
    record.pid = getpid();
    record.kind = kind;
    return record;
}

void record(const TraceRecord &record) {
    const int savedErrno = errno;
    bool isTaken = ring->push(record);
    while (!isTaken && awaitRoom())
        isTaken = ring->push(record);
    if (!isTaken)
        ++ring->lost;
    errno = savedErrno;
}

void setPath(TraceRecord &record, const char *path) {
    std::strncpy(reinterpret_cast<char *>(record.data), path, sizeof(record.data) - 1);
}

} // namespace tracer
