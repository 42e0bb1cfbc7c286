// Twins: a board that is made of a captured unit gives the same capture.

#include "bsp.h"
#include "language/captured_difference.h"
#include "language/captured_properties.h"
#include "tests/iodbg/capture_test.h"
#include "tests/support/world.h"
#include "virtual_board/devices/pmbus_supply.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/twin/flash.h"
#include "virtual_board/twin/twin.h"
#include "virtual_board/words/fault_text.h"

#include "language/formats/crc32.h"

#include <algorithm>
#include <filesystem>
#include <sys/stat.h>

namespace {

using language::CapturedReading;
using language::CapturedUnit;

class CaptureTwinTest : public CaptureTest {
  protected:
    CaptureTwinTest() : CaptureTest(0x0709) {}

    using Settings = std::vector<vb::Assignment>;

    /** A board on which a capture takes no time, with what is set on it. */
    void make(uint32_t devId, const Settings &settings = {}) {
        useModel(devId);
        withoutHeaders();
        for (vb::Flash &flash : devices().flash)
            flash.geometry.size = 4 * flash.geometry.eraseSize;
        vb::setProperties(*vb::attachedFolder(), settings);
    }

    /** Headers of images, for which the library starts programs, are not to be had. */
    void withoutHeaders() const { chmod(boardFile("/tmp/bsp").c_str(), 0777); }

    const std::vector<std::string> kHeaders = {"image.0.header", "image.1.header"};

    void addRule(const char *device, const char *op, const char *offset, const char *effect) {
        vb::FaultWords words;
        words.device = device;
        words.op = op;
        words.offset = offset;
        words.when = "from";
        words.effect = effect;
        addFault(vb::parseFault(words));
    }

    /** Replaces the board by the twin of a unit; what it does not have of it. */
    std::vector<std::string> becomeTwin(const CapturedUnit &unit,
                                        std::vector<std::string> *reasons = nullptr) {
        vb::detachBoard();
        std::filesystem::remove_all(boardFolder());
        const CapturedUnit read = language::readCapture(language::writtenCapture(unit));
        std::vector<std::string> gaps;
        vb::BoardOptions options = vb::twinOptions(read);
        options.pace = {vb::TimeMode::Virtual};
        const auto furnish = [&](const vb::BoardFolder &folder) {
            for (const vb::TwinGap &gap : vb::furnishTwin(folder, read)) {
                gaps.push_back(gap.name);
                if (reasons != nullptr)
                    reasons->push_back(gap.name + ": " + gap.reason);
            }
        };
        vb::FolderError error = {};
        EXPECT_TRUE(vb::createBoard(boardFolder(), options, furnish, error)) << error.text;
        EXPECT_TRUE(vb::attachBoard(boardFolder().c_str(), error)) << error.text;
        withoutHeaders();
        return gaps;
    }

    /** The board's twin tells what the board told; what it does not have. */
    std::vector<std::string> roundTrip(bool hasSecrets = true) {
        const CapturedUnit first = capture(hasSecrets);
        std::vector<std::string> gaps = becomeTwin(first);
        const CapturedUnit second = capture(hasSecrets);
        expectSame(first, second);
        return gaps;
    }

    static void expectSame(const CapturedUnit &first, const CapturedUnit &second) {
        for (const auto &difference :
             language::differencesOf(first, second, language::CaptureDetail::All)) {
            if (!isClock(difference.name))
                ADD_FAILURE() << difference.name << ": " << difference.first.value_or("nothing")
                              << ", and of the twin " << difference.second.value_or("nothing");
        }
        EXPECT_EQ(namesOf(first), namesOf(second));
        EXPECT_EQ(first.capture.leftOut, second.capture.leftOut);
        EXPECT_EQ(verdictsOf(first), verdictsOf(second));
    }

  private:
    static bool isClock(const std::string &name) {
        const auto known = language::capturedName(name);
        return known && (known->row->compared == language::Compared::Clock ||
                         known->row->compared == language::Compared::Counter);
    }

    static std::vector<std::string> namesOf(const CapturedUnit &unit) {
        std::vector<std::string> names;
        for (const CapturedReading &reading : unit.properties) {
            const std::string failed =
                reading.hasFailed() ? " " + std::to_string(reading.failure()->status) : "";
            names.push_back(reading.name + failed);
        }
        return names;
    }

    static std::vector<std::string> verdictsOf(const CapturedUnit &unit) {
        std::vector<std::string> verdicts;
        for (const language::CapturedFinding &finding : unit.findings)
            verdicts.push_back(finding.subject + ": " + finding.code);
        return verdicts;
    }
};

TEST_F(CaptureTwinTest, SettingsThatWereNeverStoredAreNotStoredThere) {
    inChild([this] {
        make(0x0709);
        roundTrip(false);
    });
}

TEST_F(CaptureTwinTest, OfEveryModel) {
    inChild([this] {
        for (const vb::Model &model : vb::kModels) {
            SCOPED_TRACE(model.description);
            make(model.devId);
            EXPECT_EQ(roundTrip(), kHeaders);
        }
    });
}

TEST_F(CaptureTwinTest, OfABlankUnit) {
    inChild([this] {
        make(0x0709, {{"eeprom.board", std::string(2048, 'f')}, {"cmdline", ""}});
        EXPECT_EQ(roundTrip(), kHeaders);
        make(0x0709, {{"eeprom.board@0x10", "5a"}}); // the record's CRC is not its own
        EXPECT_EQ(roundTrip(), kHeaders);
    });
}

TEST_F(CaptureTwinTest, OfModulesWithTheirPagesAndLight) {
    inChild([this] {
        make(0x0709, {{"sfp.49.module", "sr"},
                      {"sfp.49.rx-power", "420"},
                      {"sfp.50.module", "lr"},
                      {"sfp.51.module", "dac"},
                      {"sfp.51.link", "up"},
                      {"sfp.52.module", "copper-mode12"},
                      {"sfp.52.link", "up"},
                      {"sfp.53.module", "dead"},
                      {"sfp.54.module", "sr"},
                      {"sfp.54.state", "tx-fault"},
                      {"sfp.49.id@0x28", "414243"}});
        roundTrip();
        EXPECT_EQ(world::get("sfp.49.rx-power"), "420");
        world::set("sfp.49.rx-power", "13");
        const CapturedUnit unit = capture();
        EXPECT_EQ(*unit.find("sfp.49.rx-power")->number(), 13) << "it is a module like others";
    });
}

TEST_F(CaptureTwinTest, OfOtherKindsOfModules) {
    inChild([this] {
        make(0x0809, {{"sfp.25.module", "sx"},
                      {"sfp.25.link", "up"},
                      {"sfp.26.module", "copper-mode4"},
                      {"sfp.27.module", "copper-other"},
                      {"sfp.28.module", "sr"},
                      {"sfp.28.state", "dead"},
                      {"sfp.30.module", "lr"},
                      {"sfp.30.rx-power", "1"}});
        roundTrip();
    });
}

TEST_F(CaptureTwinTest, OfPoweredDevices) {
    inChild([this] {
        make(0x0709, {{"poe.3.device", "class=4 draws=18000"},
                      {"poe.4.device", "class=2 draws=3100"},
                      {"poe.8.device", "class=3 over-current"},
                      {"poe.9.device", "signature=bad"},
                      {"poe.10.device", "signature=short"},
                      {"poe.11.device", "class=8 requests=71000 draws=60000"}});
        {
            const Quiet quiet;
            ASSERT_EQ(ioPoeDeviceInit(), BSP_OK);
            ASSERT_EQ(ioPoeGlobalMaxPowerSet(200000), BSP_OK);
        }
        sleep(5);
        ASSERT_EQ(world::get("poe.3.state"), "delivering");
        ASSERT_EQ(world::get("poe.8.state"), "fault");
        roundTrip();
        EXPECT_EQ(world::get("poe.3.state"), "delivering");
        EXPECT_EQ(world::get("poe.8.state"), "fault");
        sleep(60); // and it stays so
        EXPECT_EQ(world::get("poe.3.state"), "delivering");
        EXPECT_EQ(world::get("poe.11.state"), "delivering");
        world::set("poe.3.device", "none");
        sleep(1);
        EXPECT_NE(world::get("poe.3.state"), "delivering") << "it is a port like others";
    });
}

TEST_F(CaptureTwinTest, OfPowerThatIsNotEnoughForAll) {
    inChild([this] {
        make(0x0709,
             {{"poe.3.device", "class=4 draws=18000"}, {"poe.4.device", "class=4 draws=24000"}});
        {
            const Quiet quiet;
            ASSERT_EQ(ioPoeDeviceInit(), BSP_OK);
            ASSERT_EQ(ioPoeGlobalMaxPowerSet(40000), BSP_OK);
        }
        sleep(5);
        ASSERT_EQ(world::get("poe.4.state"), "denied");
        roundTrip();
        EXPECT_EQ(world::get("poe.4.state"), "denied");
    });
}

TEST_F(CaptureTwinTest, OfAControllerThatIsMissingOrSilent) {
    inChild([this] {
        make(0x0709, {{"poe.controller", "missing"}});
        roundTrip();
        make(0x0709, {{"gpio.19", "0"}});
        roundTrip();
        make(0x0709);
        addRule("poe", "write", "", "no-answer");
        roundTrip();
    });
}

TEST_F(CaptureTwinTest, OfSupplies) {
    inChild([this] {
        make(0x0709, {{"supply.1.input", "failed"},
                      {"supply.2.output-voltage", "53210"},
                      {"supply.2.temperature2", "-7"},
                      {"eeprom.supply2@0xd8", "414243"}});
        roundTrip();
        make(0x0709, {{"supply.1.output", "failed"}, {"supply.2.present", "no"}});
        roundTrip();
        make(0x0709, {{"supply.1.line.status0", "1"}, {"supply.1.line.status2", "0"}});
        roundTrip();
    });
}

TEST_F(CaptureTwinTest, OfASupplyThatWritesItsWordsInItsOwnWay) {
    inChild([this] {
        make(0x0709);
        vb::PmbusSupply &supply = devices().supply[0].pmbus;
        vb::pmbusTell(supply, 0x88, 0x00E6); // 230 x 1
        vb::pmbusTell(supply, 0x8D, 0x07F9); // -7 x 1
        vb::pmbusTell(supply, 0x8C, 0x7FFF); // more than any amount
        vb::pmbusTell(supply, 0x8B, 0xFFFF);
        const CapturedUnit first = capture();
        ASSERT_EQ(*first.find("supply.1.input-voltage")->number(), 230000);
        becomeTwin(first);
        const CapturedUnit second = capture();
        expectSame(first, second);
        for (const char *name :
             {"supply.1.input-voltage", "supply.1.output-voltage", "supply.1.output-current",
              "supply.1.temperature1", "supply.1.output-power", "supply.2.input-current"})
            EXPECT_EQ(first.find(name)->raw, second.find(name)->raw) << name;
        EXPECT_EQ(world::get("supply.1.input-voltage"), "230000");
        EXPECT_EQ(world::get("supply.1.temperature1"), "-7");
        world::set("supply.1.input-voltage", "115000");
        EXPECT_EQ(*capture().find("supply.1.input-voltage")->number(), 115000);
    });
}

TEST_F(CaptureTwinTest, OfFansAndTemperature) {
    inChild([this] {
        make(0x0709, {{"fan.1.state", "stuck"},
                      {"fan.2.state", "failing"},
                      {"fan.2.present", "no"},
                      {"temperature.ambient", "41"}});
        sleep(1200);
        roundTrip();
        EXPECT_EQ(world::get("temperature.state"), "good");
        make(0x0709, {{"temperature.state", "missing"}});
        roundTrip();
    });
}

TEST_F(CaptureTwinTest, OfAFanThatTurnsAsNoneHere) {
    inChild([this] {
        make(0x0709, {{"cpld.28", "0x001b"}}); // 27 x 120 rpm, at the lowest level
        const CapturedUnit first = capture();
        ASSERT_EQ(*first.find("fan.1.speed")->number(), 3240);
        becomeTwin(first);
        expectSame(first, capture());
        EXPECT_EQ(world::get("fan.1.state"), "held");
        sleep(600);
        EXPECT_EQ(world::get("fan.1.speed"), "3240");
    });
}

TEST_F(CaptureTwinTest, OfClocks) {
    inChild([this] {
        for (const char *settings : {"rtc.battery=empty", "rtc.time=2051-02-28 23:59:50"}) {
            const std::string word = settings;
            const size_t equals = word.find('=');
            make(0x0709, {{word.substr(0, equals), word.substr(equals + 1)}});
            if (equals == std::string("rtc.battery").size())
                world::set("power", "cycle");
            withoutHeaders();
            roundTrip();
        }
    });
}

TEST_F(CaptureTwinTest, OfRegistersAndAWatchdogThatNobodyFeeds) {
    inChild([this] {
        make(0x0709, {{"cpld.7", "0x0063"}, {"cpld.13", "0x1234"}});
        ASSERT_EQ(bspCpldSet(4, 60 << 2 | 1), BSP_OK);
        roundTrip();
        sleep(3600);
        EXPECT_EQ(world::get("reset.count"), "0");
    });
}

TEST_F(CaptureTwinTest, OfBadBlocksAndWhatFlashHolds) {
    inChild([this] {
        make(0x0709, {{"flash.12.bad-blocks", "0,3"},
                      {"flash.14.write-protected", "yes"},
                      {"flash.14.content@0x100", "00112233"},
                      {"flash.4.content", "6d61696e5f73797374656d3d31"}});
        const auto lacks = [](const std::vector<std::string> &gaps, const char *name) {
            return std::find(gaps.begin(), gaps.end(), name) != gaps.end();
        };
        const std::vector<std::string> gaps = roundTrip();
        EXPECT_TRUE(lacks(gaps, "flash.14.content")) << "its checksum alone is the unit's";
        EXPECT_FALSE(lacks(gaps, "flash.12.content"));
        EXPECT_EQ(world::get("flash.14.content@0x100+4"), "ffffffff");
    });
}

TEST_F(CaptureTwinTest, OfSettingsWithoutTheirSecrets) {
    inChild([this] {
        make(0x0709);
        {
            const Quiet quiet;
            ASSERT_EQ(ioBootModeSet(1), BSP_OK);
            ASSERT_EQ(ioBootPwdSet("verysecret"), BSP_OK);
            ASSERT_EQ(ioUserPwdValidSet(0), BSP_OK);
        }
        const std::vector<std::string> gaps = roundTrip(false);
        EXPECT_NE(std::find(gaps.begin(), gaps.end(), "boot.password"), gaps.end());
    });
}

TEST_F(CaptureTwinTest, OfReadingsThatFail) {
    constexpr struct {
        const char *device, *op, *offset, *effect;
    } kRules[] = {
        {"cpld", "read", "7", "refuse=-5"},
        {"gpio", "read", "19", "refuse=-71"},
        {"i2c:0.0.0x50", "read", "", "no-answer"},
        {"i2c:0.1.0x4f", "read", "", "refuse=-110"},
        {"i2c:0.1.0x51", "read", "", "no-answer"},
        {"i2c:0.3.0x50", "read", "", "no-answer"},
        {"i2c:0.2.0x58", "read", "0x97", "no-answer"},
        {"mtd14", "read", "", "fails=EIO"},
        {"/dev/mtd0", "open", "", "open-fails=EIO"},
        {"i2c:0.3.0x58", "any", "", "refuse=-71"},
        {"i2c:1.0.0x50", "read", "", "refuse=-110"},
        {"i2c:1.0.0x51", "read", "", "refuse=-6"},
        {"poe", "write", "", "bad-port=2"},
        {"poe", "write", "0x49", "bad-port=5"},
        {"poe", "write", "0x4b", "no-answer"},
        {"i2c", "any", "", "refuse=-5"},
    };
    inChild([&, this] {
        for (const auto &rule : kRules) {
            SCOPED_TRACE(rule.device);
            make(0x0809, {{"sfp.25.module", "sr"}}); // half of the ports take half of the time
            addRule(rule.device, rule.op, rule.offset, rule.effect);
            std::vector<std::string> told = kHeaders;
            if (rule.device == std::string("mtd14"))
                told.pop_back(); // it fails as the flash does
            EXPECT_EQ(roundTrip(), told);
        }
    });
}

TEST_F(CaptureTwinTest, OfPartitionsThatCannotBeOpenedForDifferentReasons) {
    inChild([this] {
        make(0x0709);
        addRule("/dev/mtd4", "open", "", "open-fails=ENOENT");
        addRule("/dev/mtd12", "open", "", "open-fails=EACCES");
        addRule("/dev/mtd14", "open", "", "open-fails=EIO");
        roundTrip();
    });
}

TEST_F(CaptureTwinTest, TellsReadingsThatCannotFailAgain) {
    inChild([this] {
        make(0x0709, {{"sfp.49.module", "sr"}});
        addRule("poe", "write", "0x42", "no-answer");
        const std::vector<std::string> gaps = becomeTwin(capture());
        EXPECT_EQ(std::count(gaps.begin(), gaps.end(), "poe.1.detection"), 0);
        EXPECT_EQ(std::count(gaps.begin(), gaps.end(), "poe.2.detection"), 1);
    });
}

TEST_F(CaptureTwinTest, TellsNumbersThatNoBoardHasRoomFor) {
    constexpr struct {
        const char *name;
        int64_t number;
        const char *reason;
    } kNumbers[] = {
        {"cpld.13", 74565, "74565 is not from 0 to 65535"},
        {"cpld.7", -1, "-1 is not from 0 to 65535"},
        {"gpio.19", 7, "7 is not from 0 to 1"},
        {"temperature.sensor", int64_t{1} << 40, "1099511627776 is not from -128 to 127"},
        {"fan.1.speed", -5, "-5 is not from 0 to 9223372036854775807"},
        {"fan.2.speed", 1000000, "no fan of this board is so fast"}};
    constexpr struct {
        const char *name, *text, *reason;
    } kTexts[] = {{"rtc.registers", "0011", "there are 6 of them"},
                  {"flash.14.crc32", "zz", "'zz' is no checksum"}};
    inChild([&, this] {
        make(0x0709);
        CapturedUnit unit = capture();
        const auto reading = [&unit](const char *name) -> language::CapturedContent & {
            const auto found =
                std::find_if(unit.properties.begin(), unit.properties.end(),
                             [name](const CapturedReading &one) { return one.name == name; });
            EXPECT_NE(found, unit.properties.end()) << name;
            return found->content;
        };
        std::vector<std::string> expected;
        for (const auto &row : kNumbers) {
            reading(row.name) = row.number;
            expected.push_back(std::string(row.name) + ": " + row.reason);
        }
        for (const auto &row : kTexts) {
            reading(row.name) = std::string(row.text);
            expected.push_back(std::string(row.name) + ": " + row.reason);
        }
        std::vector<std::string> told;
        becomeTwin(unit, &told);
        for (const std::string &line : expected)
            EXPECT_EQ(std::count(told.begin(), told.end(), line), 1) << line;
        EXPECT_EQ(told.size(), expected.size() + kHeaders.size());
    });
}

TEST_F(CaptureTwinTest, NeedsAModelThatThereIs) {
    inChild([this] {
        make(0x0709);
        CapturedUnit unit = capture();
        const auto refusal = [&unit] {
            try {
                vb::twinOptions(unit);
            } catch (const vb::Refused &refused) {
                return std::string(refused.what());
            }
            return std::string("accepted");
        };
        EXPECT_EQ(unit.properties[0].name, "model");
        unit.properties[0].content = "0x1234";
        EXPECT_EQ(refusal(), "the unit is of model '0x1234', which is none of those that 'vboard "
                             "list-models' lists");
        unit.properties[0].content = language::CapturedFailure{-5, "", "x"};
        EXPECT_EQ(refusal(),
                  "the document does not tell the model: the unit could not be asked for it");
        unit.properties.clear();
        EXPECT_NE(refusal(), "accepted");
    });
}

TEST(TwinFlashTest, FourBytesMakeAChecksum) {
    const std::vector<uint8_t> data = {1, 2, 3, 4, 5};
    const uint32_t before = formats::crc32(0, data.data(), 5);
    for (const uint32_t wanted : {0x12345678U, 0U, 0xFFFFFFFFU, 0xCBF43926U}) {
        const uint32_t filler = vb::bytesBetween(before, wanted);
        const uint8_t bytes[] = {static_cast<uint8_t>(filler), static_cast<uint8_t>(filler >> 8),
                                 static_cast<uint8_t>(filler >> 16),
                                 static_cast<uint8_t>(filler >> 24)};
        EXPECT_EQ(formats::crc32(before, bytes, 4), wanted);
    }
}

TEST(TwinFlashTest, GeometriesAreRead) {
    const vb::FlashGeometry geometry =
        vb::parseGeometryText("nand, 42467328 bytes, blocks of 131072, pages of 2048+64");
    EXPECT_EQ(geometry.size, 42467328U);
    EXPECT_EQ(geometry.eraseSize, 131072U);
    EXPECT_EQ(geometry.pageSize, 2048U);
    EXPECT_EQ(geometry.spareSize, 64U);
    EXPECT_EQ(geometry.type, vb::FlashType::Nand);
    for (const char *text : {"", "nand", "other, 262144 bytes, blocks of 131072, pages of 2048",
                             "nand, 1 bytes, blocks of 131072, pages of 2048",
                             "nand, 262144 bytes, blocks of 131072, pages of 2048+64x"})
        EXPECT_THROW(vb::parseGeometryText(text), vb::Refused) << text;
}

} // namespace
