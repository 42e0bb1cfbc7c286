// What supplies, lamps and PoE are on each device id, known to the data sheets or not: one row
// each.

#include "bsp.h"
#include "poe/rtl8239/bus.h"
#include "tests/support/device_ids.h"
#include "tests/support/virtual_board_test.h"
#include "tests/support/world.h"

#include <cstring>

namespace {

constexpr uint32_t kMark = 0x5A5A5A5A;
constexpr int32_t kSignedMark = 0x5A5A5A5A;

using Row = DataSheet;

/** On hardware that has everything, so that the id alone decides. */
class EveryModelTest : public VirtualBoardTest {
  protected:
    void SetUp() override {
        VirtualBoardTest::SetUp();
        BspDevinfo record{};
        std::memcpy(record.magic, "DEVINFO", 8);
        record.supplyCount = 5;
        record.supplyType[0] = 7;
        ASSERT_EQ(ioDevinfoSet(BSP_DEVINFO_BOARD, &record), BSP_OK);
    }

    /** Does something on each device id. */
    template <typename Check>
    void onEach(Check check) {
        std::vector<Row> rows(std::begin(kDataSheets), std::end(kDataSheets));
        for (const uint32_t devId : kUnknownIds)
            rows.push_back(unknownSheet(devId));
        for (const Row &row : rows) {
            SCOPED_TRACE(row.devId);
            pretendDeviceId(row.devId);
            requests();
            check(row);
        }
    }

    /** The registers that were read since the last call: "30". */
    std::string registersRead() {
        std::string text;
        for (const std::string &line : requests()) {
            unsigned reg = 0;
            if (std::sscanf(line.c_str(), "CPLD read reg %u", &reg) == 1)
                text += (text.empty() ? "" : " ") + std::to_string(reg);
        }
        return text;
    }
};

TEST_F(EveryModelTest, NumberOfSupplies) {
    onEach([](const Row &row) {
        int32_t count = kSignedMark;
        EXPECT_EQ(ioPowerNumGet(&count), BSP_OK);
        EXPECT_EQ(count, row.chassis == Chassis::Other ? 5 : 2);
    });
}

TEST_F(EveryModelTest, PresenceOfSupplies) {
    onEach([this](const Row &row) {
        const bool isRecorded = row.chassis == Chassis::Other;
        for (const int32_t supply : {1, 2}) {
            // Register 30 has one more line set; register 6 tells of presence by clear lines.
            world::set("cpld.30", supply == 1 ? "0x0001" : "0x0002");
            world::set("cpld.6", supply == 1 ? "0x0400" : "0x0200");
            for (const int32_t asked : {1, 2}) {
                int32_t isPresent = kSignedMark;
                EXPECT_EQ(ioPowerPresentGet(asked, &isPresent), BSP_OK);
                EXPECT_EQ(isPresent, asked == supply ? 1 : 0);
            }
        }
        EXPECT_EQ(registersRead(), isRecorded ? "6 6 6 6" : "30 30 30 30");
        int32_t isPresent = kSignedMark;
        EXPECT_EQ(ioPowerPresentGet(3, &isPresent), BSP_E_INVALID);
    });
}

TEST_F(EveryModelTest, TypeOfSupplies) {
    onEach([](const Row &row) {
        world::set("cpld.30", "0x0004"); // the line of supply 1 is set, that of supply 2 is clear
        int32_t type = kSignedMark;
        EXPECT_EQ(bspPowerTypeGet(1, &type), BSP_OK);
        EXPECT_EQ(type, row.chassis == Chassis::Other ? 7 : 1);
        EXPECT_EQ(bspPowerTypeGet(2, &type), BSP_OK);
        EXPECT_EQ(type, row.chassis == Chassis::Other ? 0 : 2);
    });
}

TEST_F(EveryModelTest, StatusOfSupplies) {
    struct Case {
        const char *lines;
        int32_t fourFan, twoFan;
    };
    static constexpr Case kCases[] = {
        {"0x0000", 2, 1}, {"0x0010", 3, 1}, {"0x0044", 1, 1}, {"0x0100", 0, 4}, {"0x0140", 0, 0},
    };
    onEach([](const Row &row) {
        for (const Case &lines : kCases) {
            SCOPED_TRACE(lines.lines);
            world::set("cpld.30", lines.lines);
            const int32_t expected = row.chassis == Chassis::FourFan  ? lines.fourFan
                                     : row.chassis == Chassis::TwoFan ? lines.twoFan
                                                                      : 0;
            int32_t status = kSignedMark;
            EXPECT_EQ(ioPowerStatusGet(1, &status), BSP_OK);
            EXPECT_EQ(status, expected);
        }
        int32_t status = kSignedMark;
        const bool hasThird = row.chassis == Chassis::Other;
        EXPECT_EQ(ioPowerStatusGet(3, &status), hasThird ? BSP_OK : BSP_E_INVALID);
    });
}

TEST_F(EveryModelTest, LiveReadingsOfSupplies) {
    onEach([this](const Row &row) {
        BspPowerInfo info{};
        EXPECT_EQ(ioPowerInfoGet(1, &info), BSP_OK);
        const bool isRead = row.chassis == Chassis::TwoFan;
        EXPECT_EQ(info.outputVoltage, isRead ? 54000 : 0);
        size_t transfers = 0;
        for (const std::string &line : requests())
            transfers += line.find("dev 0x58") != std::string::npos ? 1u : 0u;
        EXPECT_EQ(transfers, isRead ? 9u : 0u);
    });
}

TEST_F(EveryModelTest, RecordsOfSupplies) {
    onEach([this](const Row &row) {
        const bool hasRecords = row.chassis == Chassis::TwoFan;
        for (const uint32_t index : {0x50u, 0x51u}) {
            BspDevinfo record{};
            EXPECT_EQ(ioDevinfoGet(index, &record), hasRecords ? BSP_OK : BSP_E_NOT_SUPPORTED);
            EXPECT_EQ(std::memcmp(record.serial, "PSU", 3) == 0, hasRecords);
            EXPECT_EQ(ioDevinfoSet(index, &record), hasRecords ? BSP_OK : BSP_E_NOT_SUPPORTED);
        }
        EXPECT_EQ(requests().empty(), !hasRecords);
    });
}

TEST_F(EveryModelTest, PoeController) {
    onEach([this](const Row &row) {
        EXPECT_EQ(bspPoeDriverGet(), row.poePorts != 0 ? &bspPoeRtl8239Driver : nullptr);
        const BspPoePortMap *map = bspPoeRtl8239PortMapGet();
        ASSERT_EQ(map != nullptr, row.poePorts != 0);
        if (map != nullptr) {
            EXPECT_EQ(map->portCount, row.poePorts);
        }
        requests();
        uint32_t value = kMark;
        EXPECT_EQ(ioPoeGlobalPowerGet(&value), row.poePorts != 0 ? BSP_OK : BSP_E_POE_UNAVAILABLE);
        EXPECT_EQ(value == kMark, row.poePorts == 0);
        EXPECT_EQ(requests().empty(), row.poePorts == 0);
        BspPoePortState state{};
        BspPoePortMeasurement measurement{};
        BspPoePortSettings settings{};
        for (const int32_t status :
             {ioPoePortStateGet(1, &state), ioPoePortMeasurementGet(1, &measurement),
              ioPoePortSettingsGet(1, &settings)})
            EXPECT_EQ(status, row.poePorts != 0 ? BSP_OK : BSP_E_POE_UNAVAILABLE);
        EXPECT_EQ(requests().empty(), row.poePorts == 0);
        // The driver asks for itself, too.
        value = kMark;
        EXPECT_EQ(bspPoeRtl8239GlobalPowerGet(&value),
                  row.poePorts != 0 ? BSP_OK : BSP_E_POE_UNAVAILABLE);
    });
}

TEST_F(EveryModelTest, PoeRatedPower) {
    onEach([](const Row &row) {
        uint32_t power = kMark;
        EXPECT_EQ(ioPoeGlobalRatedPowerGet(2, &power),
                  row.poePorts != 0 ? BSP_OK : BSP_E_NOT_SUPPORTED);
        EXPECT_EQ(power, row.poePorts != 0 ? 1440000 : kMark);
    });
}

TEST_F(EveryModelTest, PoeLamps) {
    onEach([this](const Row &row) {
        for (const uint32_t port : {0u, 1u, 16u, 17u, 24u, 25u, 48u, 49u}) {
            SCOPED_TRACE(port);
            const bool isPort = port >= 1 && port <= row.poePorts;
            const int32_t expected = row.poePorts == 0 ? BSP_E_NOT_SUPPORTED
                                     : isPort          ? BSP_OK
                                                       : BSP_E_INVALID;
            for (uint32_t reg = 13; reg < 16; ++reg)
                devices().cpld.reg[reg] = 0;
            EXPECT_EQ(ioPoePortLedStateSet(port, 0), expected);
            for (uint32_t reg = 13; reg < 16; ++reg) {
                const bool isHere = isPort && reg == 13 + (port - 1) / 16;
                EXPECT_EQ(devices().cpld.reg[reg], isHere ? 1u << (port - 1) % 16 : 0u);
            }
            EXPECT_EQ(ioLedStateSet(1, port, 9, 2, 1), expected);
        }
    });
}

} // namespace
