#include "iodbg/flash/work.h"

#include "iodbg/core/library_calls.h"

#include <algorithm>

namespace iodbg {

namespace {

// What the steps take at least, roughly: blocks are erased in milliseconds, pages written in one.
constexpr uint32_t kEraseMs = 20;
constexpr uint32_t kBytesPerMsWritten = 512;
constexpr uint32_t kBytesPerMsRead = 4096;

enum Step : size_t { kErase, kWrite, kCompare };

uint32_t blocksOf(const FlashPartition &partition) {
    return static_cast<uint32_t>(partition.size() / partition.blockSize());
}

std::vector<WorkStep> stepsFor(const FlashPartition &partition, uint64_t size) {
    return {{"erase the partition", blocksOf(partition) * kEraseMs},
            {"write the file", msFor(size, kBytesPerMsWritten)},
            {"read back and compare", msFor(size, kBytesPerMsRead)}};
}

} // namespace

PartitionWork::PartitionWork(Console &console, const std::string &task,
                             const FlashPartition &partition, const Content &content)
    : progress_(console, task, stepsFor(partition, content.size())), partition_(partition),
      content_(content) {}

int32_t PartitionWork::write(const std::function<int32_t()> &call) {
    progress_.reach(kErase, 0);
    uint64_t written = 0;
    const WriteWatch watch([&](size_t bytes) {
        if (bytes != partition_.pageSize())
            return; // a message
        written += bytes;
        progress_.reach(kWrite, msFor(written, kBytesPerMsWritten));
    });
    return call();
}

std::string PartitionWork::readBack() {
    progress_.reach(kCompare, 0);
    comparison_ = compare(partition_, content_, Layout::Straight, [this](uint64_t bytes) {
        progress_.reach(kCompare, msFor(bytes, kBytesPerMsRead));
    });
    progress_.hide(); // the result is printed next
    return comparison_.first ? differenceText(partition_, content_, comparison_)
                             : "what was read back is the whole file";
}

void PartitionWork::requireSame(const std::string &next) const {
    if (comparison_.first)
        throw Failure(ExitCode::ReadBack, partition_.device() + " reads back differently: " +
                                              differenceText(partition_, content_, comparison_) +
                                              "; " + next);
}

} // namespace iodbg
