// What iodbg takes for a frame of the PoE controller among the requests that pass.

#include "iodbg/poe/wire.h"

#include "bsp.h"
#include "poe/rtl8239/guide.h"

#include <array>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace {

using iodbg::ByteView;
using iodbg::PoeDirection;

using Frame = std::array<uint8_t, 12>;

constexpr Frame kFrame = {0x49, 0x11, 5, 6, 0, 0xE1, 3, 0xFF, 0xFF, 0xFF, 0xFF, 0x45};

/** A record as the library makes it of a transfer. */
BspIoctlRecord recordOf(const Frame &frame) {
    BspIoctlRecord record{};
    record.slot[0] = 16;
    record.slot[1] = 0x20;
    record.slot[4] = reinterpret_cast<uintptr_t>(frame.data());
    record.slot[5] = frame.size();
    return record;
}

TEST(PoeTrafficTest, TransfersOfTheControllerAreFrames) {
    const BspIoctlRecord record = recordOf(kFrame);
    const auto sent = iodbg::poeTrafficOf(BSP_REQ_I2C_WRITE, &record);
    ASSERT_TRUE(sent.has_value());
    EXPECT_EQ(sent->direction, PoeDirection::ToController);
    EXPECT_EQ(sent->frame.data(), kFrame.data());
    EXPECT_EQ(sent->frame.size(), kFrame.size());
    const auto read = iodbg::poeTrafficOf(BSP_REQ_I2C_READ, &record);
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->direction, PoeDirection::FromController);
}

TEST(PoeTrafficTest, AllElseIsNot) {
    const auto isTraffic = [](BspIoctlRecord record) {
        return iodbg::poeTrafficOf(BSP_REQ_I2C_READ, &record).has_value();
    };
    const BspIoctlRecord good = recordOf(kFrame);
    EXPECT_TRUE(isTraffic(good));
    BspIoctlRecord record = good;
    record.slot[0] = 0; // another bus
    EXPECT_FALSE(isTraffic(record));
    record = good;
    record.slot[1] = 0x58; // another device
    EXPECT_FALSE(isTraffic(record));
    record = good;
    record.result = -5; // nothing was carried
    EXPECT_FALSE(isTraffic(record));
    record = good;
    record.slot[4] = 0;
    EXPECT_FALSE(isTraffic(record));
    for (const uint64_t length : {uint64_t{65}, uint64_t{UINT32_MAX}, UINT64_MAX}) {
        record = good;
        record.slot[5] = length;
        EXPECT_FALSE(isTraffic(record)) << length;
    }
    EXPECT_FALSE(iodbg::poeTrafficOf(BSP_REQ_I2C_READ, nullptr).has_value());
    for (const unsigned long request :
         {static_cast<unsigned long>(BSP_REQ_CPLD_READ),
          static_cast<unsigned long>(BSP_REQ_GPIO_READ), static_cast<unsigned long>(FIONREAD)})
        EXPECT_FALSE(iodbg::poeTrafficOf(request, &good).has_value()) << request;
}

/** The last bytes before memory that cannot be read. */
class LastBytes {
  public:
    LastBytes() : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))) {
        memory_ =
            mmap(nullptr, 2 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory_ == MAP_FAILED || mprotect(end(), page_, PROT_NONE) != 0)
            throw std::runtime_error("no memory");
    }
    LastBytes(const LastBytes &) = delete;
    LastBytes &operator=(const LastBytes &) = delete;
    ~LastBytes() { munmap(memory_, 2 * page_); }

    template <typename Type>
    Type *as() const {
        return static_cast<Type *>(static_cast<void *>(end() - sizeof(Type)));
    }

  private:
    uint8_t *end() const { return static_cast<uint8_t *>(memory_) + page_; }

    size_t page_;
    void *memory_ = nullptr;
};

TEST(PoeTrafficTest, OnlyTheLibrarysRequestsHaveARecordBehindThem) {
    const LastBytes memory;
    const int *argument = memory.as<int>(); // as long as the argument of FIONREAD is
    EXPECT_FALSE(iodbg::poeTrafficOf(FIONREAD, argument).has_value());
    EXPECT_FALSE(iodbg::poeTrafficOf(TIOCGWINSZ, argument).has_value());
}

TEST(PoeTrafficTest, RequestsOfOthersPassAWatch) {
    const LastBytes memory;
    int *count = memory.as<int>();
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], "abc", 3), 3);
    bool isTold = false;
    const iodbg::PoeWatch watch([&isTold](PoeDirection, ByteView) { isTold = true; });
    EXPECT_EQ(ioctl(ends[0], FIONREAD, count), 0);
    EXPECT_EQ(*count, 3);
    EXPECT_FALSE(isTold);
    close(ends[0]);
    close(ends[1]);
}

bool isWhole(ByteView frame) {
    return bsp::rtl8239::kGuide.isAnswer(kFrame, frame);
}

TEST(PoeFrameTest, LengthAndSumMakeAFrame) {
    EXPECT_TRUE(isWhole(kFrame));
    for (size_t i = 0; i < kFrame.size(); ++i) {
        Frame frame = kFrame;
        frame[i] ^= 0x10;
        EXPECT_FALSE(isWhole(frame)) << i;
    }
    EXPECT_FALSE(isWhole({}));
    EXPECT_FALSE(isWhole(ByteView(kFrame).first(11)));
    const std::vector<uint8_t> longer(13, 0);
    EXPECT_FALSE(isWhole(longer));
    const Frame silence = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_FALSE(isWhole(silence));
}

TEST(PoeEchoTest, AnAnswerRepeatsCommandAndSequence) {
    iodbg::PoeEcho echo(bsp::rtl8239::kGuide);
    const Frame question = {0x49, 0x11, 5};
    echo.sent(question);
    EXPECT_TRUE(echo.isAnsweredBy(kFrame));
    for (const size_t place : {0u, 1u}) {
        Frame other = kFrame;
        ++other[place];
        ++other.back(); // a whole frame, but of another question
        ASSERT_TRUE(bsp::rtl8239::kGuide.isAnswer(other, other));
        EXPECT_FALSE(echo.isAnsweredBy(other)) << place;
    }
    EXPECT_FALSE(echo.isAnsweredBy(ByteView(kFrame).first(1)));
    echo.sent(ByteView(question).first(1)); // no frame: nothing is read behind it
    EXPECT_TRUE(echo.isAnsweredBy(kFrame));
}

} // namespace
