// iodbg capture: what it saves of a unit, and what it does not.

#include "bsp.h"
#include "language/captured_properties.h"
#include "language/captured_unit.h"
#include "tests/iodbg/iodbg_test.h"
#include "tests/support/world.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>

namespace {

using language::CapturedReading;
using language::CapturedUnit;

class CaptureCommandTest : public IodbgTest {
  protected:
    static CapturedUnit read(const std::string &document) {
        return language::readCapture(document);
    }

    CapturedUnit capture(const Words &options = {}) const {
        Words words = {"capture", "-"};
        words.insert(words.end(), options.begin(), options.end());
        const ProcessResult result = iodbg(words);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return read(result.out);
    }

    static std::string textOf(const CapturedUnit &unit, const std::string &name) {
        const CapturedReading *reading = unit.find(name);
        if (reading == nullptr)
            return "nothing";
        if (const auto *failure = reading->failure())
            return failure->name + ": " + failure->message;
        return reading->text() != nullptr ? *reading->text() : std::to_string(*reading->number());
    }

    static std::string reasonFor(const CapturedUnit &unit, const std::string &name) {
        for (const language::LeftOut &item : unit.capture.leftOut) {
            if (item.name == name)
                return item.reason;
        }
        return "nothing";
    }
};

TEST_F(CaptureCommandTest, HasWhatTheUnitTells) {
    world::set("sfp.49.module", "sr");
    world::set("sfp.49.rx-power", "420");
    world::set("sfp.50.module", "copper-mode12");
    world::set("supply.2.present", "no");
    world::set("flash.12.bad-blocks", "3,17");
    ASSERT_EQ(iodbg({"poe", "init"}).exitCode, 0);
    world::set("poe.3.device", "class=4 draws=5000");
    iodbg({"poe", "detect", "3"});
    const CapturedUnit unit = capture();
    for (const CapturedReading &reading : unit.properties)
        EXPECT_TRUE(language::capturedName(reading.name).has_value()) << reading.name;
    const std::pair<const char *, const char *> wanted[] = {
        {"model", "0x0709"},
        {"cmdline", "console=ttyS0,115200 bootver=1.2.3 root=/dev/mtdblock12"},
        {"version.hardware", "A.3"},
        {"version.boot-loader", "1.2.3"},
        {"identity.record", "whole"},
        {"identity.serial", "VB00000001"},
        {"identity.mac", "02:00:5e:10:00:00"},
        {"cpld.1", "1801"},
        {"gpio.19", "1"},
        {"supply.1.present", "yes"},
        {"supply.1.input-voltage", "230000"},
        {"supply.2.present", "no"},
        {"supply.2.input-voltage", "nothing"},
        {"fan.1.speed", "2400"},
        {"rtc.state", "good"},
        {"poe.initialised", "yes"},
        {"poe.3.class", "4"},
        {"poe.3.delivering", "yes"},
        {"poe.3.priority", "3"},
        {"poe.4.delivering", "no"},
        {"poe.4.voltage", "nothing"},
        {"sfp.49.rx-power", "420"},
        {"sfp.49.copper", "0"},
        {"sfp.50.copper", "2"},
        {"sfp.50.diagnostics",
         "BSP_E_FAILED: generic failure: a transfer failed, or the kernel module's node did"},
        {"sfp.50.phy.1", "nothing"},
        {"sfp.51.id", "nothing"},
        {"boot.flag", "none"},
        {"boot.has-password", "no"},
        {"flash.12.geometry", "nand, 42467328 bytes, blocks of 131072, pages of 2048+64"},
        {"flash.12.bad-blocks", "3,17"},
        {"flash.14.crc32", "0xAF004E74"},
    };
    for (const auto &[name, text] : wanted)
        EXPECT_EQ(textOf(unit, name), text) << name;
    EXPECT_EQ(unit.find("eeprom.board")->text()->substr(2 * 256, 16), "444556494e464f00");
    EXPECT_EQ(unit.find("supply.1.input-voltage")->raw, (language::Bytes{0x98, 0xF3}));
    EXPECT_EQ(unit.find("poe.3.mode")->raw->size(), 9U);
    EXPECT_EQ((*unit.find("poe.3.mode")->raw)[0], 2) << "the port, counted from 0";
    EXPECT_EQ(unit.find("sfp.49.diagnostics")->text()->size(), 512U);
    EXPECT_EQ(unit.find("image.1.header")->text()->size(), 1024U);
    EXPECT_EQ(reasonFor(unit, "sfp.50.phy.1"), "reading it clears what it latched");
    EXPECT_NE(reasonFor(unit, "gpio.0"), "nothing");
    EXPECT_NE(reasonFor(unit, "mdio.*"), "nothing");
    EXPECT_TRUE(unit.capture.tool.starts_with("iodbg "));
    EXPECT_EQ(unit.capture.began.size(), 20U);
    EXPECT_TRUE(std::any_of(unit.findings.begin(), unit.findings.end(), [](const auto &finding) {
        return finding.code == "supply-not-plugged" && finding.index == 2 && finding.advice;
    }));
}

TEST_F(CaptureCommandTest, ChangesNothing) {
    useModel(0x0409); // on which nothing goes on by itself
    world::set("sfp.49.module", "copper-mode4");
    iodbg({"capture", "-"}); // the device id is kept from here on
    vb::Devices before = devices();
    capture({"--with-secrets", "--with-flash"});
    vb::Devices after = devices();
    forgetTime(before);
    forgetTime(after);
    EXPECT_EQ(std::memcmp(&before, &after, sizeof(before)), 0);
}

TEST_F(CaptureCommandTest, TakesNoMoreThanAMinuteOfTheBoardsTime) {
    constexpr uint64_t kMinute = 60000000000;
    constexpr uint64_t kReserve = 10000000000; // a unit has more work to do than a test
    world::set("flash.timing", "usual");
    for (uint32_t port = 1; port <= 48; ++port)
        world::set("poe." + std::to_string(port) + ".device", "class=4 draws=5000");
    for (uint32_t port = 49; port <= 54; ++port)
        world::set("sfp." + std::to_string(port) + ".module", "sr");
    ASSERT_EQ(iodbg({"poe", "init"}).exitCode, 0);
    iodbg({"poe", "detect", "1"});
    const uint64_t start = now();
    const CapturedUnit unit = capture();
    EXPECT_LE(now() - start, kMinute - kReserve);
    EXPECT_EQ(textOf(unit, "poe.48.delivering"), "yes");
    EXPECT_EQ(textOf(unit, "poe.48.power"), "5000");
}

TEST_F(CaptureCommandTest, KeepsSecretsToItself) {
    ASSERT_EQ(bspBootPwdSet("Geheim42"), BSP_OK);
    const std::string hidden = iodbg({"capture", "-"}).out;
    EXPECT_EQ(hidden.find("Geheim42"), std::string::npos);
    EXPECT_EQ(hidden.find("47656865696d"), std::string::npos);
    const CapturedUnit without = read(hidden);
    EXPECT_EQ(textOf(without, "boot.has-password"), "yes");
    for (const char *name : {"boot.password", "boot.block", "flash.4.crc32", "flash.4.content"}) {
        EXPECT_EQ(without.find(name), nullptr) << name;
        EXPECT_EQ(reasonFor(without, name), "a secret; --with-secrets takes it along");
    }
    EXPECT_FALSE(without.capture.hasSecrets);
    const CapturedUnit with = capture({"--with-secrets", "--with-flash"});
    EXPECT_EQ(textOf(with, "boot.password"), "Geheim42");
    EXPECT_NE(textOf(with, "boot.block").find("47656865696d"), std::string::npos);
    EXPECT_NE(with.find("flash.4.crc32"), nullptr);
    ASSERT_NE(with.find("flash.4.content")->runs(), nullptr);
    EXPECT_EQ(with.find("flash.4.content")->runs()->at(0).offset, 0U);
    EXPECT_EQ(with.find("flash.4.content")->runs()->at(0).bytes.size(), 256U);
    EXPECT_EQ(with.find("flash.12.content")->runs()->size(), 0U) << "erased";
    EXPECT_TRUE(with.capture.hasSecrets && with.capture.hasFlash);
}

TEST_F(CaptureCommandTest, TellsNobodyWhichUnitItIs) {
    useModel(0x0409);
    world::set("sfp.49.module", "sr");
    const ProcessResult result = iodbg({"capture", "-", "--anonymous"});
    for (const char *telling : {"VB00000001", "02:00:5e", "02:00:5E", "5642303030", "SFP0000049"})
        EXPECT_EQ(result.out.find(telling), std::string::npos) << telling;
    const CapturedUnit unit = read(result.out);
    EXPECT_TRUE(unit.capture.isAnonymous);
    EXPECT_EQ(textOf(unit, "identity.serial"), "ANON000001");
    EXPECT_EQ(textOf(unit, "identity.mac"), "02:00:00:00:01:00");
}

TEST_F(CaptureCommandTest, IsAFileOfItsOwnersOrNone) {
    useModel(0x0409);
    const std::string file = hostFile("unit.json");
    const std::string answer = json({"capture", file});
    EXPECT_EQ(jsonKeys(answer, ""), (Words{"output", "properties", "failed", "left_out", "faults",
                                           "warnings", "failures"}));
    const CapturedUnit unit = read(readFile(file));
    EXPECT_EQ(jsonAt(answer, "/properties"), std::to_string(unit.properties.size()));
    struct stat info = {};
    ASSERT_EQ(stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600U);
    expectRefusal({"capture", file}, 4, "--force");
    EXPECT_EQ(iodbg({"capture", "-", "--json"}).exitCode, 2);
    expectRefusal({"capture", "/nowhere/x"}, 4, "cannot write /nowhere/x");
    {
        const FileSizeLimit limit = limitFiles(2000);
        expectFailure({"capture", file, "--force"}, 4, {"cannot write " + file});
    }
    EXPECT_EQ(read(readFile(file)), unit) << "what was there before stays";
    EXPECT_EQ(
        std::distance(
            std::filesystem::directory_iterator(std::filesystem::path(file).parent_path()), {}),
        1);
    EXPECT_EQ(iodbg({"capture", file, "--force"}).exitCode, 0);
}

TEST_F(CaptureCommandTest, ADeadBusLeavesAWholeDocument) {
    addFault(silence(vb::FaultDevice::I2c, vb::FaultOp::Any));
    const CapturedUnit unit = capture();
    EXPECT_EQ(textOf(unit, "temperature.sensor").substr(0, 2), ": ") << "the driver's own answer";
    EXPECT_TRUE(unit.find("eeprom.board")->hasFailed());
    EXPECT_EQ(reasonFor(unit, "poe.*.*"), "the controller does not answer");
    EXPECT_EQ(textOf(unit, "cpld.1"), "1801");
    EXPECT_EQ(textOf(unit, "flash.14.crc32"), "0xAF004E74");
    EXPECT_TRUE(std::any_of(unit.findings.begin(), unit.findings.end(), [](const auto &finding) {
        return finding.code == "i2c-bus-no-answer";
    }));
}

TEST_F(CaptureCommandTest, WhatHangsOnSomethingElseIsLeftOut) {
    addFault(openFails("/dev/bspHandle", 13));
    const CapturedUnit unit = capture();
    EXPECT_EQ(reasonFor(unit, "fan.*"),
              "hangs on the kernel module: /dev/bspHandle may not be opened");
    EXPECT_EQ(unit.find("fan.1.speed"), nullptr);
    EXPECT_EQ(textOf(unit, "flash.14.crc32"), "0xAF004E74");
    EXPECT_EQ(textOf(unit, "version.boot-loader"), "1.2.3");
}

TEST_F(CaptureCommandTest, ShowsItsProgressOnATerminalAlone) {
    useModel(0x0409);
    EXPECT_TRUE(iodbg({"capture", "-"}).err.starts_with("Saved in "));
    const std::string screen = iodbgOnTerminal({"capture", hostFile("u")}, {}, {24, 100});
    EXPECT_NE(screen.find("left  step 9 of 10, read the flash"), std::string::npos) << screen;
}

} // namespace
