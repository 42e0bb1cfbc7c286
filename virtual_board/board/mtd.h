#pragma once
// The kernel's side of the flash partitions: what reads, writes and ioctls of /dev/mtdN do. Each
// counts against the fault rules and is recorded. The caller holds the board's lock; where flash
// takes its time, others are let in while the chip works.

#include "virtual_board/board/driver.h"
#include "virtual_board/board/folder.h"

#include <cstddef>

namespace vb {

/** The time in which the chip works. */
struct ChipTime {
    void *context;
    /** Lets it pass; false when the board is gone then. */
    bool (*pass)(void *context, uint64_t ns);
};

/** A request to a partition, and who sends it. */
struct MtdRequest {
    const BoardFolder &folder;
    Sender sender;
    uint32_t index; // of the partition
    ChipTime time;
};

/** How a request went. */
struct MtdAnswer {
    int error;       // errno, or 0
    uint32_t value;  // bytes transferred; whether a block is bad; how many are
    bool isPowerCut; // the power went while it was carried out: the process ends here
};

// Transfers at a position of the device, which may lie anywhere.
MtdAnswer mtdRead(const MtdRequest &request, uint64_t offset, uint8_t *data, size_t length);
MtdAnswer mtdWrite(const MtdRequest &request, uint64_t offset, const uint8_t *data, size_t length);

/** canWrite: whether the descriptor was opened for writing. */
MtdAnswer mtdErase(const MtdRequest &request, bool canWrite, uint64_t offset, uint64_t length);

/** The geometry is the partition's; only whether it can be asked for is answered. */
MtdAnswer mtdInfo(const MtdRequest &request);
MtdAnswer mtdIsBad(const MtdRequest &request, int64_t offset);
MtdAnswer mtdMarkBad(const MtdRequest &request, bool canWrite, int64_t offset);
/** The partition's statistics, asked for by a request of some code: how many blocks are bad. */
MtdAnswer mtdStatistics(const MtdRequest &request, uint32_t code);
/** A request that the driver does not know. */
MtdAnswer mtdOther(const MtdRequest &request, uint32_t code);

} // namespace vb
