// Answers for people on 80 columns, on boards that are full of things.

#include "tests/iodbg/iodbg_test.h"
#include "tests/support/patterns.h"
#include "tests/support/world.h"

#include <cstring>

namespace {

using vb::FaultDevice;
using vb::FaultOp;

constexpr size_t kPageWidth = 80;

/** The widest line of a text. */
std::string widestLine(const std::string &text) {
    std::string widest;
    for (const std::string &line : linesOf(text)) {
        if (line.size() > widest.size())
            widest = line;
    }
    return widest;
}

class PageTest : public IodbgTest {
  protected:
    /** A module in each cage, all of which say as much of themselves as they can. */
    void fillCages(uint32_t first, uint32_t last) const {
        const char *kinds[] = {"sr", "lr", "dac", "copper-mode4"};
        for (uint32_t port = first; port <= last; ++port)
            world::set("sfp." + std::to_string(port) + ".module", kinds[port % std::size(kinds)]);
    }
    /** Spoils what the module in a cage calls itself and its maker. */
    void spoilNames(uint32_t port) const {
        uint8_t *page = devices().sfp[port - 1].id;
        std::memset(page + 20, 0xFF, 16); // vendor
        std::memset(page + 40, 0x1B, 16); // part number
        std::memset(page + 68, '\\', 16); // serial number
    }

    void expectPages(const std::vector<std::string> &lines) const {
        for (const std::string &line : lines) {
            const ProcessResult result = iodbg(wordsOf(line));
            EXPECT_NE(result.out, "") << line << result.err;
            const std::string widest = widestLine(result.out);
            EXPECT_LE(widest.size(), kPageWidth) << line << "\n" << widest;
            for (const char character : result.out)
                EXPECT_TRUE(character == '\n' || (character >= ' ' && character <= '~')) << line;
        }
    }
};

const std::vector<std::string> kReading = {
    "show",          "check",        "watch --count 1",
    "init",          "identity get", "identity get --index supply1",
    "status",        "status 1002",  "eeprom dump --length 64",
    "power",         "fan get",      "temperature",
    "clock get",     "led",          "watchdog get",
    "cpld get",      "gpio get 0",   "i2c read 0 0 0x51 0x100 32 --offset-length 2",
    "mdio read 3 5", "sfp list",     "image info",
    "boot get"};

TEST_F(PageTest, EveryReadingCommandFitsOnAFullBoard) {
    ASSERT_EQ(iodbg({"poe", "init"}).exitCode, 0);
    world::set("poe.3.device", "class=4 draws=18000");
    fillCages(49, 54);
    spoilNames(52);
    spoilNames(53);
    std::vector<std::string> lines(kReading.begin(), kReading.end());
    for (const char *line : {"poe info", "poe port 3", "sfp phy 51", "sfp dump 49"})
        lines.emplace_back(line);
    for (int port = 49; port <= 54; ++port)
        lines.push_back("sfp show " + std::to_string(port));
    expectPages(lines);
}

TEST_F(PageTest, EveryReadingCommandFitsOnABoardFullOfCages) {
    useModel(0x8509);
    fillCages(1, 54);
    std::vector<std::string> lines = kReading;
    std::erase(lines, "identity get --index supply1"); // it has no such record
    expectPages(lines);
}

TEST_F(PageTest, EveryReadingCommandFitsWhereGarbageIsStored) {
    std::memset(devices().eeprom.bytes, 0xEE, sizeof(devices().eeprom.bytes));
    std::memcpy(record(), "DEVINFO", 7);
    std::memset(supplyRecord(1), 0x1B, 80);
    expectPages({"show", "check", "identity get", "power"});
}

TEST_F(PageTest, WideColumnsStandBelow) {
    world::set("sfp.49.module", "sr");
    const std::string shown = iodbg({"sfp", "show", "49"}).out;
    Words heads;
    for (const std::string &line : linesOf(shown)) {
        if (line.starts_with("QUANTITY "))
            heads.push_back(replaced(line, "  +", "|"));
    }
    EXPECT_EQ(heads, (Words{"QUANTITY|VALUE|JUDGEMENT|LOW ALARM",
                            "QUANTITY|LOW WARNING|HIGH WARNING", "QUANTITY|HIGH ALARM"}))
        << shown;
    EXPECT_EQ(jsonKeys(json({"sfp", "show", "49"}), "/diagnostics/0"),
              (Words{"quantity", "value", "judgement", "low_alarm", "low_warning", "high_warning",
                     "high_alarm"}));
}

TEST_F(PageTest, LongTextsGoOnBelowThemselves) {
    EXPECT_EQ(iodbg({"status", "1002"}).out,
              "Status   1002\n"
              "Name     BSP_E_INVALID\n"
              "Meaning  an argument is out of range, or a record fails its CRC\n"
              "Next     check the argument; for a record, see 'iodbg show', and write a whole\n"
              "         one with 'iodbg identity set record'\n");
    const std::string all = iodbg({"status"}).out;
    const size_t row = all.find("\n1002");
    ASSERT_NE(row, std::string::npos) << all;
    EXPECT_TRUE(all.substr(all.find('\n', row + 1) + 1).starts_with("      ")) << all;
}

TEST_F(PageTest, SpoiledNamesAreCutInTheListAndWholeForPrograms) {
    world::set("sfp.49.module", "sr");
    spoilNames(49);
    const std::string list = iodbg({"sfp", "list"}).out;
    EXPECT_NE(list.find("\\xFF\\xFF"), std::string::npos) << list;
    EXPECT_LE(linesOf(list.substr(0, list.find("\n\n"))).size(), 8u)
        << "one more line than cages, at most" << list;
    EXPECT_EQ(list.find("\\xFF\\xFF\\xFF\\xFF\\xFF"), std::string::npos) << list;
    const std::string vendor = jsonAt(json({"sfp", "list"}), "/cages/0/vendor");
    EXPECT_EQ(vendor.size(), 2 + 16 * std::strlen("\\\\xFF")) << vendor;
}

TEST_F(PageTest, WordsInMessagesAreShortAndPrintable) {
    const std::string word(5000, 'x');
    for (const Words &words : {Words{word}, {"poe", word}, {"fan", "set", word}, {"led", word}}) {
        const ProcessResult result = iodbg(words);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_LT(result.err.size(), 500u) << result.err;
        EXPECT_NE(result.err.find("xxx...'"), std::string::npos) << result.err;
    }
    expectRefusal({"fan", "set", "\x1b[31m"}, 2, "LEVEL: '\\x1B[31m' is not a number");
    expectRefusal({"\x1b[31m"}, 2, "'\\x1B[31m' is none of show|");
}

} // namespace
