// The memory by which traced programs hand over what they send.

#include "tracer/ring.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <thread>
#include <vector>

namespace {

using language::TraceRecord;
using tracer::kRingSlots;
using tracer::Ring;

class RingTest : public ::testing::Test {
  protected:
    bool push(uint32_t number, int32_t pid = 1) const {
        TraceRecord record = {};
        record.pid = pid;
        record.offset = number;
        return ring_->push(record);
    }

    /** The number of the next request; -1 when there is none, -2 when somebody is at it. */
    int64_t take() const {
        TraceRecord record = {};
        switch (ring_->take(record)) {
        case Ring::Next::Taken:
            return record.offset;
        case Ring::Next::None:
            return -1;
        case Ring::Next::Unfinished:
            break;
        }
        return -2;
    }

    std::unique_ptr<Ring> ring_ = std::make_unique<Ring>();
};

TEST_F(RingTest, MemoryOfZerosIsEmpty) {
    EXPECT_EQ(take(), -1);
}

TEST_F(RingTest, GivesThemInTheirOrderRoundForRound) {
    for (uint32_t round = 0; round < 3 * kRingSlots; round += 7) {
        for (uint32_t i = 0; i < 7; ++i)
            EXPECT_TRUE(push(round + i));
        for (uint32_t i = 0; i < 7; ++i)
            EXPECT_EQ(take(), round + i);
        EXPECT_EQ(take(), -1);
    }
}

TEST_F(RingTest, TakesNoMoreThanItHolds) {
    for (uint32_t i = 0; i < kRingSlots; ++i)
        ASSERT_TRUE(push(i));
    EXPECT_FALSE(push(kRingSlots));
    EXPECT_EQ(take(), 0);
    EXPECT_TRUE(push(kRingSlots));
    EXPECT_FALSE(push(kRingSlots + 1));
    for (uint32_t i = 1; i <= kRingSlots; ++i)
        ASSERT_EQ(take(), i);
    EXPECT_EQ(take(), -1);
}

TEST_F(RingTest, OneThatNobodyFinishesIsPassedOver) {
    push(1);
    // As a process leaves it that is killed between its two steps.
    char *slots = reinterpret_cast<char *>(ring_.get() + 1) - kRingSlots * sizeof(tracer::Slot);
    auto *first = static_cast<std::atomic<uint32_t> *>(static_cast<void *>(slots));
    first->store(0);
    push(2);
    EXPECT_EQ(take(), -2);
    EXPECT_EQ(take(), -2);
    ring_->passOver();
    EXPECT_EQ(ring_->lost.load(), 1u);
    EXPECT_EQ(take(), 2);
    EXPECT_EQ(take(), -1);
    for (uint32_t i = 0; i < kRingSlots; ++i)
        ASSERT_TRUE(push(i));
    EXPECT_FALSE(push(0));
    for (uint32_t i = 0; i < kRingSlots; ++i)
        ASSERT_EQ(take(), i);
}

TEST_F(RingTest, ManyWriteAndNoneIsMissing) {
    constexpr uint32_t kEach = 20000;
    constexpr int32_t kWriters = 4;
    std::vector<std::thread> writers;
    for (int32_t writer = 1; writer <= kWriters; ++writer) {
        writers.emplace_back([this, writer] {
            for (uint32_t i = 0; i < kEach; ++i) {
                while (!push(i, writer))
                    std::this_thread::yield();
            }
        });
    }
    std::map<int32_t, uint32_t> next;
    for (uint32_t taken = 0; taken < kWriters * kEach;) {
        TraceRecord record = {};
        if (ring_->take(record) != Ring::Next::Taken) {
            std::this_thread::yield();
            continue;
        }
        EXPECT_EQ(record.offset, next[record.pid]++);
        ++taken;
    }
    for (std::thread &writer : writers)
        writer.join();
    EXPECT_EQ(take(), -1);
}

} // namespace
