// EEPROM transfers: chunks, pauses, limits.

#include "bsp.h"
#include "tests/identity/records.h"
#include "tests/support/virtual_board_test.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace {

constexpr uint64_t kMs = 1000000;

struct TransferCase {
    uint32_t offset, len;
    Lines chunks;
};

class EepromTest : public VirtualBoardTest {
  protected:
    void SetUp() override {
        VirtualBoardTest::SetUp();
        for (uint32_t i = 0; i < kSize; ++i)
            devices().eeprom.bytes[i] = static_cast<uint8_t>(i * 7 + i / 256);
    }

    /** The requests of a transfer: each chunk and the pause behind it. */
    static Lines paused(const std::string &operation, const Lines &chunks) {
        Lines lines;
        for (const std::string &chunk : chunks) {
            lines.push_back(operation + chunk);
            lines.push_back("sleep 1000 us");
        }
        return lines;
    }

    static constexpr uint32_t kSize = 1024;
};

// A read is cut after 16 bytes and where a block ends: block n answers at address 0x50 + n.
TEST_F(EepromTest, ReadsInChunksOf16ThatEndWithTheBlock) {
    const TransferCase cases[] = {
        {0, 1, {"dev 0x50 off 0x00 len 1"}},
        {0, 16, {"dev 0x50 off 0x00 len 16"}},
        {0, 17, {"dev 0x50 off 0x00 len 16", "dev 0x50 off 0x10 len 1"}},
        {10, 20, {"dev 0x50 off 0x0A len 16", "dev 0x50 off 0x1A len 4"}},
        {240, 16, {"dev 0x50 off 0xF0 len 16"}},
        {241, 16, {"dev 0x50 off 0xF1 len 15", "dev 0x51 off 0x00 len 1"}},
        {250,
         40,
         {"dev 0x50 off 0xFA len 6", "dev 0x51 off 0x00 len 16", "dev 0x51 off 0x10 len 16",
          "dev 0x51 off 0x20 len 2"}},
        {255, 2, {"dev 0x50 off 0xFF len 1", "dev 0x51 off 0x00 len 1"}},
        {256, 2, {"dev 0x51 off 0x00 len 2"}},
        {767, 2, {"dev 0x52 off 0xFF len 1", "dev 0x53 off 0x00 len 1"}},
        {1008, 16, {"dev 0x53 off 0xF0 len 16"}},
        {1023, 1, {"dev 0x53 off 0xFF len 1"}},
    };
    for (const TransferCase &expected : cases) {
        SCOPED_TRACE(expected.offset);
        std::vector<uint8_t> buf(expected.len + 1, 0xA5);
        const uint64_t start = now();
        EXPECT_EQ(
            answerOf([&] { return bspLocalEepromRead(expected.offset, buf.data(), expected.len); }),
            Answer{BSP_OK});
        Bytes content = bytesAt(devices().eeprom, expected.offset, expected.len);
        content.push_back(0xA5);
        EXPECT_EQ(buf, content);
        EXPECT_EQ(now() - start, expected.chunks.size() * kMs);
        EXPECT_EQ(withoutData(trace()), paused("I2C read  bus 0 ch 0 ", expected.chunks));
    }
}

// A write that crossed a 16-byte page would wrap to the page's start in the chip.
TEST_F(EepromTest, WritesInChunksThatEndWithThePage) {
    const TransferCase cases[] = {
        {0, 1, {"dev 0x50 off 0x00 len 1"}},
        {0, 16, {"dev 0x50 off 0x00 len 16"}},
        {16, 17, {"dev 0x50 off 0x10 len 16", "dev 0x50 off 0x20 len 1"}},
        {10, 20, {"dev 0x50 off 0x0A len 6", "dev 0x50 off 0x10 len 14"}},
        {8, 16, {"dev 0x50 off 0x08 len 8", "dev 0x50 off 0x10 len 8"}},
        {15, 1, {"dev 0x50 off 0x0F len 1"}},
        {15, 2, {"dev 0x50 off 0x0F len 1", "dev 0x50 off 0x10 len 1"}},
        {250,
         40,
         {"dev 0x50 off 0xFA len 6", "dev 0x51 off 0x00 len 16", "dev 0x51 off 0x10 len 16",
          "dev 0x51 off 0x20 len 2"}},
        {255, 2, {"dev 0x50 off 0xFF len 1", "dev 0x51 off 0x00 len 1"}},
        {512, 3, {"dev 0x52 off 0x00 len 3"}},
        {1020, 4, {"dev 0x53 off 0xFC len 4"}},
        {1023, 1, {"dev 0x53 off 0xFF len 1"}},
    };
    for (const TransferCase &expected : cases) {
        SCOPED_TRACE(expected.offset);
        Bytes content = bytesAt(devices().eeprom, 0, kSize);
        std::vector<uint8_t> buf(expected.len);
        std::iota(buf.begin(), buf.end(), static_cast<uint8_t>(expected.offset + 100));
        std::copy(buf.begin(), buf.end(), content.data() + expected.offset);
        const uint64_t start = now();
        EXPECT_EQ(answerOf([&] {
                      return bspLocalEepromWrite(expected.offset, buf.data(), expected.len);
                  }),
                  Answer{BSP_OK});
        EXPECT_EQ(bytesAt(devices().eeprom, 0, kSize), content);
        EXPECT_EQ(now() - start, expected.chunks.size() * kMs);
        EXPECT_EQ(withoutData(trace()), paused("I2C write bus 0 ch 0 ", expected.chunks));
    }
}

TEST_F(EepromTest, TransfersTheWholeChip) {
    std::vector<uint8_t> buf(kSize);
    EXPECT_EQ(bspLocalEepromRead(0, buf.data(), kSize), BSP_OK);
    EXPECT_EQ(buf, bytesAt(devices().eeprom, 0, kSize));
    EXPECT_EQ(requests().size(), 64u);
    EXPECT_EQ(now(), 64 * kMs);

    std::reverse(buf.begin(), buf.end());
    EXPECT_EQ(bspLocalEepromWrite(0, buf.data(), kSize), BSP_OK);
    EXPECT_EQ(buf, bytesAt(devices().eeprom, 0, kSize));
    EXPECT_EQ(requests().size(), 64u);
    EXPECT_EQ(now(), 128 * kMs);
}

/** A transfer function with everything but offset, buffer and length chosen. */
struct Transfer {
    const char *name;
    std::function<int32_t(uint32_t offset, uint8_t *buf, uint32_t len)> call;
};

const Transfer kTransfers[] = {
    {"bspI2cEepromRead",
     [](uint32_t offset, uint8_t *buf, uint32_t len) {
         return bspI2cEepromRead(0, 0, 0x50, offset, buf, len);
     }},
    {"bspI2cEepromWrite",
     [](uint32_t offset, uint8_t *buf, uint32_t len) {
         return bspI2cEepromWrite(0, 0, 0x50, offset, buf, len);
     }},
    {"bspLocalEepromRead", bspLocalEepromRead},
    {"bspLocalEepromWrite", bspLocalEepromWrite},
    {"bspPowerEepromRead", [](uint32_t offset, uint8_t *buf,
                              uint32_t len) { return bspPowerEepromRead(1, offset, buf, len); }},
    {"bspPowerEepromWrite", [](uint32_t offset, uint8_t *buf,
                               uint32_t len) { return bspPowerEepromWrite(2, offset, buf, len); }},
};

TEST_F(EepromTest, RefusesASpanBeyondTheLastBlockBeforeAnythingIsSent) {
    const struct {
        uint32_t offset, len;
    } cases[] = {
        {1023, 2},
        {1024, 1},
        {1025, 1},
        {0, 1025},
        {512, 513},
        // sums that wrap around in 32 bits
        {0xFFFFFFFF, 1},
        {0xFFFFFFFF, 2},
        {1, 0xFFFFFFFF},
        {16, 0xFFFFFFFF},
        {0x80000000, 0x80000010},
        {0xFFFFFFFF, 0xFFFFFFFF},
    };
    std::array<uint8_t, 4> buf = {1, 2, 3, 4};
    for (const Transfer &transfer : kTransfers) {
        for (const auto &span : cases) {
            EXPECT_EQ(answerOf([&] { return transfer.call(span.offset, buf.data(), span.len); }),
                      Answer{BSP_E_EEPROM_SPAN})
                << transfer.name << " at " << span.offset;
        }
    }
    EXPECT_EQ(buf, (std::array<uint8_t, 4>{1, 2, 3, 4}));
    EXPECT_EQ(trace(), Lines{});
}

TEST_F(EepromTest, ANullBufferIsReportedUnderTheFunctionsOwnName) {
    for (const Transfer &transfer : kTransfers) {
        const std::string message =
            std::string("ERROR: ") + transfer.name + "(#): ptr buff is NULL.\n";
        EXPECT_EQ(answerOf([&] { return transfer.call(0, nullptr, 4); }),
                  (Answer{BSP_E_NULL, message}));
        EXPECT_EQ(answerOf([&] { return transfer.call(2000, nullptr, 0); }),
                  (Answer{BSP_E_NULL, message}));
    }
    EXPECT_EQ(trace(), Lines{});
}

TEST_F(EepromTest, NoBytesAreTransferredAtOnce) {
    uint8_t byte = 0xA5;
    for (const Transfer &transfer : kTransfers) {
        EXPECT_EQ(answerOf([&] { return transfer.call(0, &byte, 0); }), Answer{BSP_OK});
        EXPECT_EQ(answerOf([&] { return transfer.call(5000, &byte, 0); }), Answer{BSP_OK});
    }
    EXPECT_EQ(byte, 0xA5);
    EXPECT_EQ(trace(), Lines{});
}

TEST_F(EepromTest, WhatWasReadBeforeAFailureStays) {
    for (const int32_t result : {5, -5, 1002}) {
        clearFaults();
        addFault(refuse(vb::FaultDevice::I2c, vb::FaultOp::Read, result, 3));
        std::vector<uint8_t> buf(48, 0xA5);
        const uint64_t start = now();
        EXPECT_EQ(answerOf([&] { return bspLocalEepromRead(64, buf.data(), 48); }),
                  Answer{BSP_E_FAILED});
        Bytes expected = bytesAt(devices().eeprom, 64, 32);
        expected.resize(48, 0xA5);
        EXPECT_EQ(buf, expected);
        EXPECT_EQ(now() - start, 2 * kMs);
        EXPECT_EQ(withoutData(trace()),
                  (Lines{"I2C read  bus 0 ch 0 dev 0x50 off 0x40 len 16", "sleep 1000 us",
                         "I2C read  bus 0 ch 0 dev 0x50 off 0x50 len 16", "sleep 1000 us",
                         "I2C read  bus 0 ch 0 dev 0x50 off 0x60 len 16 -> refused, result " +
                             std::to_string(result)}));
    }
}

TEST_F(EepromTest, WhatWasWrittenBeforeAFailureStays) {
    addFault(refuse(vb::FaultDevice::I2c, vb::FaultOp::Write, 5, 2));
    Bytes expected = bytesAt(devices().eeprom, 0, kSize);
    std::fill_n(expected.begin() + 10, 6, 0xEE);
    std::vector<uint8_t> buf(40, 0xEE);
    EXPECT_EQ(answerOf([&] { return bspLocalEepromWrite(10, buf.data(), 40); }),
              Answer{BSP_E_FAILED});
    EXPECT_EQ(bytesAt(devices().eeprom, 0, kSize), expected);
    EXPECT_EQ(withoutData(trace()),
              (Lines{"I2C write bus 0 ch 0 dev 0x50 off 0x0A len 6", "sleep 1000 us",
                     "I2C write bus 0 ch 0 dev 0x50 off 0x10 len 16 -> refused, result 5"}));
}

TEST_F(EepromTest, AnUnreachableDriverIsAFailedTransferToo) {
    addFault(ioctlFails(vb::FaultDevice::I2c, vb::FaultOp::Read, EIO));
    uint8_t byte = 0xA5;
    EXPECT_EQ(answerOf([&] { return bspLocalEepromRead(0, &byte, 1); }),
              (Answer{BSP_E_FAILED, "ioctl fail, cmd=0x1003\n"}));
    addFault(openFails("/dev/bspHandle", ENOENT));
    EXPECT_EQ(answerOf([&] { return bspLocalEepromWrite(0, &byte, 1); }),
              (Answer{BSP_E_FAILED, "open file /dev/bspHandle fail\n"}));
    EXPECT_EQ(byte, 0xA5);
}

TEST_F(EepromTest, ReachesAnyBusChannelAndDevice) {
    uint8_t byte = 0;
    EXPECT_EQ(bspI2cEepromRead(9, 7, 0x54, 0x32C, &byte, 1), BSP_E_FAILED);
    EXPECT_EQ(bspI2cEepromWrite(8, 6, 0x54, 0x22C, &byte, 1), BSP_E_FAILED);
    EXPECT_EQ(trace(), (Lines{"I2C read  bus 9 ch 7 dev 0x57 off 0x2C len 1 -> refused, result -6",
                              "I2C write bus 8 ch 6 dev 0x56 off 0x2C len 1 -> refused, "
                              "result -6"}));
}

TEST_F(EepromTest, SupplyNIsOnChannelNPlus1) {
    uint8_t byte = 0;
    devices().supply[0].eeprom.bytes[0x12] = 0x77;
    EXPECT_EQ(bspPowerEepromRead(1, 0x12, &byte, 1), BSP_OK);
    EXPECT_EQ(byte, 0x77);
    byte = 0x66;
    EXPECT_EQ(bspPowerEepromWrite(2, 0x12, &byte, 1), BSP_OK);
    EXPECT_EQ(devices().supply[1].eeprom.bytes[0x12], 0x66);
    EXPECT_EQ(requests(), (Lines{"I2C read  bus 0 ch 2 dev 0x50 off 0x12 len 1: 77",
                                 "I2C write bus 0 ch 3 dev 0x50 off 0x12 len 1: 66"}));
}

TEST_F(EepromTest, ThereAreTwoSupplies) {
    uint8_t byte = 0xA5;
    for (const uint32_t supply : {0u, 3u, 0xFFu, 0x101u, 0xFFFFFFFFu}) {
        for (const uint32_t len : {0u, 1u, 2000u}) {
            EXPECT_EQ(answerOf([&] { return bspPowerEepromRead(supply, 0, &byte, len); }),
                      Answer{BSP_E_INVALID});
            EXPECT_EQ(answerOf([&] { return bspPowerEepromWrite(supply, 0, &byte, len); }),
                      Answer{BSP_E_INVALID});
        }
        // the buffer is looked at first
        EXPECT_EQ(answerOf([&] { return bspPowerEepromRead(supply, 0, nullptr, 1); }),
                  (Answer{BSP_E_NULL, "ERROR: bspPowerEepromRead(#): ptr buff is NULL.\n"}));
        EXPECT_EQ(answerOf([&] { return bspPowerEepromWrite(supply, 0, nullptr, 1); }),
                  (Answer{BSP_E_NULL, "ERROR: bspPowerEepromWrite(#): ptr buff is NULL.\n"}));
    }
    EXPECT_EQ(byte, 0xA5);
    EXPECT_EQ(trace(), Lines{});
}

// Whether a model's supplies have EEPROMs is not asked here: the bus answers.
TEST_F(EepromTest, SuppliesAreReachedOnEveryModel) {
    useModel(0x0309);
    uint8_t byte = 0;
    EXPECT_EQ(bspPowerEepromRead(1, 0, &byte, 1), BSP_E_FAILED);
    EXPECT_EQ(trace(),
              (Lines{"I2C read  bus 0 ch 2 dev 0x50 off 0x00 len 1 -> refused, result -6"}));
}

} // namespace
