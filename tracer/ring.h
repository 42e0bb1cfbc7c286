#pragma once
// The memory that a traced program and iodbg share: requests on their way to whoever tells them.
// Many write, threads and processes, one reads. Nobody holds a lock, so that signal handlers,
// children of vfork and processes that are killed leave it in order.

#include "language/trace_record.h"

#include <atomic>
#include <cstdint>

namespace tracer {

constexpr char kRingVariable[] =
    "IODBG_TRACE"; // the path of the memory, in a program's environment
constexpr char kLibrary[] = "libbsp-trace.so.1";

constexpr uint32_t kRingMark = 0x62740001; // and its layout
constexpr uint32_t kRingSlots = 8192;      // a power of two

static_assert(std::atomic<uint32_t>::is_always_lock_free);

/** One request, and whose turn it is: memory of zeros is an empty ring. */
struct Slot {
    std::atomic<uint32_t> turn;
    language::TraceRecord record;
};

class Ring {
  public:
    uint32_t mark;
    int32_t reader;              // its process
    alignas(8) uint64_t startNs; // from which times are counted

    std::atomic<uint32_t> lost;    // for want of room
    std::atomic<uint32_t> stalled; // somebody has waited for room in vain
    std::atomic<uint32_t> taken;   // how many the reader has taken: who waits is woken by it

    /** Hands a request over; false when there is no room. */
    bool push(const language::TraceRecord &record) {
        uint32_t place = head_.load(std::memory_order_relaxed);
        for (;;) {
            const auto ahead = static_cast<int32_t>(
                slotAt(place).turn.load(std::memory_order_acquire) - firstTurn(place));
            if (ahead < 0)
                return false;
            if (ahead > 0)
                place = head_.load(std::memory_order_relaxed);
            else if (head_.compare_exchange_weak(place, place + 1, std::memory_order_relaxed))
                break;
        }
        Slot &slot = slotAt(place);
        slot.record = record;
        // One that was stopped here for so long that the reader has passed over it comes too late.
        uint32_t turn = firstTurn(place);
        slot.turn.compare_exchange_strong(turn, turn + 1, std::memory_order_release);
        return true;
    }

    enum class Next { Taken, Unfinished, None };

    /** Takes the oldest; Unfinished: somebody has begun to hand it over. */
    Next take(language::TraceRecord &record) {
        Slot &slot = slotAt(tail_);
        if (slot.turn.load(std::memory_order_acquire) != firstTurn(tail_) + 1)
            return head_.load(std::memory_order_relaxed) == tail_ ? Next::None : Next::Unfinished;
        record = slot.record;
        slot.turn.store(firstTurn(tail_) + kRingSlots, std::memory_order_release);
        ++tail_;
        return Next::Taken;
    }

    /** Gives up the oldest, which nobody will finish. */
    void passOver() {
        uint32_t turn = firstTurn(tail_);
        if (slotAt(tail_).turn.compare_exchange_strong(turn, turn + kRingSlots)) {
            ++tail_;
            ++lost;
        }
    }

  private:
    /** A slot's turn in a round, when it is free. */
    static constexpr uint32_t firstTurn(uint32_t place) { return place & ~(kRingSlots - 1); }
    Slot &slotAt(uint32_t place) { return slots_[place % kRingSlots]; }

    std::atomic<uint32_t> head_;
    uint32_t tail_; // the reader's
    Slot slots_[kRingSlots];
};

} // namespace tracer
