#pragma once
// A request between the driver, which takes it apart, and the devices, which it is for.

#include "virtual_board/board/driver.h"
#include "virtual_board/board/faults.h"
#include "virtual_board/board/trace.h"

#include <cstdint>

namespace vb {

/** A request on its way through the driver. */
struct Request {
    Board &board;
    BspIoctlRecord &record;
    TraceRecord &trace;
    const FaultRule *fault; // what goes wrong with it, or null
    const FileFound &file;

    bool has(FaultEffect effect) const { return fault != nullptr && fault->effect == effect; }
};

/** The lower half of a slot, which most are. */
constexpr uint32_t slotWord(const BspIoctlRecord &record, unsigned slot) {
    return static_cast<uint32_t>(record.slot[slot]);
}

/** User memory at the address in a slot; null when the process can have nothing there. */
void *userMemory(uint64_t slot);

/** Has the devices answer a request of a known kind; its result word. */
int32_t serveDevice(Request &request);

} // namespace vb
