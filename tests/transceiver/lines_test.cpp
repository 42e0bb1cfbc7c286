// The lines of the SFP cages: which register and bit, what they mean, what fails.

#include "bsp.h"
#include "tests/support/device_ids.h"
#include "tests/support/recorded_devices.h"
#include "tests/support/virtual_board_test.h"

namespace {

DeviceIds idsWithCages(uint32_t frontCages, uint32_t firstUplink) {
    return idsWhere([=](const DataSheet &sheet) {
        return sheet.frontCages == frontCages && sheet.firstUplink == firstUplink;
    });
}

const DeviceIds kUplinksAt25 = idsWithCages(0, 25);
const DeviceIds kFibre24 = idsWithCages(24, 33);
const DeviceIds kFibre48 = idsWithCages(48, 49);

constexpr uint32_t kMark = 0x5A5A5A5A;
constexpr int64_t kNoBit = -1;

struct Place {
    uint32_t reg;
    int64_t bit; // kNoBit: outside the register
};

/** A line's numbers on the data sheet. */
struct Line {
    const char *name;
    uint32_t frontBase;
    uint32_t uplinkRegister;
    uint32_t at25, at49, at33; // what is taken from the port's number
};
constexpr Line kPresent = {"present", 19, 8, 19, 43, 27};
constexpr Line kDisable = {"disable", 25, 12, 19, 43, 27};
constexpr Line kLoss = {"loss", 16, 8, 25, 49, 27};
constexpr Line kFault = {"fault", 22, 12, 25, 49, 27};

Place uplink(const Line &line, uint32_t port, uint32_t subtracted) {
    const int64_t bit = int64_t{port} - subtracted;
    return {line.uplinkRegister, bit < 16 ? std::max(bit, kNoBit) : kNoBit};
}

Place front(const Line &line, uint32_t port) {
    return {line.frontBase + (port - 1) / 16, (port - 1) % 16};
}

Place placeOf(const Line &line, uint32_t devId, uint32_t port) {
    if (isOneOf(devId, kUplinksAt25))
        return uplink(line, port, line.at25);
    if (isOneOf(devId, kFibre24)) {
        if (port >= 1 && port <= 24)
            return front(line, port);
        return port >= 33 && port <= 38 ? uplink(line, port, line.at33) : Place{0, 0};
    }
    if (isOneOf(devId, kFibre48) && port <= 48)
        return port == 0 ? Place{0, 0} : front(line, port);
    return uplink(line, port, line.at49);
}

struct Reader {
    const char *name;
    int32_t (*get)(uint32_t port, uint32_t *out);
    const Line &line;
    uint32_t clear, set;
};
const Reader kReaders[] = {
    {"bspLaserPresentGet", bspLaserPresentGet, kPresent, 0, 1},
    {"bspLaserControlGet", bspLaserControlGet, kDisable, 1, 2},
    {"bspLaserRxLosGet", bspLaserRxLosGet, kLoss, 0, 1},
    {"bspLaserTxfaultGet", bspLaserTxfaultGet, kFault, 0, 1},
};

class TransceiverLinesTest : public VirtualBoardTest {
  protected:
    void SetUp() override {
        VirtualBoardTest::SetUp();
        pretendDeviceId(0x0709);
    }

    uint32_t answer(const Reader &reader, uint32_t port) {
        uint32_t out = kMark;
        EXPECT_EQ(reader.get(port, &out), BSP_OK);
        return out;
    }

    /** A register with everything but one bit in one state. */
    static uint16_t with(const Place &place, bool isSet) {
        const uint32_t bit = place.bit == kNoBit ? 0 : 1u << place.bit;
        return static_cast<uint16_t>(isSet ? bit : ~bit);
    }

    void expectReader(const Reader &reader, uint32_t devId, uint32_t port) {
        const Place place = placeOf(reader.line, devId, port);
        const bool hasBit = place.bit != kNoBit;
        cpld.reg.fill(0);
        cpld.reg[place.reg] = with(place, true);
        EXPECT_EQ(answer(reader, port), hasBit ? reader.set : reader.clear);
        cpld.reg.fill(0xFFFF);
        cpld.reg[place.reg] = with(place, false);
        EXPECT_EQ(answer(reader, port), reader.clear);
        const std::string read = "read " + std::to_string(place.reg);
        EXPECT_EQ(cpld.take(), (Lines{read, read}));
    }

    void expectSetter(uint32_t devId, uint32_t port) {
        const Place place = placeOf(kDisable, devId, port);
        const uint32_t bit = place.bit == kNoBit ? 0 : 1u << place.bit;
        for (const auto &[state, before, after] : {std::tuple{1u, 0xFFFFu, 0xFFFFu & ~bit},
                                                   {0u, 0u, bit},
                                                   {2u, 0u, bit},
                                                   {5u, 0u, bit},
                                                   {UINT32_MAX, 0x5A5Au, 0x5A5Au | bit},
                                                   {1u, 0x5A5Au, 0x5A5Au & ~bit}}) {
            cpld.reg.fill(static_cast<uint16_t>(before));
            EXPECT_EQ(bspLaserControlSet(port, state), BSP_OK);
            char written[32];
            std::snprintf(written, sizeof(written), "write %u = %04X", place.reg, after);
            EXPECT_EQ(cpld.take(), (Lines{"read " + std::to_string(place.reg), written}));
        }
    }

    CpldRegisters cpld;
};

TEST_F(TransceiverLinesTest, EveryPortOfEveryModelHasItsRegistersAndBits) {
    DeviceIds ports = {256 + 49, 0x80000000, UINT32_MAX};
    for (uint32_t port = 0; port < 70; ++port)
        ports.push_back(port);
    for (const uint32_t devId : allIds()) {
        pretendDeviceId(devId);
        for (const uint32_t port : ports) {
            SCOPED_TRACE(listed({devId, port}));
            for (const Reader &reader : kReaders) {
                SCOPED_TRACE(reader.name);
                expectReader(reader, devId, port);
            }
            expectSetter(devId, port);
        }
    }
}

struct Spot {
    uint32_t devId, port;
    size_t reader;
    uint32_t reg, bit;
};

// From the circuit diagrams, written out by hand.
TEST_F(TransceiverLinesTest, SpotChecks) {
    constexpr Spot kSpots[] = {
        {0x0809, 25, 0, 8, 6},  {0x0809, 25, 2, 8, 0},   {0x0809, 30, 0, 8, 11},
        {0x0709, 49, 0, 8, 6},  {0x0709, 49, 3, 12, 0},  {0x0709, 54, 3, 12, 5},
        {0x0609, 17, 0, 20, 0}, {0x0609, 17, 1, 26, 0},  {0x0609, 17, 2, 17, 0},
        {0x0609, 17, 3, 23, 0}, {0x0609, 48, 0, 21, 15}, {0x0609, 49, 1, 12, 6},
        {0x0609, 49, 2, 8, 0},  {0x0509, 24, 3, 23, 7},  {0x0509, 35, 0, 8, 8},
        {0x0509, 35, 2, 8, 8},  {0x0509, 35, 1, 12, 8},  {0x0509, 35, 3, 12, 8},
        {0x0509, 30, 0, 0, 0},  {0x8109, 54, 2, 8, 5},   {0x8609, 1, 1, 25, 0},
    };
    for (const Spot &spot : kSpots) {
        SCOPED_TRACE(listed({spot.devId, spot.port, static_cast<int64_t>(spot.reader)}));
        pretendDeviceId(spot.devId);
        cpld.reg.fill(0);
        cpld.reg[spot.reg] = static_cast<uint16_t>(1u << spot.bit);
        const Reader &reader = kReaders[spot.reader];
        EXPECT_EQ(answer(reader, spot.port), reader.set);
    }
}

TEST_F(TransceiverLinesTest, WhatIsSwitchedOffReadsOff) {
    EXPECT_EQ(bspLaserControlSet(50, 0), BSP_OK);
    EXPECT_EQ(answer(kReaders[1], 50), 2u);
    EXPECT_EQ(answer(kReaders[1], 51), 1u);
    EXPECT_EQ(bspLaserControlSet(50, 1), BSP_OK);
    EXPECT_EQ(answer(kReaders[1], 50), 1u);
}

TEST_F(TransceiverLinesTest, RegisterFailuresAreReportedUnderTheFunctionsName) {
    for (const Reader &reader : kReaders) {
        cpld.fail(1, 5);
        uint32_t out = kMark;
        EXPECT_EQ(answerOf([&] { return reader.get(49, &out); }),
                  (Answer{5, reader.name + std::string("-#: bspCpldGet error. ret=5 \n")}));
        EXPECT_EQ(out, kMark);
    }
    cpld.take();
    cpld.fail(1, -6);
    EXPECT_EQ(answerOf([] { return bspLaserControlSet(49, 1); }),
              (Answer{-6, "bspLaserControlSet-#: bspCpldGet error. ret=-6 \n"}));
    EXPECT_EQ(cpld.take(), Lines{"read 12"});
    cpld.fail(2, 7);
    EXPECT_EQ(answerOf([] { return bspLaserControlSet(49, 1); }),
              (Answer{7, "bspLaserControlSet-#: bspCpldSet error. ret=7 \n"}));
}

TEST_F(TransceiverLinesTest, WithoutADeviceIdNothingIsDoneOrSaid) {
    addFault(openFails("/tmp/bsp/devId", EACCES));
    for (const Reader &reader : kReaders) {
        uint32_t out = kMark;
        EXPECT_EQ(answerOf([&] { return reader.get(49, &out); }), Answer{BSP_E_OPEN});
        EXPECT_EQ(out, kMark);
    }
    EXPECT_EQ(answerOf([] { return bspLaserControlSet(49, 1); }), Answer{BSP_E_OPEN});
    EXPECT_EQ(cpld.take(), Lines{});
}

} // namespace
