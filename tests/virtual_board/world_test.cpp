// The world's side of a board by name.

#include "virtual_board/words/world.h"

#include "bsp.h"
#include "language/properties.h"
#include "tests/support/virtual_board_test.h"
#include "tests/support/world.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using world::get;
using world::refusal;
using world::set;

using WorldTest = VirtualBoardTest;

TEST_F(WorldTest, ANewBoard) {
    EXPECT_EQ(get("model"), "0x0709");
    EXPECT_EQ(get("time"), "virtual");
    EXPECT_EQ(get("clock"), "0.000000000");
    EXPECT_EQ(get("cmdline"), "console=ttyS0,115200 bootver=1.2.3 root=/dev/mtdblock12");
    EXPECT_EQ(get("identity.serial"), "VB00000001");
    EXPECT_EQ(get("identity.mac"), "02:00:5e:10:00:00");
    EXPECT_EQ(get("supply.1.present"), "yes");
    EXPECT_EQ(get("cpld.2"), "0x1312");
    EXPECT_EQ(get("gpio.31"), "0");
    EXPECT_EQ(get("gpio.0.direction"), "input");
    EXPECT_EQ(get("eeprom.board@256+8"), "444556494e464f00");
    EXPECT_EQ(get("eeprom.board").size(), 2048u);
    EXPECT_EQ(get("eeprom.supply2").size(), 512u);
}

/** How many of a subject a board of model 0x0709 has. */
size_t countOf(language::Subject subject) {
    switch (subject) {
    case language::Subject::Register:
        return 64;
    case language::Subject::Line:
        return 32;
    case language::Subject::MdioRegister:
        return 32 * 32;
    case language::Subject::PoePort:
        return 48;
    case language::Subject::Cage:
        return 6;
    case language::Subject::Partition:
        return 4;
    case language::Subject::Supply:
    case language::Subject::PlugInSupply:
    case language::Subject::Fan:
        return 2;
    case language::Subject::Board:
    case language::Subject::PoeController:
    case language::Subject::ClockChip:
        return 1;
    }
    return 0;
}

TEST_F(WorldTest, TheListHasEveryPropertyWithItsValue) {
    size_t expected = 0;
    for (const language::Property &property : language::properties())
        expected += property.isLong ? 0 : countOf(property.subject);
    const std::vector<vb::Property> all = vb::properties(*vb::attachedFolder());
    EXPECT_EQ(all.size(), expected);
    for (const vb::Property &property : all)
        EXPECT_EQ(property.value, get(property.name)) << property.name;
    // Idle are most registers, all lines but one, lamps, the faults that supplies and fans do not
    // have, PoE with its ports, and the empty cages.
    const auto idle = std::count_if(all.begin(), all.end(),
                                    [](const vb::Property &property) { return property.isIdle; });
    EXPECT_EQ(idle, 375);
}

TEST_F(WorldTest, WhatIsSetIsWhatProgramsSee) {
    set("cpld.1", "0x0109");
    uint16_t value = 0;
    EXPECT_EQ(bspCpldGet(1, &value), BSP_OK);
    EXPECT_EQ(value, 0x0109);

    set("gpio.7", "1");
    uint32_t level = 0;
    EXPECT_EQ(bspGpioGetValue(7, &level), BSP_OK);
    EXPECT_EQ(level, 1u);

    set("eeprom.board@0x1f", "a1B2");
    uint8_t bytes[2] = {};
    EXPECT_EQ(bspI2cRead(0, 0, 0x50, 0x1F, 1, bytes, 2), BSP_OK);
    EXPECT_EQ(bytes[0], 0xA1);
    EXPECT_EQ(bytes[1], 0xB2);
    EXPECT_EQ(get("eeprom.board@31+2"), "a1b2");

    set("supply.2.present", "no");
    EXPECT_NE(bspI2cRead(0, 3, 0x50, 0, 1, bytes, 1), BSP_OK);
    EXPECT_EQ(get("supply.1.present"), "yes");
    EXPECT_EQ(get("supply.2.present"), "no");
    set("eeprom.supply2@255", "5a"); // in the workshop, a chip can be written while unplugged
    set("supply.2.present", "yes");
    EXPECT_EQ(bspI2cRead(0, 3, 0x50, 255, 1, bytes, 1), BSP_OK);
    EXPECT_EQ(bytes[0], 0x5A);
}

TEST_F(WorldTest, ALineShowsWhatTheProcessorDrives) {
    EXPECT_EQ(bspGpioDirectionOutput(7, 1), BSP_OK);
    EXPECT_EQ(get("gpio.7"), "1");
    EXPECT_EQ(get("gpio.7.direction"), "output");
    set("gpio.7", "0");
    EXPECT_EQ(get("gpio.7"), "1");
    EXPECT_EQ(bspGpioDirectionInput(7), BSP_OK);
    EXPECT_EQ(get("gpio.7"), "0");
}

TEST_F(WorldTest, TheIdentityIsSetWithItsChecksum) {
    set("identity.serial", "SN 42");
    set("identity.mac", "02:aB:00:00:00:ff");
    EXPECT_EQ(get("identity.serial"), "SN 42");
    EXPECT_EQ(get("identity.mac"), "02:ab:00:00:00:ff");
    BspDevinfo record = {};
    EXPECT_EQ(bspLocalPieGet(&record), BSP_OK); // judges the checksum
    uint8_t mac[6] = {};
    EXPECT_EQ(bspMacAddrGet(0, mac), BSP_OK);
    EXPECT_EQ(mac[1], 0xAB);
    char serial[40] = {};
    uint32_t length = 0;
    EXPECT_EQ(bspSerialNumGet(serial, &length), BSP_OK);
    EXPECT_EQ(std::string(serial, length), "SN 42");
}

TEST_F(WorldTest, ASerialNumberThatIsNotTextIsShownEscaped) {
    set("eeprom.board@320", "41ff0a5c");
    EXPECT_EQ(get("identity.serial").substr(0, 13), "A\\xff\\x0a\\x5c");
}

TEST_F(WorldTest, ASerialNumberIsSetAsItIsShown) {
    set("identity.serial", "S\\42");
    EXPECT_EQ(get("identity.serial"), "S\\x5c42");
    set("eeprom.board@320", "41ff0a5c785c78343100");
    const std::string shown = get("identity.serial");
    EXPECT_EQ(shown, "A\\xff\\x0a\\x5cx\\x5cx41");
    set("identity.serial", "SN42");
    set("identity.serial", shown);
    EXPECT_EQ(get("identity.serial"), shown);
    EXPECT_EQ(get("eeprom.board@320+10"), "41ff0a5c785c78343100");

    set("identity.serial", std::string(28, 'S') + "\\xff\\x0A\\x5c");
    EXPECT_EQ(get("eeprom.board@348+4"), "ff0a5c00") << "31 characters, however they are shown";
    EXPECT_NE(refusal("identity.serial", std::string(29, 'S') + "\\xff\\x0a\\x5c").find("1 to 31"),
              std::string::npos);
}

TEST_F(WorldTest, TheCommandLineIsOneLine) {
    set("cmdline", "bootver=9.8.7");
    std::string content;
    std::getline(std::ifstream(boardFile("/proc/cmdline")), content, '\0');
    EXPECT_EQ(content, "bootver=9.8.7\n");
    EXPECT_EQ(get("cmdline"), "bootver=9.8.7");
    EXPECT_NE(refusal("cmdline", "a\nb").find("printable"), std::string::npos);
    EXPECT_EQ(get("cmdline"), "bootver=9.8.7");
    EXPECT_FALSE(std::filesystem::exists(boardFolder() + "/cmdline.new"));
}

TEST_F(WorldTest, TheClockGoesOnWhenItsKindChanges) {
    usleep(2500000);
    EXPECT_EQ(get("clock"), "2.500000000");
    set("time", "real");
    const std::string later = get("clock");
    EXPECT_GE(later, "2.500000000");
    EXPECT_LT(later, "9");
    set("time", "virtual");
    const std::string still = get("clock");
    EXPECT_GE(still, later);
    EXPECT_EQ(get("clock"), still);
}

TEST_F(WorldTest, ARealClockDoesNotRunBehindItsStart) {
    vb::Clock clock = {};
    clock.anchorHostNs = 1000;
    EXPECT_EQ(vb::clockNow(clock, 999), 0u);
    EXPECT_EQ(vb::clockNow(clock, 1007), 7u);
}

TEST_F(WorldTest, BadNamesAndValuesAreRefusedWithWhatWouldBeRight) {
    const struct {
        const char *name, *value, *reason;
    } cases[] = {
        {"model", "0x0109", "can only be read"},
        {"clock", "1", "can only be read"},
        {"gpio.1.direction", "input", "can only be read"},
        {"time", "fast",
         "time: 'fast' is none of real|virtual|stepped, and no rate from x0.001 to x1000"},
        {"cpld.64", "0", "the numbers are 0 to 63"},
        {"cpld.-1", "0", "there is no property"},
        {"cpld.", "0", "there is no property"},
        {"cpld.1x", "0", "there is no property"},
        {"cpld.1@2", "0", "has no parts"},
        {"cpld.1", "0x10000", "cpld.1: '0x10000' is not a number from 0 to 65535"},
        {"cpld.1", "", "not a number from 0 to 65535"},
        {"cpld.1", "0x", "not a number from 0 to 65535"},
        {"gpio.32", "0", "the numbers are 0 to 31"},
        {"gpio.1", "2", "not a number from 0 to 1"},
        {"supply.0.present", "no", "the numbers are 1 to 2"},
        {"supply.3.present", "no", "the numbers are 1 to 2"},
        {"supply.1.present", "maybe", "is none of no|yes"},
        {"eeprom.board", "abc", "two hexadecimal digits for each"},
        {"eeprom.board", "0g", "other characters than hexadecimal digits"},
        {"eeprom.board", "+1", "other characters than hexadecimal digits"},
        {"eeprom.board", "", "two hexadecimal digits for each"},
        {"eeprom.board@1023", "0000", "would end behind"},
        {"eeprom.board@4294967295", "00", "would end behind"},
        {"eeprom.board@0+1", "00", "leave out '+LENGTH'"},
        {"eeprom.board@x", "00", "'x' is not a number"},
        {"eeprom.supply1@256", "00", "would end behind"},
        {"eeprom.supply3", "00", "the numbers are 1 to 2"},
        {"identity.serial", "", "1 to 31 printable"},
        {"identity.serial", "12345678901234567890123456789012", "1 to 31 printable"},
        {"identity.mac", "02:00:5e:10:00", "six bytes as AA:BB:CC:DD:EE:FF"},
        {"identity.mac", "02:00:5e:10:00:0g", "six bytes as AA:BB:CC:DD:EE:FF"},
        {"identity.mac", "02-00-5e-10-00-00", "six bytes as AA:BB:CC:DD:EE:FF"},
        {"nothing", "0", "'vboard get DIR' lists them"},
    };
    const vb::Devices before = devices();
    for (const auto &[name, value, reason] : cases)
        EXPECT_NE(refusal(name, value).find(reason), std::string::npos)
            << name << "=" << value << ": " << refusal(name, value);
    EXPECT_EQ(std::memcmp(&before, &devices(), sizeof(before)), 0);
    for (const char *name : {"eeprom.board@0+0", "eeprom.board@1024", "eeprom.board@1000+25",
                             "eeprom.board@1+4294967295"})
        EXPECT_NE(refusal(name).find("@OFFSET+LENGTH"), std::string::npos) << refusal(name);
}

TEST_F(WorldTest, ADeviceIsPluggedIntoAPortAndComesUp) {
    EXPECT_EQ(get("poe.controller"), "application");
    EXPECT_EQ(get("poe.5.device"), "none");
    set("poe.5.device", "class=6 draws=40000 requests=51000");
    EXPECT_EQ(get("poe.5.device"), "class=6 signature=good requests=51000 draws=40000");
    EXPECT_EQ(get("poe.5.state"), "disabled");
    ASSERT_EQ(bspPoeDeviceInit(), BSP_OK);
    usleep(1000000);
    EXPECT_EQ(get("poe.5.state"), "delivering");
    set("poe.5.device", "class=6 signature=bad draws=40000 requests=51000 over-current");
    usleep(60000);
    EXPECT_EQ(get("poe.5.state"), "fault");
    set("poe.5.device", "none");
    usleep(500000);
    EXPECT_EQ(get("poe.5.state"), "idle");
    set("poe.controller", "missing");
    EXPECT_EQ(get("poe.controller"), "missing");
    EXPECT_EQ(bspPoeGlobalMaxPowerSet(1000), BSP_E_POE_UNAVAILABLE);
    set("poe.controller", "present");
    EXPECT_EQ(bspPoeGlobalMaxPowerSet(1000), BSP_OK);
}

TEST_F(WorldTest, BadDevicesAreRefused) {
    const struct {
        const char *value, *reason;
    } cases[] = {{"", "'none' or its parts"},
                 {"class=9", "poe.1.device: class: '9' is not a number from 0 to 8"},
                 {"class", "class: '' is not a number from 0 to 8"},
                 {"signature=nice", "signature: 'nice' is none of good|bad|legacy|short|open"},
                 {"draws=200001", "draws: '200001' is not a number from 0 to 200000"},
                 {"colour=red", "no part of a device"}};
    for (const auto &[value, reason] : cases)
        EXPECT_NE(refusal("poe.1.device", value).find(reason), std::string::npos)
            << refusal("poe.1.device", value);
    EXPECT_EQ(get("poe.1.device"), "none");
    EXPECT_NE(refusal("poe.49.device").find("1 to 48"), std::string::npos);
    useModel(0x0809);
    EXPECT_NE(refusal("poe.25.device").find("1 to 24"), std::string::npos);
    useModel(0x0309);
    EXPECT_NE(refusal("poe.1.device").find("it has no PoE"), std::string::npos);
}

TEST_F(WorldTest, SuppliesAreSetAndRead) {
    set("supply.1.output-voltage", "53000");
    set("supply.1.temperature2", "-7");
    BspPowerInfo info = {};
    EXPECT_EQ(bspPowerInfoGet(1, &info), BSP_OK);
    EXPECT_EQ(info.outputVoltage, 53000);
    EXPECT_EQ(info.temperature2, -7);

    int32_t value = 7;
    set("supply.2.input", "failed");
    EXPECT_EQ(bspPowerStatusGet(2, &value), BSP_OK);
    EXPECT_EQ(value, 1);
    set("supply.2.input", "good");
    set("supply.2.output", "failed");
    EXPECT_EQ(bspPowerStatusGet(2, &value), BSP_OK);
    EXPECT_EQ(value, 4);
    set("supply.2.line.presence", "1");
    EXPECT_EQ(bspPowerPresentGet(2, &value), BSP_OK);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(bspPowerPresentGet(1, &value), BSP_OK);
    EXPECT_EQ(value, 0);
    set("supply.1.line.type", "0");
    EXPECT_EQ(bspPowerTypeGet(1, &value), BSP_OK);
    EXPECT_EQ(value, 2);
    EXPECT_NE(refusal("supply.1.temperature1", "--1").find("-1000 to 1000"), std::string::npos);
    EXPECT_NE(refusal("supply.1.input", "bad").find("is none of good|failed"), std::string::npos);
}

TEST_F(WorldTest, WatchdogResetAndPowerAreShown) {
    EXPECT_EQ(get("watchdog.expires"), "off");
    EXPECT_EQ(bspWatchdogPeriodSet(2), BSP_OK);
    usleep(500000);
    EXPECT_EQ(get("watchdog.expires"), "1.500000000");
    set("gpio.0", "1"); // an edge from the board's side counts, too
    EXPECT_EQ(get("watchdog.expires"), "2.000000000");
    usleep(2000000);
    EXPECT_EQ(get("reset.count"), "1");
    EXPECT_EQ(get("reset.reason"), "watchdog");
    EXPECT_EQ(bspCpldSet(7, 1), BSP_OK);
    set("power", "cycle");
    EXPECT_EQ(get("cpld.7"), "0x0000");
    EXPECT_EQ(get("reset.count"), "2");
    EXPECT_EQ(get("reset.reason"), "power-on");
    EXPECT_EQ(bspPtpTriggerSet(1), BSP_OK);
    EXPECT_EQ(get("ptp.pulses"), "1");
}

TEST_F(WorldTest, WhatIsInMemoryIsGoneWithThePower) {
    writeBoardFile("/tmp/bsp/poeApp", "\2");
    writeBoardFile("/tmp/bspPoeLockFile", "");
    const timespec later = {2000000000, 0};
    EXPECT_EQ(clock_settime(CLOCK_REALTIME, &later), 0);
    EXPECT_NE(get("system-clock"), "host");
    set("power", "cycle");
    EXPECT_NE(access("/tmp/bsp/poeApp", F_OK), 0);
    EXPECT_NE(access("/tmp/bspPoeLockFile", F_OK), 0);
    EXPECT_EQ(access("/tmp/bsp", W_OK), 0);
    EXPECT_EQ(get("system-clock"), "host");
    ASSERT_EQ(mkdir("/tmp/bsp/folder", 0755), 0);
    ASSERT_EQ(mkdir("/tmp/bsp/folder/inner", 0755), 0);
    writeBoardFile("/tmp/bsp/folder/inner/file", "");
    const int shared = open("/tmp/bsp", O_RDONLY | O_DIRECTORY);
    struct stat info = {};
    set("power", "cycle");
    EXPECT_NE(access("/tmp/bsp/folder", F_OK), 0);
    EXPECT_EQ(mkdirat(shared, "again", 0755), 0) << "programs may be in it";
    EXPECT_EQ(rmdir("/tmp/bsp/again"), 0);
    close(shared);
    ASSERT_EQ(rmdir("/tmp/bsp"), 0); // nor does its loss outlive the power
    const mode_t mask = umask(077);
    set("power", "cycle");
    umask(mask);
    ASSERT_EQ(stat("/tmp/bsp", &info), 0);
    EXPECT_EQ(info.st_mode, mode_t{S_IFDIR | 0755});
}

TEST_F(WorldTest, ModelsWithBuiltInSuppliesHaveNoSupplyProperties) {
    useModel(0x0109);
    EXPECT_NE(refusal("supply.1.present").find("no supply.1.present on model 0x0109"),
              std::string::npos);
    EXPECT_NE(refusal("eeprom.supply1").find("built in"), std::string::npos);
    for (const vb::Property &property : vb::properties(*vb::attachedFolder()))
        EXPECT_EQ(property.name.find("supply"), std::string::npos) << property.name;
}

} // namespace
