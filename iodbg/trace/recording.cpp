#include "iodbg/trace/recording.h"

#include "iodbg/core/failure.h"

#include <algorithm>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace iodbg {

namespace {

using Sleep = int(const timespec *, timespec *);

constexpr std::chrono::seconds kPatience(2); // with a process that was killed in the midst

[[noreturn]] void failWithoutMemory() {
    throw Failure::file("make memory for the trace", "end other programs, then try again");
}

tracer::Ring *mapRing(int memory) {
    // All of it at once: a program that finds none left would be killed.
    if (posix_fallocate(memory, 0, sizeof(tracer::Ring)) != 0)
        failWithoutMemory();
    void *mapped =
        mmap(nullptr, sizeof(tracer::Ring), PROT_READ | PROT_WRITE, MAP_SHARED, memory, 0);
    if (mapped == MAP_FAILED)
        failWithoutMemory();
    return static_cast<tracer::Ring *>(mapped);
}

uint64_t monotonicNs() {
    constexpr uint64_t kNsPerSecond = 1000000000;
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * kNsPerSecond + static_cast<uint64_t>(now.tv_nsec);
}

/** The C library's own way to sleep, past whatever stands before it. */
Sleep *ownSleep() {
    void *library = dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD);
    void *found = library != nullptr ? dlsym(library, "nanosleep") : nullptr;
    return found != nullptr ? reinterpret_cast<Sleep *>(found) : nanosleep;
}

} // namespace

void pauseOnHost() {
    constexpr timespec kMoment = {0, 20000000};
    static Sleep *const sleep = ownSleep();
    sleep(&kMoment, nullptr);
}

Recording::Recording()
    : memory_(memfd_create("iodbg-trace", MFD_CLOEXEC)), ring_(mapRing(memory_.get())) {
    ring_->mark = tracer::kRingMark;
    ring_->reader = getpid();
    ring_->startNs = monotonicNs();
}

Recording::~Recording() {
    munmap(ring_, sizeof(tracer::Ring));
}

std::string Recording::path() const {
    return "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(memory_.get());
}

std::optional<language::TraceRecord> Recording::taken(const language::TraceRecord &record) {
    unfinishedSince_.reset();
    ++ring_->taken;
    ring_->stalled.store(0);
    syscall(SYS_futex, &ring_->taken, FUTEX_WAKE, INT32_MAX, nullptr, nullptr, 0);
    // Programs can write anything there.
    language::TraceRecord whole = record;
    whole.kind = std::min(whole.kind, language::TraceKind::Damaged);
    whole.stored = std::min(whole.stored, language::kTraceDataSize);
    if (whole.stored == 0)
        whole.data[language::kTraceDataSize - 1] = '\0';
    return whole;
}

std::optional<language::TraceRecord> Recording::take() {
    language::TraceRecord record;
    switch (ring_->take(record)) {
    case tracer::Ring::Next::Taken:
        return taken(record);
    case tracer::Ring::Next::None:
        unfinishedSince_.reset();
        break;
    case tracer::Ring::Next::Unfinished:
        if (!unfinishedSince_.has_value())
            unfinishedSince_ = Clock::now();
        if (Clock::now() - *unfinishedSince_ > kPatience) {
            ring_->passOver();
            unfinishedSince_.reset();
        }
        break;
    }
    return std::nullopt;
}

std::optional<language::TraceRecord> Recording::takeLast() {
    language::TraceRecord record;
    tracer::Ring::Next next = ring_->take(record);
    for (; next == tracer::Ring::Next::Unfinished; next = ring_->take(record))
        ring_->passOver();
    return next == tracer::Ring::Next::Taken ? taken(record) : std::nullopt;
}

} // namespace iodbg
