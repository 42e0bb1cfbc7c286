// SFP cages and modules: lines, identification, diagnostics, PHY.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"
#include "tests/support/world.h"
#include "virtual_board/board/models.h"

#include <numeric>
#include <unistd.h>

namespace {

using world::get;
using world::refusal;
using world::set;

using Bytes = std::vector<uint8_t>;

/** Where the lines of a cage are: register and bit; bit 16 means that there is none. */
struct Place {
    uint32_t reg, bit;
    auto operator<=>(const Place &) const = default;
};
struct Cage {
    uint32_t devId, port, channel;
    Place present, loss, fault, disable;
};
constexpr Place kNone = {0, 16};

constexpr Cage kCages[] = {
    {0x0109, 25, 0, {8, 6}, {8, 0}, {12, 0}, {12, 6}},
    {0x0809, 30, 5, {8, 11}, {8, 5}, {12, 5}, {12, 11}},
    {0x0709, 49, 0, {8, 6}, {8, 0}, {12, 0}, {12, 6}},
    {0x8309, 54, 5, {8, 11}, {8, 5}, {12, 5}, {12, 11}},
    {0x0609, 1, 8, {19, 0}, {16, 0}, {22, 0}, {25, 0}},
    {0x0609, 17, 24, {20, 0}, {17, 0}, {23, 0}, {26, 0}},
    {0x8509, 48, 55, {21, 15}, {18, 15}, {24, 15}, {27, 15}},
    {0x0609, 51, 2, {8, 8}, {8, 2}, {12, 2}, {12, 8}},
    {0x0509, 24, 31, {20, 7}, {17, 7}, {23, 7}, {26, 7}},
    {0x8609, 35, 2, {8, 8}, kNone, kNone, {12, 8}},
};

class SfpTest : public VirtualBoardTest {
  protected:
    static uint16_t reg(uint32_t number) {
        uint16_t value = 0;
        EXPECT_EQ(bspCpldGet(number, &value), BSP_OK);
        return value;
    }
    static bool isSet(const Place &place) {
        return place.bit < 16 && (reg(place.reg) >> place.bit & 1) != 0;
    }
    static void setLine(const Place &place, bool level) {
        const uint32_t mask = 1u << place.bit;
        EXPECT_EQ(bspCpldSet(place.reg, static_cast<uint16_t>(level ? reg(place.reg) | mask
                                                                    : reg(place.reg) & ~mask)),
                  BSP_OK);
    }
    /** All bits of the lines of cages that are set, the written ones left out. */
    static std::vector<Place> inputs(const Cage &cage) {
        std::vector<Place> found;
        for (uint32_t number = 8; number < 28; ++number) {
            if (number > 12 && number < 16)
                continue; // lamps
            for (uint32_t bit = 0; bit < 16; ++bit) {
                const Place place = {number, bit};
                if (place != cage.disable && isSet(place))
                    found.push_back(place);
            }
        }
        return found;
    }
    /** Bytes of a page of the module at a channel; none when it does not answer. */
    static Bytes bytesAt(uint32_t channel, uint32_t device, uint32_t offset, uint32_t length) {
        Bytes bytes(length);
        const int32_t status =
            bspI2cRead(1, channel, device, offset, 1, bytes.data(), static_cast<int32_t>(length));
        return status == BSP_OK ? bytes : Bytes();
    }
    static Bytes id(uint32_t offset, uint32_t length) { return bytesAt(0, 0x50, offset, length); }
    static int wordAt(uint32_t offset) {
        const Bytes bytes = bytesAt(0, 0x51, offset, 2);
        return bytes.empty() ? -1 : bytes[0] << 8 | bytes[1];
    }
    static uint8_t sum(const Bytes &bytes) {
        return static_cast<uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0u));
    }
    static int phy(uint32_t number) {
        const Bytes bytes = bytesAt(0, 0x56, number, 2);
        return bytes.empty() ? -1 : bytes[0] << 8 | bytes[1];
    }
};

TEST_F(SfpTest, EachCageHasItsChannelAndLines) {
    for (const Cage &cage : kCages) {
        SCOPED_TRACE(testing::Message() << std::hex << cage.devId << std::dec << " " << cage.port);
        useModel(cage.devId);
        const std::string name = "sfp." + std::to_string(cage.port);
        EXPECT_EQ(inputs(cage), std::vector<Place>{});
        EXPECT_EQ(bytesAt(cage.channel, 0x50, 0, 1), Bytes{});
        set(name + ".module", "sr");
        EXPECT_EQ(bytesAt(cage.channel, 0x50, 0, 1), Bytes{0x03});
        EXPECT_TRUE(isSet(cage.present));
        EXPECT_EQ(isSet(cage.loss), cage.loss != kNone);
        EXPECT_EQ(inputs(cage).size(), cage.loss != kNone ? 2u : 1u);
        EXPECT_FALSE(isSet(cage.fault));
        set(name + ".link", "up");
        EXPECT_EQ(inputs(cage), std::vector<Place>{cage.present});
        set(name + ".state", "tx-fault");
        EXPECT_EQ(isSet(cage.fault), cage.fault != kNone);
        setLine(cage.disable, true); // a transmitter that is off has no fault
        EXPECT_EQ(inputs(cage), std::vector<Place>{cage.present});
        setLine(cage.disable, false);
        EXPECT_EQ(isSet(cage.fault), cage.fault != kNone);
        EXPECT_EQ(bspHwReboot(), BSP_OK);
        EXPECT_TRUE(isSet(cage.present));
        EXPECT_EQ(isSet(cage.fault), cage.fault != kNone);
        set(name + ".module", "none");
        EXPECT_EQ(inputs(cage), std::vector<Place>{});
        EXPECT_EQ(bytesAt(cage.channel, 0x50, 0, 1), Bytes{});
    }
}

TEST_F(SfpTest, EachPortOfEachModelIsACageOrNot) {
    for (const vb::Model &model : vb::kModels) {
        useModel(model.devId);
        uint32_t cages = 0;
        for (uint32_t port = 0; port <= 55; ++port) {
            const std::string name = "sfp." + std::to_string(port) + ".module";
            if (refusal(name).starts_with("accepted")) {
                set(name, "sr");
                ++cages;
            }
        }
        EXPECT_EQ(cages, uint32_t{model.sfpPorts} + model.uplinks);
        size_t answers = 0;
        for (uint32_t channel = 0; channel < 256; ++channel)
            answers += bytesAt(channel, 0x50, 0, 1).size();
        EXPECT_EQ(answers, size_t{cages}) << model.devId;
    }
    useModel(0x0509);
    EXPECT_NE(refusal("sfp.25.module").find("the cages are 1-24, 33-38"), std::string::npos);
    useModel(0x0109);
    EXPECT_NE(refusal("sfp.24.module").find("the cages are 25-30"), std::string::npos);
}

TEST_F(SfpTest, TheIdentificationSaysWhatAModuleIs) {
    const struct {
        const char *kind;
        uint8_t connector, code3, code6, code8, rate, monitoring;
    } cases[] = {{"sx", 0x07, 0, 0x01, 0, 13, 0},
                 {"sr", 0x07, 0x10, 0, 0, 103, 0x68},
                 {"lr", 0x07, 0x20, 0, 0, 103, 0x68},
                 {"dac", 0x21, 0, 0, 0x04, 103, 0},
                 {"copper-mode4", 0x22, 0, 0x08, 0, 13, 0}};
    for (const auto &expected : cases) {
        set("sfp.49.module", expected.kind);
        const Bytes page = id(0, 128);
        ASSERT_EQ(page.size(), 128u) << expected.kind;
        EXPECT_EQ(page[0], 0x03);
        EXPECT_EQ(page[1], 0x04);
        EXPECT_EQ(page[2], expected.connector) << expected.kind;
        EXPECT_EQ(page[3], expected.code3) << expected.kind;
        EXPECT_EQ(page[6], expected.code6) << expected.kind;
        EXPECT_EQ(page[8], expected.code8) << expected.kind;
        EXPECT_EQ(page[12], expected.rate) << expected.kind;
        EXPECT_EQ(page[92], expected.monitoring) << expected.kind;
        EXPECT_EQ(page[63], sum(Bytes(page.begin(), page.begin() + 63))) << expected.kind;
        EXPECT_EQ(page[95], sum(Bytes(page.begin() + 64, page.begin() + 95))) << expected.kind;
        EXPECT_EQ(std::string(page.begin() + 20, page.begin() + 36), "VIRTUAL         ");
        EXPECT_EQ(std::string(page.begin() + 68, page.begin() + 84), "SFP0000049      ");
    }
}

TEST_F(SfpTest, WavelengthsAndReach) {
    set("sfp.49.module", "lr");
    EXPECT_EQ(id(14, 6), (Bytes{10, 100, 0, 0, 0, 0}));
    EXPECT_EQ(id(60, 2), (Bytes{0x05, 0x1E})); // 1310 nm
    set("sfp.49.module", "sr");
    EXPECT_EQ(id(14, 6), (Bytes{0, 0, 8, 3, 40, 30}));
    EXPECT_EQ(id(60, 2), (Bytes{0x03, 0x52})); // 850 nm
}

TEST_F(SfpTest, ACorruptChecksumIsThatOfTheBaseOnly) {
    set("sfp.49.module", "bad-checksum");
    const Bytes page = id(0, 96);
    ASSERT_EQ(page.size(), 96u);
    EXPECT_NE(page[63], sum(Bytes(page.begin(), page.begin() + 63)));
    EXPECT_EQ(page[95], sum(Bytes(page.begin() + 64, page.begin() + 95)));
}

TEST_F(SfpTest, ADeadModuleIsPluggedAndSilent) {
    set("sfp.49.module", "dead");
    set("sfp.49.link", "up");
    EXPECT_EQ(reg(8), 1 << 6 | 1);
    EXPECT_EQ(id(0, 1), Bytes{});
    EXPECT_EQ(wordAt(96), -1);
    set("sfp.49.module", "sr");
    EXPECT_NE(id(0, 1), Bytes{});
    set("sfp.49.state", "dead");
    EXPECT_EQ(id(0, 1), Bytes{});
}

TEST_F(SfpTest, ASlowModuleAnswersAfterAWhile) {
    sleep(10);
    set("sfp.49.module", "slow");
    usleep(1999999);
    EXPECT_EQ(id(0, 1), Bytes{});
    usleep(1);
    EXPECT_EQ(id(0, 1), Bytes{0x03});
    EXPECT_EQ(bspHwReboot(), BSP_OK);
    EXPECT_EQ(id(0, 1), Bytes{0x03});
    set("power", "cycle");
    EXPECT_EQ(id(0, 1), Bytes{});
    sleep(2);
    EXPECT_EQ(id(0, 1), Bytes{0x03});
}

TEST_F(SfpTest, OnlyModulesWithDiagnosticsHaveTheirPage) {
    for (const auto &[kind, has] : {std::pair{"sx", false},
                                    {"sr", true},
                                    {"lr", true},
                                    {"dac", false},
                                    {"copper-other", false},
                                    {"bad-checksum", true}}) {
        set("sfp.49.module", kind);
        EXPECT_EQ(wordAt(96) >= 0, has) << kind;
        EXPECT_EQ(phy(0) >= 0, kind == std::string("copper-other")) << kind;
    }
}

TEST_F(SfpTest, ThresholdsAndCalibrationAreSummed) {
    for (const char *kind : {"sr", "lr"}) {
        set("sfp.49.module", kind);
        const Bytes page = bytesAt(0, 0x51, 0, 96);
        ASSERT_EQ(page.size(), 96u);
        EXPECT_EQ(page[95], sum(Bytes(page.begin(), page.begin() + 95)));
        EXPECT_EQ(wordAt(0), 75 * 256);
        EXPECT_EQ(wordAt(2), 0xFB00); // -5 degrees
        EXPECT_EQ(wordAt(8), 36000);
        EXPECT_EQ(bytesAt(0, 0x51, 68, 4), (Bytes{0x3F, 0x80, 0, 0}));
        for (const uint32_t factor : {76u, 80u, 84u, 88u})
            EXPECT_EQ(wordAt(factor), 0x0100);
        for (uint32_t quantity = 0; quantity < 5; ++quantity) {
            const auto limit = [&](uint32_t i) {
                return static_cast<int16_t>(wordAt(8 * quantity + 2 * i));
            };
            // as unsigned words but for the temperature
            const auto value = [&](uint32_t i) {
                return quantity == 0 ? limit(i) : static_cast<uint16_t>(limit(i));
            };
            EXPECT_GT(value(0), value(2)) << quantity;
            EXPECT_GT(value(2), value(3)) << quantity;
            EXPECT_GT(value(3), value(1)) << quantity;
        }
    }
}

TEST_F(SfpTest, DiagnosticsMoveWithTemperature) {
    set("sfp.49.module", "lr");
    EXPECT_NEAR(wordAt(96) / 256.0, 48.1, 0.1); // 8 above the board
    EXPECT_EQ(wordAt(98), 33000);
    const int bias = wordAt(100);
    const int light = wordAt(102);
    EXPECT_NEAR(bias, 17500 * 1.115, 20);
    EXPECT_NEAR(light, 7000 * 0.954, 10);
    set("temperature.ambient", "45");
    sleep(3600);
    EXPECT_NEAR(wordAt(96) / 256.0, 68.1, 0.1);
    EXPECT_GT(wordAt(100), bias);
    EXPECT_LT(wordAt(102), light);
    set("temperature.ambient", "-40");
    sleep(3600);
    EXPECT_NEAR(static_cast<int16_t>(wordAt(96)) / 256.0, -16.9, 0.1);
}

TEST_F(SfpTest, ReceivedPowerDecidesAboutTheSignal) {
    set("sfp.49.module", "sr");
    EXPECT_EQ(get("sfp.49.rx-power"), "0");
    EXPECT_EQ(wordAt(104), 0);
    EXPECT_EQ(reg(8) & 1, 1);
    set("sfp.49.link", "up");
    EXPECT_EQ(get("sfp.49.rx-power"), "500");
    EXPECT_EQ(wordAt(104), 5000);
    EXPECT_EQ(reg(8) & 1, 0);
    set("sfp.49.rx-power", "50");
    EXPECT_EQ(reg(8) & 1, 0);
    set("sfp.49.rx-power", "49");
    EXPECT_EQ(reg(8) & 1, 1);
    EXPECT_EQ(wordAt(104), 490);
    set("sfp.49.link", "down");
    EXPECT_EQ(wordAt(104), 0);
    set("sfp.49.rx-power", "6553"); // light is a link
    EXPECT_EQ(get("sfp.49.link"), "up");
    EXPECT_EQ(wordAt(104), 65530);
}

TEST_F(SfpTest, FlagsTellOfLimits) {
    set("sfp.49.module", "sr");
    set("sfp.49.rx-power", "500");
    EXPECT_EQ(wordAt(112), 0);
    EXPECT_EQ(wordAt(116), 0);
    set("sfp.49.rx-power", "80");
    EXPECT_EQ(wordAt(112), 0);
    EXPECT_EQ(wordAt(116), 0x0040);
    set("sfp.49.rx-power", "1700");
    EXPECT_EQ(wordAt(112), 0x0080);
    EXPECT_EQ(wordAt(116), 0x0080);
    set("sfp.49.link", "down");
    EXPECT_EQ(wordAt(112), 0x0040);
    set("sfp.49.rx-power", "500");
    set("temperature.ambient", "49"); // 72 in the module
    sleep(3600);
    EXPECT_EQ(wordAt(112), 0);
    EXPECT_EQ(wordAt(116), 0x8000);
    set("temperature.ambient", "60");
    sleep(3600);
    EXPECT_EQ(wordAt(112), 0x8000);
    set("temperature.ambient", "25");
    sleep(3600);
    setLine({12, 6}, true); // no light, no bias
    EXPECT_EQ(wordAt(112), 0x0500);
    EXPECT_EQ(wordAt(116), 0x0500);
    set("temperature.ambient", "-40"); // -20 in the module without its laser
    sleep(3600);
    EXPECT_EQ(wordAt(112), 0x4500);
}

TEST_F(SfpTest, TheTransmitterIsSwitchedByLineOrSoftware) {
    set("sfp.49.module", "sr");
    set("sfp.49.link", "up");
    EXPECT_EQ(bytesAt(0, 0x51, 110, 1), Bytes{0});
    setLine({12, 6}, true);
    EXPECT_EQ(bytesAt(0, 0x51, 110, 1), Bytes{0x80});
    EXPECT_EQ(wordAt(100), 0);
    EXPECT_EQ(wordAt(102), 0);
    setLine({12, 6}, false);
    const uint8_t off = 0xFF;
    EXPECT_EQ(bspI2cWrite(1, 0, 0x51, 110, 1, &off, 1), BSP_OK);
    EXPECT_EQ(bytesAt(0, 0x51, 110, 1), Bytes{0x40});
    EXPECT_EQ(wordAt(102), 0);
    set("power", "cycle");
    EXPECT_EQ(bytesAt(0, 0x51, 110, 1), Bytes{0});
    EXPECT_NE(wordAt(102), 0);
    set("sfp.49.state", "tx-fault");
    set("sfp.49.link", "down");
    EXPECT_EQ(bytesAt(0, 0x51, 110, 1), Bytes{0x06});
    EXPECT_EQ(wordAt(102), 0);
}

TEST_F(SfpTest, CopperModulesHaveThePhyInThreeModes) {
    for (const auto &[kind, mode] :
         {std::pair{"copper-mode4", 0x9084}, {"copper-mode12", 0x908C}, {"copper-other", 0x9080}}) {
        set("sfp.49.module", kind);
        EXPECT_EQ(id(2, 1), Bytes{0x22});
        EXPECT_EQ(phy(27), mode) << kind;
    }
    EXPECT_EQ(phy(1), 0x7949);
    set("sfp.49.link", "up");
    EXPECT_EQ(phy(1), 0x796D);
    EXPECT_EQ(reg(8) & 1, 0);
    const uint8_t data[] = {0x12, 0x34};
    EXPECT_EQ(bspI2cWrite(1, 0, 0x56, 16, 1, data, 2), BSP_OK);
    EXPECT_EQ(phy(16), 0x1234);
    EXPECT_EQ(phy(17), 0);
}

TEST_F(SfpTest, PagesAreWrittenInsideOf16Bytes) {
    set("sfp.49.module", "sr");
    const uint8_t data[] = {1, 2, 3};
    EXPECT_EQ(bspI2cWrite(1, 0, 0x50, 0x8E, 1, data, 3), BSP_OK);
    EXPECT_EQ(id(0x8E, 2), (Bytes{1, 2}));
    EXPECT_EQ(id(0x80, 1), Bytes{3});
    EXPECT_EQ(bspI2cWrite(1, 0, 0x51, 0x90, 1, data, 3), BSP_OK);
    EXPECT_EQ(bytesAt(0, 0x51, 0x90, 3), (Bytes{1, 2, 3}));
    const int limit = wordAt(0);
    EXPECT_EQ(bspI2cWrite(1, 0, 0x51, 0, 1, data, 3), BSP_OK); // which is not the user's
    EXPECT_EQ(wordAt(0), limit);
}

TEST_F(SfpTest, TheWorldWritesPages) {
    set("sfp.49.module", "sr");
    set("sfp.49.id@20", "414243");
    EXPECT_EQ(id(20, 4), (Bytes{'A', 'B', 'C', 'T'}));
    EXPECT_EQ(get("sfp.49.id@20+3"), "414243");
    EXPECT_EQ(get("sfp.49.id").size(), 512u);
    set("sfp.49.diagnostics@95", "00");
    EXPECT_EQ(get("sfp.49.diagnostics@95+1"), "00");
    EXPECT_NE(refusal("sfp.49.id@250+7").find("bytes 0 to 255"), std::string::npos);
    EXPECT_NE(refusal("sfp.49.id@255", "0000").find("would end behind"), std::string::npos);
}

TEST_F(SfpTest, BadNamesAndValuesAreRefused) {
    EXPECT_NE(refusal("sfp.49.module", "zr").find("|copper-mode4|"), std::string::npos);
    for (const auto &[name, value] : {std::pair{"sfp.49.link", "up"},
                                      {"sfp.49.state", "good"},
                                      {"sfp.49.rx-power", "1"},
                                      {"sfp.49.id", "00"},
                                      {"sfp.49.diagnostics", "00"}})
        EXPECT_NE(refusal(name, value).find("cage 49 is empty"), std::string::npos) << name;
    set("sfp.49.module", "dac");
    EXPECT_NE(refusal("sfp.49.rx-power", "5").find("receives no light"), std::string::npos);
    EXPECT_NE(refusal("sfp.49.diagnostics").find("has no diagnostics"), std::string::npos);
    EXPECT_NE(refusal("sfp.49.link", "maybe").find("none of down|up"), std::string::npos);
    set("sfp.49.module", "sr");
    EXPECT_NE(refusal("sfp.49.rx-power", "6554").find("0 to 6553"), std::string::npos);
    EXPECT_NE(refusal("sfp.49.state", "ill").find("none of good|tx-fault|dead"), std::string::npos);
}

} // namespace
