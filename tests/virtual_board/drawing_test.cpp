// The panel as a drawing: what its parts are, and that any board's can be drawn.

#include "tests/support/json.h"
#include "tests/virtual_board/command_test.h"
#include "virtual_board/drawing/markup.h"
#include "virtual_board/drawing/page.h"
#include "virtual_board/drawing/panel.h"

#include <algorithm>
#include <set>

namespace {

using vboard::drawing::Part;
using vboard::drawing::partsOf;
using vboard::drawing::Readings;
using vboard::drawing::Styled;
using vboard::drawing::svgOf;

/** A board with one thing of each kind. */
Readings smallBoard() {
    return {{"model", "0x0709"},
            {"ports.copper", "2"},
            {"ports.sfp", "0"},
            {"ports.uplinks", "1"},
            {"poe.1.device", "none"},
            {"poe.1.state", "idle"},
            {"poe.1.power", "0"},
            {"poe.1.lamp", "dark"},
            {"lamp.system", "0"},
            {"lamp.4", "dark"},
            {"lamp.5", "lit"},
            {"temperature.sensor", "40"},
            {"temperature.state", "good"},
            {"temperature.bus", "i2c:0.1.0x4f"},
            {"poe.controller", "application"},
            {"poe.drawn", "0"},
            {"poe.budget", "40000"},
            {"watchdog.expires", "off"},
            {"rtc.time", "2024-01-01 00:00:00"},
            {"rtc.battery", "good"},
            {"rtc.bus", "i2c:0.1.0x51"},
            {"clock", "12.345678901"},
            {"time", "x60"},
            {"fan.1.present", "yes"},
            {"fan.1.state", "good"},
            {"fan.1.speed", "2400"},
            {"supply.1.present", "yes"},
            {"supply.1.input", "good"},
            {"supply.1.output", "good"},
            {"supply.1.output-power", "102560"},
            {"supply.1.bus", "i2c:0.2.0x58"},
            {"sfp.3.module", "none"},
            {"sfp.3.signal", "none"},
            {"sfp.3.rx-power", "0"},
            {"sfp.3.bus", "i2c:1.0.0x50"}};
}

Part partOf(const Readings &readings, const std::string &id) {
    for (const Part &part : partsOf(readings)) {
        if (part.id == id)
            return part;
    }
    ADD_FAILURE() << "there is no " << id;
    return {};
}

/** A part of the small board after some changes. */
Part changedPart(const std::string &id, const Readings &changes) {
    Readings readings = smallBoard();
    for (const auto &[name, value] : changes)
        readings[name] = value;
    return partOf(readings, id);
}

TEST(DrawingTest, TellsEachPartsState) {
    const struct {
        const char *id;
        Readings changes;
        const char *look, *text, *label;
    } cases[] = {
        {"port.1", {}, "idle", "", "Port 1: nothing asks for power"},
        {"port.1",
         {{"poe.1.state", "delivering"},
          {"poe.1.device", "class=4 draws=15449"},
          {"poe.1.power", "15449"},
          {"poe.1.lamp", "lit"}},
         "delivering plugged lit",
         "15.4 W",
         "Port 1: delivers 15.4 W to a device of class 4, LED lit"},
        {"port.1",
         {{"poe.1.state", "denied"}, {"poe.1.device", "class=3 draws=1"}},
         "denied plugged",
         "denied",
         "Port 1: is denied power: there is not enough, with a device of class 3 plugged"},
        {"port.1", {{"poe.1.state", "fault"}}, "fault", "fault", "Port 1: has a fault"},
        {"port.1", {{"poe.1.state", "disabled"}}, "disabled", "off", "Port 1: PoE is off"},
        {"port.2", {}, "plain", "", "Port 2: copper, without PoE"},
        {"sfp.3", {}, "empty", "", "Uplink 3: empty"},
        {"sfp.3",
         {{"sfp.3.module", "copper-mode4"}, {"sfp.3.signal", "lost"}},
         "lost",
         "copper",
         "Uplink 3: module copper-mode4, no signal arrives"},
        {"sfp.3",
         {{"sfp.3.module", "sr"}, {"sfp.3.signal", "good"}, {"sfp.3.rx-power", "400"}},
         "good",
         "sr",
         "Uplink 3: module sr, signal arrives, 400 uW of light"},
        {"sfp.3",
         {{"sfp.3.module", "sr"}, {"sfp.3.signal", "tx-fault"}},
         "tx-fault",
         "sr",
         "Uplink 3: module sr, its transmitter has a fault"},
        {"sfp.3",
         {{"sfp.3.module", "sr"}, {"sfp.3.signal", "off"}},
         "off",
         "sr",
         "Uplink 3: module sr, its transmitter is switched off"},
        {"lamp.system", {}, "dark", "0", "System lamp: its register holds 0"},
        {"lamp.system",
         {{"lamp.system", "2"}},
         "lit field-2",
         "2",
         "System lamp: its register holds 2"},
        {"lamp.5", {}, "lit", "", "Lamp 5: lit"},
        {"temperature", {}, "good", "40 °C", "Temperature: 40 °C"},
        {"temperature",
         {{"temperature.sensor", "none"}, {"temperature.state", "missing"}},
         "missing",
         "no sensor",
         "Temperature: no sensor answers"},
        {"poe",
         {},
         "tenths-0",
         "0 of 40 W",
         "PoE power: 0 of 40 W drawn, the controller runs: application"},
        {"poe",
         {{"poe.drawn", "1"}},
         "tenths-1",
         "0 of 40 W",
         "PoE power: 0 of 40 W drawn, the controller runs: application"},
        {"poe",
         {{"poe.drawn", "41000"}},
         "tenths-10 overdrawn",
         "41 of 40 W",
         "PoE power: 41 of 40 W drawn, the controller runs: application"},
        {"poe",
         {{"poe.controller", "missing"}},
         "tenths-0",
         "missing",
         "PoE power: 0 of 40 W drawn, the controller is missing"},
        {"watchdog", {}, "off", "off", "Watchdog: off"},
        {"watchdog",
         {{"watchdog.expires", "57.250"}},
         "armed",
         "57.2 s",
         "Watchdog: resets the board in 57.2 s"},
        {"calendar", {}, "good", "2024-01-01 00:00:00", "Calendar: 2024-01-01 00:00:00"},
        {"clock", {}, "fast", "12.3 s, x60", "Board's clock: 12.3 s, x60"},
        {"fan.1", {}, "good", "2400 rpm", "Fan 1: 2400 rpm"},
        {"fan.1",
         {{"fan.1.state", "stuck"}, {"fan.1.speed", "0"}},
         "stuck",
         "0 rpm",
         "Fan 1: stuck, 0 rpm"},
        {"temperature",
         {{"temperature.state", "stuck"}},
         "stuck",
         "40 °C, stuck",
         "Temperature: 40 °C, stuck"},
        {"calendar",
         {{"rtc.battery", "empty"}},
         "empty",
         "2024-01-01 00:00:00",
         "Calendar: 2024-01-01 00:00:00, its battery is empty"},
        {"fan.1",
         {{"fan.1.state", "failing"}, {"fan.1.speed", "1200"}},
         "failing",
         "failing",
         "Fan 1: failing, 1200 rpm"},
        {"fan.1", {{"fan.1.present", "no"}}, "absent", "not plugged", "Fan 1: not plugged"},
        {"supply.1", {}, "good", "102.6 W", "Supply 1: good, gives 102.6 W"},
        {"supply.1",
         {{"supply.1.present", "no"}},
         "absent",
         "not plugged",
         "Supply 1: not plugged"},
        {"supply.1", {{"supply.1.input", "failed"}}, "failed", "no input", "Supply 1: no input"},
        {"supply.1", {{"supply.1.output", "failed"}}, "failed", "no output", "Supply 1: no output"},
    };
    for (const auto &[id, changes, look, text, label] : cases) {
        const Part part = changedPart(id, changes);
        EXPECT_EQ(part.look, look) << label;
        EXPECT_EQ(part.text, text) << label;
        EXPECT_EQ(part.label, label);
    }
    EXPECT_EQ(partOf(smallBoard(), "fan.1").rpm, 2400U);
    EXPECT_EQ(partOf(smallBoard(), "supply.1").bus, "i2c:0.2.0x58");
    EXPECT_EQ(partOf(smallBoard(), "port.1").properties, Words{"poe.1.*"});
}

TEST(DrawingTest, WhatABoardHoldsIsNoMarkup) {
    EXPECT_EQ(vboard::drawing::escaped("a<b>&\"c\n"), "a&lt;b&gt;&amp;&quot;c");
    Readings readings = smallBoard();
    for (auto &[name, value] : readings) {
        if (name != "ports.copper" && name != "ports.uplinks" && name != "ports.sfp")
            value = "<script>\"&";
    }
    const std::vector<Part> parts = partsOf(readings);
    for (const std::string &drawn :
         {svgOf(readings, parts, Styled::Within), svgOf(readings, parts, Styled::Elsewhere),
          vboard::drawing::pageOf(readings, parts, "<script>")}) {
        EXPECT_EQ(drawn.find("<script"), std::string::npos);
        EXPECT_NE(drawn.find("&lt;script&gt;&quot;&amp;"), std::string::npos);
    }
}

TEST(DrawingTest, ADrawingStandsAloneOrTakesItsStyleFromAPage) {
    const Readings readings = smallBoard();
    const std::vector<Part> parts = partsOf(readings);
    const std::string alone = svgOf(readings, parts, Styled::Within);
    EXPECT_NE(alone.find("<style>" + vboard::drawing::panelStyle()), std::string::npos);
    const std::string part = svgOf(readings, parts, Styled::Elsewhere);
    EXPECT_EQ(part.find("style"), std::string::npos) << "a strict page takes no style from it";
    EXPECT_NE(part.find("<g class=\"part sfp empty\" id=\"part-sfp.3\" data-part=\"sfp.3\""),
              std::string::npos);
    EXPECT_NE(part.find("<title>Uplink 3: empty</title>"), std::string::npos);
    EXPECT_NE(part.find("<g class=\"rotor\">"), std::string::npos);
    const std::string page = vboard::drawing::pageOf(readings, parts, "two ports");
    EXPECT_NE(page.find("<h1>0x0709, two ports</h1>"), std::string::npos);
    EXPECT_NE(page.find("<td>Fan 1: 2400 rpm</td>"), std::string::npos);
    EXPECT_EQ(page.find("src="), std::string::npos);
    EXPECT_EQ(page.find("href="), std::string::npos);
}

class PanelPictureTest : public CommandTest {};

TEST_F(PanelPictureTest, EveryModelIsDrawnWithEachPartOnce) {
    for (const std::string &line : linesOf(vboard({"list-models"}))) {
        SCOPED_TRACE(line);
        const std::string folder = path(line.substr(0, 6));
        vboard({"create", "--model", line.substr(0, 6), "--time", "virtual", folder});
        const nlohmann::json panel = parsedJson(vboard({"panel", folder, "--json"}));
        EXPECT_EQ(panel["model"], line.substr(0, 6));
        EXPECT_EQ(panel["description"], line.substr(8));
        const std::string svg = vboard({"panel", folder, "--svg", "-"});
        std::set<std::string> ids;
        std::map<std::string, size_t> kinds;
        for (const nlohmann::json &part : panel["parts"]) {
            const std::string id = part["id"];
            EXPECT_TRUE(ids.insert(id).second) << id;
            EXPECT_NE(part["label"], "") << id;
            ++kinds[part["kind"]];
            EXPECT_NE(svg.find(" data-part=\"" + id + "\""), std::string::npos) << id;
        }
        size_t drawn = 0;
        for (size_t at = svg.find("data-part="); at != std::string::npos;
             at = svg.find("data-part=", at + 1))
            ++drawn;
        EXPECT_EQ(drawn, ids.size());
        const bool isMixed = line.find("8 copper") != std::string::npos;
        const size_t ports = isMixed ? 32 : line.find("  48 ") != std::string::npos ? 48 : 24;
        EXPECT_EQ(kinds["port"] + kinds["sfp"], ports + 6);
        EXPECT_EQ(kinds["lamp"], 3U);
    }
}

TEST_F(PanelPictureTest, FilesAreWholeAndKept) {
    const std::string file = path("panel.svg");
    EXPECT_EQ(vboard({"panel", board(), "--svg", file}), "");
    const std::string drawn = bytesOutsideHoles(file);
    EXPECT_TRUE(drawn.starts_with("<svg xmlns=\"http://www.w3.org/2000/svg\""));
    EXPECT_TRUE(drawn.ends_with("</svg>\n"));
    vboard({"set", board(), "fan.1.state=stuck"});
    expectFailure(1, file + " exists; choose another name, or replace it with --force",
                  {"panel", board(), "--svg", file});
    EXPECT_EQ(bytesOutsideHoles(file), drawn);
    EXPECT_EQ(vboard({"panel", board(), "--svg", file, "--force"}), "");
    EXPECT_NE(bytesOutsideHoles(file).find("Fan 1: stuck"), std::string::npos);
    expectFailure(1, "cannot write /nowhere/x: No such file or directory",
                  {"panel", board(), "--html", "/nowhere/x"});
    expectFailure(2, "--svg: '' is not the name of a file", {"panel", board(), "--svg", ""});
    expectFailure(2, "--html: '' is not the name of a file", {"panel", board(), "--html", ""});
    EXPECT_TRUE(vboard({"panel", board(), "--html", "-"}).starts_with("<!DOCTYPE html>\n"));
    expectFailure(2, "excludes", {"panel", board(), "--svg", "x", "--html", "y"});
    expectFailure(2, "excludes", {"panel", board(), "--json", "--watch"});
    expectFailure(2, "--force goes with --svg or --html", {"panel", board(), "--force"});
    std::filesystem::create_symlink(path("nothing"), path("link"));
    expectFailure(1, "exists", {"panel", board(), "--svg", path("link")});
    std::filesystem::remove(path("link"));
    std::filesystem::create_symlink(file, path("link"));
    vboard({"panel", board(), "--html", path("link"), "--force"});
    EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
    EXPECT_TRUE(bytesOutsideHoles(file).starts_with("<!DOCTYPE html>"));
    EXPECT_EQ(vboard({"panel", board(), "--svg", "/dev/null", "--force"}), "");
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    for (const auto &entry : std::filesystem::directory_iterator(path("")))
        EXPECT_EQ(entry.path().string().find("panel.svg."), std::string::npos) << entry.path();
}

} // namespace
