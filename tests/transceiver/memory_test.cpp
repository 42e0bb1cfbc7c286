// Transceiver memories: where the cages are, transfers, PHYs, copper modules.

#include "bsp.h"
#include "tests/support/device_ids.h"
#include "tests/support/recorded_devices.h"
#include "tests/support/virtual_board_test.h"

#include <algorithm>
#include <memory>
#include <numeric>

namespace {

std::string branch(uint32_t bus, uint32_t channel) {
    return "bus " + std::to_string(bus) + " ch " + std::to_string(channel);
}

/** Bus and channel of a port as "bus 1 ch 0", or "" for none: consecutive ports are on consecutive
 * channels.
 */
std::string branchOf(uint32_t devId, uint32_t port) {
    constexpr uint32_t kUplinks = 6;
    constexpr uint32_t kUnknownFirst = 49; // of models that nobody knows
    for (const DataSheet &sheet : kDataSheets) {
        if (sheet.devId != devId)
            continue;
        if (port >= 1 && port <= sheet.frontCages)
            return branch(1, 8 + port - 1);
        return port - sheet.firstUplink < kUplinks ? branch(1, port - sheet.firstUplink) : "";
    }
    return port - kUnknownFirst < kUplinks ? branch(0, 2 + port - kUnknownFirst) : "";
}

class TransceiverMemoryTest : public VirtualBoardTest {
  protected:
    void SetUp() override {
        VirtualBoardTest::SetUp();
        pretendDeviceId(0x0709); // port 49 is on bus 1, channel 0
    }

    MemoryDevice identification{1, 0, 0x50};
    MemoryDevice diagnostics{1, 0, 0x51};
    MemoryDevice phy{1, 0, 0x56};
};

TEST_F(TransceiverMemoryTest, EachModelsCagesAreOnTheirBranches) {
    for (const uint32_t devId : allIds()) {
        pretendDeviceId(devId);
        DeviceIds ports(64);
        std::iota(ports.begin(), ports.end(), 0);
        ports.insert(ports.end(), {256 + 25, 256 + 49, 0x80000001, UINT32_MAX});
        for (const uint32_t port : ports) {
            SCOPED_TRACE(listed({devId, port}));
            const std::string expected = branchOf(devId, port);
            addFault(refuse(vb::FaultDevice::I2c, vb::FaultOp::Any, 6));
            requests();
            uint8_t byte = 0xA5;
            // An address that no test device has, so that the virtual board sees the request.
            const auto read = [&] { return bspLaserSfpRead(port, 0x2F, 5, &byte, 1); };
            const auto write = [&] { return bspLaserSfpWrite(port, 0x2F, 5, &byte, 1); };
            EXPECT_EQ(answerOf(read), Answer{expected.empty() ? BSP_E_INVALID : BSP_E_FAILED});
            EXPECT_EQ(answerOf(write), Answer{expected.empty() ? BSP_E_INVALID : BSP_E_FAILED});
            EXPECT_EQ(byte, 0xA5);
            const Lines lines = requests();
            ASSERT_EQ(lines.size(), expected.empty() ? 0u : 2u);
            if (!expected.empty()) {
                EXPECT_EQ(lines[0].rfind("I2C read  " + expected + " dev 0x2F off 0x05 len 1", 0),
                          0u)
                    << lines[0];
                EXPECT_EQ(lines[1].rfind("I2C write " + expected + " dev 0x2F off 0x05 len 1", 0),
                          0u)
                    << lines[1];
            }
            clearFaults();
        }
    }
}

TEST_F(TransceiverMemoryTest, ReadsInChunksOf16) {
    std::iota(diagnostics.bytes.begin(), diagnostics.bytes.end(), uint8_t{0});
    uint8_t buf[41];
    std::fill(std::begin(buf), std::end(buf), uint8_t{0xA5});
    const uint64_t start = now();
    EXPECT_EQ(answerOf([&] { return bspLaserSfpRead(49, 0x51, 10, buf, 40); }), kSilentSuccess);
    EXPECT_EQ(diagnostics.take(), (Lines{"read 0A len 16", "read 1A len 16", "read 2A len 8"}));
    EXPECT_EQ(now() - start, 3000000u) << "a pause of 1 ms behind each";
    EXPECT_TRUE(std::equal(buf, buf + 40, diagnostics.bytes.begin() + 10));
    EXPECT_EQ(buf[40], 0xA5);
}

TEST_F(TransceiverMemoryTest, WritesUpToTheEndsOfPages) {
    const uint8_t buf[] = {1, 2, 3, 4, 5, 6, 7, 8};
    const uint64_t start = now();
    EXPECT_EQ(answerOf([&] { return bspLaserSfpWrite(49, 0x51, 12, buf, 8); }), kSilentSuccess);
    EXPECT_EQ(diagnostics.take(), (Lines{"write 0C: 01 02 03 04", "write 10: 05 06 07 08"}));
    EXPECT_EQ(now() - start, 2000000u);
}

TEST_F(TransceiverMemoryTest, OnlyTheLowByteOfTheDeviceAddressCounts) {
    identification.bytes[0] = 3;
    uint8_t byte = 0;
    EXPECT_EQ(bspLaserSfpRead(49, 0xFFFFFF50, 0, &byte, 1), BSP_OK);
    EXPECT_EQ(byte, 3);
    EXPECT_EQ(bspLaserSfpWrite(49, 0x150, 1, &byte, 1), BSP_OK);
    EXPECT_EQ(identification.bytes[1], 3);
}

struct SpanCase {
    uint32_t offset, len;
    int32_t status;
};

TEST_F(TransceiverMemoryTest, SpansEndWithByte255) {
    constexpr SpanCase kCases[] = {
        {255, 1, BSP_OK},
        {0, 256, BSP_OK},
        {254, 2, BSP_OK},
        {0, 0, BSP_E_INVALID},
        {255, 2, BSP_E_INVALID},
        {256, 1, BSP_E_INVALID},
        {0, 257, BSP_E_INVALID},
        {UINT32_MAX, 1, BSP_E_INVALID}, // sums that wrap around in 32 bits
        {1, UINT32_MAX, BSP_E_INVALID},
        {0x80000000, 0x80000001, BSP_E_INVALID},
    };
    uint8_t buf[256] = {};
    for (const SpanCase &row : kCases) {
        SCOPED_TRACE(listed({row.offset, row.len}));
        identification.take();
        EXPECT_EQ(answerOf([&] { return bspLaserSfpRead(49, 0x50, row.offset, buf, row.len); }),
                  Answer{row.status});
        EXPECT_EQ(answerOf([&] { return bspLaserSfpWrite(49, 0x50, row.offset, buf, row.len); }),
                  Answer{row.status});
        EXPECT_EQ(identification.take().empty(), row.status != BSP_OK);
    }
}

TEST_F(TransceiverMemoryTest, ArgumentsAreJudgedBufferFirstThenSpanThenModel) {
    addFault(openFails("/tmp/bsp/devId", EACCES));
    uint8_t byte = 0;
    EXPECT_EQ(answerOf([] { return bspLaserSfpRead(99, 0x50, 256, nullptr, 0); }),
              Answer{BSP_E_NULL});
    EXPECT_EQ(answerOf([] { return bspLaserSfpWrite(99, 0x50, 256, nullptr, 0); }),
              Answer{BSP_E_NULL});
    EXPECT_EQ(answerOf([&] { return bspLaserSfpRead(99, 0x50, 0, &byte, 0); }),
              Answer{BSP_E_INVALID});
    EXPECT_EQ(answerOf([&] { return bspLaserSfpRead(99, 0x50, 0, &byte, 1); }), Answer{BSP_E_OPEN});
    EXPECT_EQ(answerOf([&] { return bspLaserSfpWrite(99, 0x50, 0, &byte, 1); }),
              Answer{BSP_E_OPEN});
}

TEST_F(TransceiverMemoryTest, AFailedTransferEndsTheCall) {
    uint8_t buf[40] = {};
    for (const uint32_t nth : {1u, 2u, 3u}) {
        identification.fail(nth, -77);
        EXPECT_EQ(answerOf([&] { return bspLaserSfpRead(49, 0x50, 0, buf, 40); }),
                  Answer{BSP_E_FAILED});
        EXPECT_EQ(identification.take().size(), nth);
        identification.fail(nth, -77);
        EXPECT_EQ(answerOf([&] { return bspLaserSfpWrite(49, 0x50, 0, buf, 40); }),
                  Answer{BSP_E_FAILED});
        EXPECT_EQ(identification.take().size(), nth);
    }
}

TEST_F(TransceiverMemoryTest, SingleBytesComeFromTheTwoPages) {
    identification.bytes[200] = 0x11;
    diagnostics.bytes[200] = 0x22;
    uint8_t byte = 0;
    EXPECT_EQ(answerOf([&] { return bspLaserBasicGet(49, 200, &byte); }), kSilentSuccess);
    EXPECT_EQ(byte, 0x11);
    EXPECT_EQ(identification.take(), Lines{"read C8 len 1"});
    EXPECT_EQ(answerOf([&] { return bspLaserAdvanceGet(49, 200, &byte); }), kSilentSuccess);
    EXPECT_EQ(byte, 0x22);
    EXPECT_EQ(diagnostics.take(), Lines{"read C8 len 1"});
    for (int32_t (*const function)(uint32_t, uint32_t, uint8_t *) :
         {bspLaserBasicGet, bspLaserAdvanceGet}) {
        EXPECT_EQ(function(49, 0, nullptr), BSP_E_NULL);
        EXPECT_EQ(function(49, 256, &byte), BSP_E_INVALID);
        EXPECT_EQ(function(48, 0, &byte), BSP_E_INVALID);
    }
    EXPECT_EQ(byte, 0x22);
}

TEST_F(TransceiverMemoryTest, PhyRegistersAreTwoBytesMostSignificantFirst) {
    EXPECT_EQ(answerOf([] { return bspLaserPhySet(49, 27, 0x12345); }), kSilentSuccess);
    EXPECT_EQ(phy.take(), Lines{"write 1B: 23 45"});
    uint16_t value = 0;
    EXPECT_EQ(answerOf([&] { return bspLaserPhyGet(49, 27, &value); }), kSilentSuccess);
    EXPECT_EQ(value, 0x2345);
    EXPECT_EQ(phy.take(), Lines{"read 1B len 2"});
    EXPECT_EQ(bspLaserPhySet(49, 255, 1), BSP_E_INVALID);
    EXPECT_EQ(bspLaserPhySet(48, 1, 1), BSP_E_INVALID);
    phy.fail(1, -5);
    EXPECT_EQ(bspLaserPhySet(49, 1, 1), BSP_E_FAILED);
}

TEST_F(TransceiverMemoryTest, APhyWordIsStoredEvenIfItWasNotRead) {
    uint16_t value = 0xA5A5;
    EXPECT_EQ(answerOf([&] { return bspLaserPhyGet(49, 255, &value); }), Answer{BSP_E_INVALID});
    EXPECT_EQ(value, 0);
    value = 0xA5A5;
    EXPECT_EQ(answerOf([&] { return bspLaserPhyGet(25, 0, &value); }), Answer{BSP_E_INVALID});
    EXPECT_EQ(value, 0);
    phy.bytes[0] = 0xAB;
    phy.bytes[1] = 0xCD;
    phy.fail(1, -5);
    value = 0xA5A5;
    EXPECT_EQ(answerOf([&] { return bspLaserPhyGet(49, 0, &value); }), Answer{BSP_E_FAILED});
    EXPECT_EQ(value, 0);
    phy.arriveInFailure = 1;
    EXPECT_EQ(answerOf([&] { return bspLaserPhyGet(49, 0, &value); }), Answer{BSP_E_FAILED});
    EXPECT_EQ(value, 0xAB00) << "what arrived";
    phy.take();
    EXPECT_EQ(answerOf([] { return bspLaserPhyGet(49, 0, nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(phy.take(), Lines{});
}

struct CopperCase {
    uint8_t connector;
    uint16_t phyStatus;
    uint16_t kind;
};

TEST_F(TransceiverMemoryTest, CopperModulesAreKnownByTheirConnectorAndPhyMode) {
    constexpr CopperCase kCases[] = {
        {0x00, 0x9084, 0}, {0x07, 0x9084, 0}, {0x21, 0x9084, 0}, {0x23, 0x9084, 0},
        {0xA2, 0x9084, 0}, {0x22, 0x9084, 1}, {0x22, 0x908C, 2}, {0x22, 0x9080, 3},
        {0x22, 0x0004, 1}, {0x22, 0x000C, 2}, {0x22, 0x0C40, 3}, {0x22, 0xFFFF, 3},
    };
    for (const CopperCase &row : kCases) {
        SCOPED_TRACE(listed({row.connector, row.phyStatus}));
        identification.bytes[2] = row.connector;
        phy.bytes[27] = static_cast<uint8_t>(row.phyStatus >> 8);
        phy.bytes[28] = static_cast<uint8_t>(row.phyStatus);
        uint16_t kind = 0xA5A5;
        EXPECT_EQ(answerOf([&] { return bspElectricModerTypeGet(49, &kind); }), kSilentSuccess);
        EXPECT_EQ(kind, row.kind);
        EXPECT_EQ(identification.take(), Lines{"read 02 len 1"});
        EXPECT_EQ(phy.take(), row.connector == 0x22 ? Lines{"read 1B len 2"} : Lines{});
    }
}

TEST_F(TransceiverMemoryTest, AnUnreadableConnectorIsNoFailure) {
    uint16_t kind = 0xA5A5;
    identification.fail(1, -5);
    EXPECT_EQ(answerOf([&] { return bspElectricModerTypeGet(49, &kind); }), kSilentSuccess);
    EXPECT_EQ(answerOf([&] { return bspElectricModerTypeGet(48, &kind); }), kSilentSuccess);
    addFault(openFails("/tmp/bsp/devId", EACCES));
    EXPECT_EQ(answerOf([&] { return bspElectricModerTypeGet(49, &kind); }), kSilentSuccess);
    EXPECT_EQ(kind, 0xA5A5);
    EXPECT_EQ(phy.take(), Lines{});
    EXPECT_EQ(answerOf([] { return bspElectricModerTypeGet(49, nullptr); }), Answer{BSP_E_NULL});
}

TEST_F(TransceiverMemoryTest, AnUnreadablePhyGivesAKindAndItsFailure) {
    identification.bytes[2] = 0x22;
    phy.bytes[28] = 4;
    phy.fail(1, -5);
    uint16_t kind = 0xA5A5;
    EXPECT_EQ(answerOf([&] { return bspElectricModerTypeGet(49, &kind); }), Answer{BSP_E_FAILED});
    EXPECT_EQ(kind, 3);
    phy.arriveInFailure = 2;
    EXPECT_EQ(answerOf([&] { return bspElectricModerTypeGet(49, &kind); }), Answer{BSP_E_FAILED});
    EXPECT_EQ(kind, 1);
}

TEST_F(TransceiverMemoryTest, NoModelHasQsfp) {
    for (const uint32_t devId : allIds()) {
        pretendDeviceId(devId);
        uint8_t byte = 0xA5;
        EXPECT_EQ(answerOf([&] { return bspLaserQsfpRead(49, 0, &byte, 1); }), Answer{1000});
        EXPECT_EQ(answerOf([] { return bspLaserQsfpRead(49, 0, nullptr, 0); }), Answer{1000});
        EXPECT_EQ(answerOf([] { return bspLaserQsfpWrite(49, 0, 1); }), Answer{1000});
        EXPECT_EQ(byte, 0xA5);
    }
    EXPECT_EQ(requests(), Lines{});
}

} // namespace
