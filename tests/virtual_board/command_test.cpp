// The `vboard` program as its users run it.

#include "tests/virtual_board/command_test.h"

#include "language/numbers.h"
#include "language/properties.h"
#include "tests/support/device_ids.h"
#include "tests/support/json.h"
#include "tests/support/patterns.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using nlohmann::json;
namespace fs = std::filesystem;

TEST_F(CommandTest, EveryCommandHasHelpWithExamples) {
    EXPECT_NE(vboard({"--help"}).find("Exit codes:"), std::string::npos);
    const Words commands[] = {
        {"create"},
        {"copy"},
        {"capture"},
        {"delete"},
        {"upgrade"},
        {"list"},
        {"list-models"},
        {"run"},
        {"env"},
        {"get"},
        {"set"},
        {"fault"},
        {"fault", board(), "add"},
        {"trace"},
        {"play"},
        {"fault", board(), "list"},
        {"fault", board(), "clear"},
    };
    for (Words command : commands) {
        command.emplace_back("--help");
        const std::string help = vboard(command);
        const size_t examples = help.find("Examples:\n");
        ASSERT_NE(examples, std::string::npos) << help;
        EXPECT_NE(help.find("vboard " + command[0], examples), std::string::npos) << help;
    }
}

TEST_F(CommandTest, BoardsAreCopiedListedAndDeleted) {
    vboard({"set", board(), "fan.1.state=stuck"});
    EXPECT_EQ(vboard({"copy", board(), path("twin")}), "");
    vboard({"set", board(), "fan.1.state=good"});
    EXPECT_EQ(vboard({"get", path("twin"), "fan.1.state"}), "stuck\n");
    fs::resize_file(path("twin") + "/board.state", 64);
    EXPECT_EQ(vboard({"list", path("")}),
              board() + "  0x0709  virtual  unused\n" + path("twin") + "  " + path("twin") +
                  " is damaged: board.state has 64 of " + std::to_string(sizeof(vb::Board)) +
                  " bytes; create the board again\n");
    const json list = parsedJson(vboard({"list", path(""), "--json"}));
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0], (json{{"folder", board()},
                             {"model", "0x0709"},
                             {"time", "virtual"},
                             {"users", ""},
                             {"problem", nullptr}}));
    EXPECT_EQ(list[1]["model"], nullptr);
    EXPECT_NE(list[1]["problem"], nullptr);

    EXPECT_EQ(vboard({"delete", path("twin")}), "");
    EXPECT_FALSE(fs::exists(path("twin")));
    expectFailure(1, "twin: No such file or directory", {"delete", path("twin")});
    std::ofstream(board() + "/notes.txt") << "x";
    expectFailure(1, "holds notes.txt, which is not of the board", {"delete", board()});
}

TEST_F(CommandTest, AWrongCommandLineIsCode2) {
    expectFailure(2,
                  "vboard: a command is missing: give one of "
                  "create|copy|capture|delete|upgrade|list|list-models|run|",
                  {});
    expectFailure(
        2, "vboard: 'dance' is none of create|copy|capture|delete|upgrade|list|list-models|run|",
        {"dance", board()});
    expectFailure(2, "'--dance' is not known here; see 'vboard --help'", {"--dance"});
    expectFailure(2, "'dance' is none of add|list|clear; see 'vboard fault --help'",
                  {"fault", board(), "dance"});
    expectFailure(2, "--model is required", {"create", path("other")});
    expectFailure(2, "--time", {"create", "--model", "0x0709", "--time", "slow", path("other")});
    expectFailure(2, "PROGRAM", {"run", board()});
    expectFailure(2, "PROGRAM", {"run", board(), "--"});
    expectFailure(2, "DIR is required", {"run", "--", "true"});
    expectFailure(2, "'cpld.1' has no value: give NAME=VALUE", {"set", board(), "cpld.1"});
    expectFailure(2, "a command is missing: give one of add|list|clear; see", {"fault", board()});
    expectFailure(2, "--effect is required", {"fault", board(), "add", "--device", "cpld"});
    expectFailure(2, "--last", {"trace", board(), "--last", "many"});
    expectFailure(2, "excludes", {"trace", board(), "--follow", "--clear"});
}

TEST_F(CommandTest, AWrongCommandLineNamesTheHelpThatTellsMore) {
    const struct {
        Words words;
        std::string command;
    } rows[] = {
        {{}, "vboard"},
        {{"dance"}, "vboard"},
        {{"create", path("other")}, "vboard create"},
        {{"get"}, "vboard get"},
        {{"set", board(), "cpld.1"}, "vboard set"},
        {{"fault", board()}, "vboard fault"},
        {{"fault", board(), "add", "--device", "cpld"}, "vboard fault add"},
        {{"fault", board(), "list", "--all"}, "vboard fault list"},
        {{"flash", board(), "mark-bad", "12"}, "vboard flash mark-bad"},
    };
    for (const auto &row : rows)
        expectFailure(2, "; see '" + row.command + " --help'\n", row.words);
    const std::string missing = "DIR is missing in front of 'add'; see 'vboard fault add --help'";
    expectFailure(2, missing, {"fault", "add", "--device", "cpld", "--effect", "no-answer"});
}

TEST_F(CommandTest, ARuleForAPathOfAnyBytesIsListed) {
    vboard({"fault", board(), "add", "--device", "/tmp/bsp/\xFF", "--op", "open", "--effect",
            "open-fails=EIO"});
    EXPECT_NE(vboard({"fault", board(), "list"}).find("/tmp/bsp/\xFF "), std::string::npos);
    const json list = parsedJson(vboard({"fault", board(), "list", "--json"}));
    EXPECT_EQ(list.at(0)["device"], "/tmp/bsp/\xEF\xBF\xBD"); // the replacement character
}

TEST_F(CommandTest, PrintsItsVersion) {
    EXPECT_EQ(vboard({"--version"}), "vboard " BSP_TEST_VERSION "\n");
}

TEST_F(CommandTest, CreateTakesTheIdentityFromItsOptions) {
    vboard({"create", "--model", "265", "--serial", "SN42", "--mac", "02:00:00:00:00:09",
            "--cmdline", "quiet bootver=7.7.7", path("other")});
    const json all = parsedJson(vboard({"get", path("other"), "--json"}));
    EXPECT_EQ(all["model"], "0x0109");
    EXPECT_EQ(all["time"], "real");
    EXPECT_EQ(all["identity.serial"], "SN42");
    EXPECT_EQ(all["identity.mac"], "02:00:00:00:00:09");
    EXPECT_EQ(all["cmdline"], "quiet bootver=7.7.7");
}

TEST_F(CommandTest, CreateRefusesWhatWouldMakeNoBoard) {
    const auto before = contentOf(path(""));
    expectFailure(1, "exists already", {"create", "--model", "0x0709", board()});
    expectFailure(1, "'vboard list-models'", {"create", "--model", "0x0001", path("other")});
    expectFailure(1, "'vboard list-models'", {"create", "--model", "switch", path("other")});
    expectFailure(1, "six bytes as AA:BB:CC:DD:EE:FF",
                  {"create", "--model", "0x0709", "--mac", "1:2:3", path("other")});
    expectFailure(1, "1 to 31", {"create", "--model", "0x0709", "--serial", "", path("other")});
    expectFailure(1, "create it first", {"create", "--model", "0x0709", path("none/board")});
    EXPECT_EQ(contentOf(path("")), before);
}

TEST_F(CommandTest, ListModels) {
    const std::string text = vboard({"list-models"});
    EXPECT_EQ(linesOf(text).size(), kKnownIds.size());
    EXPECT_NE(text.find("0x0709  48 PoE ports"), std::string::npos);
    const json list = parsedJson(vboard({"list-models", "--json"}));
    ASSERT_EQ(list.size(), kKnownIds.size());
    EXPECT_EQ(list[5], parsedJson(R"({"model": "0x0709", "poe_ports": 48, "supply_eeproms": true,
                                       "description": "48 PoE ports, 6 SFP uplinks, 2 fans"})"));
}

TEST_F(CommandTest, PanelDrawsThePortsWithTheirState) {
    vboard({"set", board(), "poe.2.device", "class=4 draws=18000"});
    vboard({"set", board(), "supply.2.present", "no"});
    const std::string panel = vboard({"panel", board()});
    EXPECT_NE(panel.find("[ 1  ][ 3  ]"), std::string::npos) << panel;
    EXPECT_NE(panel.find("[ 2  ][ 4  ]"), std::string::npos) << panel;
    EXPECT_NE(panel.find("uplinks [49] [50] [51] [52] [53] [54]\n"), std::string::npos) << panel;
    EXPECT_NE(panel.find("fans    [1 2400 rpm] [2 2400 rpm]\n"), std::string::npos) << panel;
    EXPECT_NE(panel.find("board   40 C, calendar 2024-01-01 00:00:00\n"), std::string::npos)
        << panel;
    EXPECT_NE(panel.find("supplies [1 good, 102 W] [2 not plugged]"), std::string::npos) << panel;
    vboard({"set", board(), "sfp.50.module", "sr"});
    vboard({"set", board(), "sfp.51.module", "copper-mode4"});
    vboard({"set", board(), "sfp.51.link", "up"});
    vboard({"set", board(), "fan.1.present", "no"});
    const std::string later = vboard({"panel", board()});
    EXPECT_NE(later.find("uplinks [49] [50 sr no signal] [51 copper-mode4 up] [52] [53] [54]\n"),
              std::string::npos)
        << later;
    EXPECT_NE(later.find("fans    [1 not plugged] [2 2400 rpm]\n"), std::string::npos) << later;
    EXPECT_EQ(panel.find('\x1b'), std::string::npos); // no terminal, no colours
    EXPECT_EQ(vboard({"panel", board(), "--once"}), later);
    expectFailure(2, "--watch", {"panel", board(), "--interval", "1"});
}

struct FourFansTest : CommandTest {
    FourFansTest() : CommandTest("0x0609") {}
};

TEST_F(FourFansTest, LinesThatSeveralThingsShareAreMarked) {
    EXPECT_NE(vboard({"panel", board()})
                  .find("\npresence [fans 1, 2 and supply 1: 0] [fans 3, 4 and supply 2: 0], one "
                        "line each\n"),
              std::string::npos);
    vboard({"set", board(), "supply.2.present", "no"});
    EXPECT_NE(vboard({"panel", board()}).find(" [fans 3, 4 and supply 2: 1], one"),
              std::string::npos);

    const std::string table = vboard({"get", board()});
    EXPECT_NE(
        table.find("\nfan.3.present          yes  (one line with fan 4 and supply 2: it shows "
                   "what changed last)\n"),
        std::string::npos)
        << table;
    EXPECT_NE(table.find("\nsupply.2.present       no  (one line with fans 3 and 4: it shows what "
                         "changed last)\n"),
              std::string::npos);
    EXPECT_NE(
        table.find("\ncpld.30                0x0126  (bit 0: supply 1 and fans 1 and 2; bit 1: "
                   "supply 2 and fans 3 and 4)\n"),
        std::string::npos)
        << table;

    // Who asks for a value gets that alone on standard output.
    const ProcessResult named = answer({"get", board(), "fan.3.present", "fan.3.speed"});
    EXPECT_EQ(named.out, "yes\n2400\n");
    EXPECT_EQ(named.err,
              "fan.3.present: one line with fan 4 and supply 2: it shows what changed last\n");
    EXPECT_EQ(parsedJson(vboard({"get", board(), "fan.3.present", "fan.3.speed", "--json"})),
              parsedJson(R"({"fan.3.present": "yes", "fan.3.speed": 2400,
                              "fan.3.present.note": "one line with fan 4 and supply 2: it shows )"
                         R"(what changed last"})"));
}

TEST_F(CommandTest, WatchingEndsWithItsBoard) {
    const Words commands[] = {{"panel", board(), "--watch", "--interval", "0.1"},
                              {"trace", board(), "--follow"},
                              {"trace", board(), "--follow", "--json"}};
    for (const bool isReplaced : {false, true}) {
        for (Words words : commands) {
            showDeviceId(); // something to be seen in the trace
            words.insert(words.begin(), builtProgram("vboard"));
            Process watching(words);
            EXPECT_TRUE(comesTrue([&] { return !watching.output().empty(); }));
            removeFolder(board());
            if (isReplaced)
                SetUp();
            const ProcessResult end = watching.wait();
            EXPECT_EQ(end.exitCode, 1);
            EXPECT_EQ(end.err, "vboard: " + board() +
                                   ": the board is gone; its folder was removed, or "
                                   "holds another board now\n");
            if (!isReplaced)
                SetUp();
        }
    }
}

TEST_F(CommandTest, WhatRootChangesStaysTheOwners) {
    const uid_t owner = geteuid() == 0 ? 65534 : geteuid(); // only root can give files away
    for (const std::string &each : pathsUnder(board()))
        ASSERT_EQ(chown(each.c_str(), owner, getegid()), 0);
    ASSERT_EQ(chown(board().c_str(), owner, getegid()), 0);
    vboard({"set", board(), "cmdline", "quiet"});
    vboard({"set", board(), "power", "cycle"});
    vboard({"set", board(), "flash.4.content@0", "00"});
    vboard({"fault", board(), "add", "--device", "cpld", "--effect", "no-answer"});
    vboard({"flash", board(), "mark-bad", "12", "3"});
    vboard({"trace", board(), "--clear"});
    for (const std::string &each : pathsUnder(board())) {
        struct stat64 info = {};
        ASSERT_EQ(lstat64(each.c_str(), &info), 0);
        EXPECT_EQ(info.st_uid, owner) << each;
    }
}

class WatchedPanelTest : public CommandTest {
  protected:
    /** What `panel --watch` shows until Ctrl-C, which is typed once a text is there. */
    std::string watched(const std::string &until, const TerminalKind &kind) const {
        return runOnTerminal(
            {builtProgram("vboard"), "panel", board(), "--watch", "--interval", "0.1"}, {},
            {until, std::string(1, '\x03')}, kind);
    }
};

TEST_F(WatchedPanelTest, IsRedrawnInPlaceWithItsHeadInView) {
    const std::string shown = watched("\x1b[J", {10, 60});
    EXPECT_EQ(shown.find("\x1b[H0x0709  48 PoE ports"), 0u) << shown;
    const size_t end = shown.find("\x1b[J");
    ASSERT_NE(end, std::string::npos) << shown;
    const Words lines = linesOf(withoutEscapes(shown.substr(0, end)));
    ASSERT_EQ(lines.size(), 9u) << "10 rows, one for the cursor" << shown;
    EXPECT_EQ(lines[0].size(), 60u);
    EXPECT_EQ(lines[0].back(), '>') << "cut, and said so";
    EXPECT_TRUE(lines[2].starts_with("[ 1.o][ 3.o]") || lines[2].starts_with("[ 1  ][ 3  ]"))
        << lines[2];
    EXPECT_EQ(lines[2].size(), 60u);
    EXPECT_TRUE(lines[8].ends_with(" more lines: the terminal is too small)")) << lines[8];
}

TEST_F(WatchedPanelTest, LosesNothingWhereThereIsRoom) {
    vboard({"set", board(), "cpld.13", "0xFFFE"});
    const std::string shown = watched("\x1b[J", {40, 100});
    const std::string picture = shown.substr(0, shown.find("\x1b[J"));
    EXPECT_NE(picture.find("\x1b[32mo\x1b[0m"), std::string::npos) << "lit LEDs are green";
    const Words lines = linesOf(withoutEscapes(picture));
    const Words panel = linesOf(vboard({"panel", board()}));
    ASSERT_EQ(lines.size(), panel.size());
    EXPECT_EQ(Words(lines.begin() + 1, lines.end()), Words(panel.begin() + 1, panel.end()))
        << "but for the clock";
}

TEST_F(WatchedPanelTest, ATerminalThatCannotRedrawGetsPanelBelowPanel) {
    const std::string shown = watched("lamps", {10, 60, {"TERM=dumb"}});
    EXPECT_EQ(shown.find('\x1b'), std::string::npos) << shown;
    EXPECT_EQ(shown.find("0x0709  48 PoE ports, 6 SFP uplinks, 2 fans  clock "), 0u) << shown;
}

TEST_F(WatchedPanelTest, ColoursAreLeftOutOnRequest) {
    const std::string shown = watched("\x1b[J", {40, 100, {"TERM=xterm", "NO_COLOR=1"}});
    EXPECT_EQ(shown.find("\x1b[H0x0709"), 0u) << shown;
    EXPECT_FALSE(hasMatch(shown, "\x1b\\[[0-9;]*m")) << shown;
}

TEST_F(CommandTest, CtrlCIsTheProperEndOfWhatGoesOn) {
    for (const Words &words : {Words{"panel", board(), "--watch", "--interval", "3600"},
                               Words{"trace", board(), "--follow"}}) {
        showDeviceId(); // something to trace
        Words argv = {builtProgram("vboard")};
        argv.insert(argv.end(), words.begin(), words.end());
        Process process(argv);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (process.output().empty() && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        process.signal(SIGINT);
        const ProcessResult result = process.wait();
        EXPECT_EQ(result.exitCode, 0) << words[0];
        EXPECT_EQ(result.err, "") << words[0];
        EXPECT_TRUE(result.out.ends_with("\n")) << words[0];
    }
}

TEST_F(CommandTest, GetShowsTheNamedPropertiesOrAll) {
    EXPECT_EQ(vboard({"get", board(), "cpld.2", "gpio.0"}), "0x1312\n0\n");
    EXPECT_EQ(parsedJson(vboard({"get", board(), "cpld.2", "--json"})),
              parsedJson(R"({"cpld.2": 4882})"));
    const std::string table = vboard({"get", board()});
    EXPECT_NE(table.find("model                  0x0709\n"), std::string::npos);
    EXPECT_EQ(table.find("cpld.3 "), std::string::npos);
    const json all = parsedJson(vboard({"get", board(), "--json"}));
    EXPECT_EQ(all["cpld.3"], 0);
    EXPECT_EQ(all["eeprom.board"].get<std::string>().size(), 2048u);
    expectFailure(1, "there is no property 'colour'", {"get", board(), "cpld.2", "colour"});
}

TEST_F(CommandTest, PropertiesAreOfTheirTypesInJson) {
    const json all = parsedJson(vboard({"get", board(), "--json"}));
    EXPECT_EQ(all["gpio.0"], 0);
    EXPECT_TRUE(all["clock"].is_number());
    EXPECT_EQ(all["supply.1.output-voltage"], 54000);
    EXPECT_TRUE(all["temperature.sensor"].is_number_integer());
    EXPECT_TRUE(all["temperature.board"].is_number_float());
    EXPECT_EQ(all["watchdog.expires"], "off");
    EXPECT_EQ(all["fan.1.present"], "yes");
    EXPECT_EQ(all["console.speed"], 115200);
    EXPECT_EQ(all["identity.mac"], "02:00:5e:10:00:00");
}

TEST_F(CommandTest, GetTakesPatterns) {
    EXPECT_EQ(vboard({"get", board(), "fan.*.state", "fan.1.*"}),
              "fan.1.state            good\nfan.2.state            good\n"
              "fan.1.present          yes  (one line with fan 2: it is set while both are there)\n"
              "fan.1.speed            2400\n");
    EXPECT_EQ(parsedJson(vboard({"get", board(), "fan.?.speed", "cpld.1", "--json"})),
              parsedJson(R"({"fan.1.speed": 2400, "fan.2.speed": 2400, "cpld.1": 1801})"));
    expectFailure(1, "no property of model 0x0709 fits 'fan.9.*'", {"get", board(), "fan.9.*"});
}

TEST_F(CommandTest, SetChangesSeveralAtOnceOrNone) {
    EXPECT_EQ(vboard({"set", board(), "fan.1.state=stuck", "poe.1.device=class=4 draws=18000"}),
              "");
    EXPECT_EQ(vboard({"get", board(), "fan.1.state", "poe.1.device"}),
              "stuck\nclass=4 signature=good requests=25500 draws=18000\n");
    vboard({"set", board(), "poe.1.device", "class=3"}); // a name and its value
    const auto before = contentOf(board());
    expectFailure(1, "fan.3.state", {"set", board(), "fan.1.state=good", "fan.3.state=good"});
    expectFailure(1, "cage 49 is empty", {"set", board(), "fan.1.state=good", "sfp.49.link=up"});
    expectFailure(2, "'fan.2.state' has no value",
                  {"set", board(), "fan.1.state=good", "fan.2.state", "good"});
    EXPECT_EQ(contentOf(board()), before);
}

TEST_F(CommandTest, WhatAChangeSetsOffIsCounted) {
    vboard({"fault", board(), "add", "--device", "poe", "--op", "reset", "--effect", "no-answer"});
    vboard({"set", board(), "power", "cycle"});
    EXPECT_NE(vboard({"fault", board(), "list"}).find("(matched 1, fired 1)"), std::string::npos);
}

TEST_F(CommandTest, PropertiesAreListedForAllModels) {
    const std::string all = vboard({"properties"});
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'),
              static_cast<ptrdiff_t>(language::properties().size()));
    EXPECT_EQ(vboard({"properties", "fan.2.speed"}),
              "fan.#.speed               read       with fans               "
              "rpm; How fast it turns\n");
    EXPECT_EQ(vboard({"properties", "sfp.#.st*"}),
              "sfp.#.state               read, set  all                     "
              "good|tx-fault|dead; A dead module does not answer and receives nothing\n");
    const json rows = parsedJson(vboard({"properties", "poe.*", "--json"}));
    ASSERT_EQ(rows.size(), 7u);
    json controller = parsedJson(R"({
        "name": "poe.controller", "type": "word", "unit": null, "lowest": null, "highest": null,
        "words": ["reset", "application", "loader", "missing"], "settable": true,
        "words_to_set": ["present", "missing"], "untouched": null,
        "description": "What the PoE controller runs"})");
    for (const uint32_t id : idsWhere([](const DataSheet &sheet) { return sheet.poePorts != 0; }))
        controller["models"].push_back(language::hex16Text(id));
    EXPECT_EQ(rows[0], controller);
    EXPECT_EQ(parsedJson(vboard({"properties", "--json"})).size(), language::properties().size());
    expectFailure(1, "no property fits 'colour'", {"properties", "colour"});
}

TEST_F(CommandTest, SetChangesWhatProgramsSee) {
    EXPECT_EQ(vboard({"set", board(), "cpld.1", "0x0809"}), "");
    EXPECT_EQ(showDeviceId(), "0x0809\n");
    const auto before = contentOf(board());
    expectFailure(1, "two hexadecimal digits for each", {"set", board(), "eeprom.board", "abc"});
    expectFailure(1, "can only be read", {"set", board(), "model", "0x0809"});
    EXPECT_EQ(contentOf(board()), before);
}

TEST_F(CommandTest, ReadingCommandsDoNotChangeTheBoard) {
    const auto before = contentOf(board());
    vboard({"get", board()});
    vboard({"get", board(), "--json"});
    vboard({"trace", board()});
    vboard({"fault", board(), "list"});
    vboard({"env", board()});
    EXPECT_EQ(contentOf(board()), before);
}

TEST_F(CommandTest, FaultsAreAddedListedAndCleared) {
    EXPECT_EQ(vboard({"fault", board(), "add", "--device", "cpld", "--op", "read", "--offset", "1",
                      "--when", "from", "--effect", "refuse=-5"}),
              "1\n");
    EXPECT_EQ(vboard({"fault", board(), "add", "--device", "/tmp/bsp/devId", "--op", "open",
                      "--nth", "2", "--effect", "open-fails=EACCES"}),
              "2\n");
    const ProcessResult shown = runOnBoard(board(), {builtProgram("show_device_id")});
    EXPECT_EQ(shown.exitCode, 1);
    EXPECT_EQ(shown.err, "status -5\n");
    EXPECT_EQ(vboard({"fault", board(), "list"}),
              "1: --device cpld --op read --offset 1 --nth 1 --when from --effect refuse=-5 "
              "(matched 1, fired 1)\n"
              "2: --device /tmp/bsp/devId --op open --nth 2 --when once --effect "
              "open-fails=EACCES (matched 1, fired 0)\n");
    const json list = parsedJson(vboard({"fault", board(), "list", "--json"}));
    EXPECT_EQ(list[0], parsedJson(R"({"id": 1, "device": "cpld", "op": "read", "offset": 1,
                                       "nth": 1, "when": "from", "effect": "refuse=-5",
                                       "matched": 1, "fired": 1})"));
    EXPECT_EQ(list[1]["offset"], nullptr);

    expectFailure(1, "none was cleared", {"fault", board(), "clear", "1", "7"});
    EXPECT_EQ(linesOf(vboard({"fault", board(), "list"})).size(), 2u);
    vboard({"fault", board(), "clear", "1"});
    EXPECT_EQ(linesOf(vboard({"fault", board(), "list"})).size(), 1u);
    vboard({"fault", board(), "clear"});
    EXPECT_EQ(vboard({"fault", board(), "list"}), "");
    EXPECT_EQ(vboard({"fault", board(), "list", "--json"}), "[]\n");
    EXPECT_EQ(showDeviceId(), "0x0709\n");
}

TEST_F(CommandTest, ABadFaultRuleChangesNothing) {
    expectFailure(1, "choose from: cpld, gpio, i2c",
                  {"fault", board(), "add", "--device", "spi", "--effect", "no-answer"});
    EXPECT_EQ(vboard({"fault", board(), "list"}), "");
    for (int i = 0; i < 32; ++i)
        vboard({"fault", board(), "add", "--device", "cpld", "--effect", "no-answer"});
    expectFailure(1, "32 fault rules already",
                  {"fault", board(), "add", "--device", "cpld", "--effect", "no-answer"});
}

TEST_F(CommandTest, TraceShowsRequests) {
    EXPECT_EQ(vboard({"trace", board()}), "");
    showDeviceId();
    const Words lines = linesOf(vboard({"trace", board()}));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].substr(0, 12), "0.000000000 ");
    EXPECT_NE(lines[0].find(" open /tmp/bsp/devId"), std::string::npos);
    EXPECT_NE(lines[1].find(" CPLD read  reg 1 (device id) = 0x0709"), std::string::npos);
    EXPECT_EQ(linesOf(vboard({"trace", board(), "--last", "1"})), Words{lines[1]});
    EXPECT_EQ(vboard({"trace", board(), "--last", "0"}), "");

    const Words objects = linesOf(vboard({"trace", board(), "--json", "--clear"}));
    ASSERT_EQ(objects.size(), 2u);
    EXPECT_EQ(parsedJson(objects[0])["path"], "/tmp/bsp/devId");
    EXPECT_EQ(parsedJson(objects[1])["value"], 0x0709);
    EXPECT_EQ(vboard({"trace", board()}), "");
}

TEST_F(CommandTest, TraceTellsWhatWasOverwritten) {
    {
        vb::BoardFolder folder;
        vb::FolderError error = {};
        ASSERT_TRUE(folder.open(board().c_str(), error)) << error.text;
        for (int32_t i = 0; i < static_cast<int32_t>(vb::kTraceCapacity) + 5; ++i)
            vb::traceNext(folder.board()->trace, vb::TraceKind::CpldRead, {i, 0});
    }
    const ProcessResult all = answer({"trace", board()});
    EXPECT_EQ(all.err, "vboard: 5 older requests were overwritten\n");
    const Words lines = linesOf(all.out);
    EXPECT_EQ(lines.size(), vb::kTraceCapacity);
    const ProcessResult last = answer({"trace", board(), "--last", "3"});
    EXPECT_EQ(last.err, "");
    EXPECT_EQ(linesOf(last.out), Words(lines.end() - 3, lines.end()));
}

TEST_F(CommandTest, TraceFollowsNewRequests) {
    Process follower({builtProgram("vboard"), "trace", board(), "--follow"});
    const auto waitForLines = [&](size_t count) {
        for (int i = 0; i < 300 && linesOf(follower.output()).size() < count; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return linesOf(follower.output()).size();
    };
    showDeviceId();
    EXPECT_EQ(waitForLines(2), 2u);
    showDeviceId();
    EXPECT_EQ(waitForLines(3), 3u);
    follower.signal(SIGTERM);
    EXPECT_EQ(follower.wait().exitCode, 128 + SIGTERM);
}

TEST_F(CommandTest, EnvPrintsWhatALauncherNeeds) {
    const Words lines = linesOf(vboard({"env", board()}));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "VBOARD_DIR=" + fs::canonical(board()).string());
    EXPECT_EQ(lines[1].substr(0, 11), "LD_PRELOAD=");
    EXPECT_EQ(fs::path(lines[1].substr(11)).filename(), "libvboard.so");
    EXPECT_TRUE(fs::exists(lines[1].substr(11)));
    EXPECT_EQ(vboard({"env", "--qemu", board()}), "-E " + lines[0] + " -E " + lines[1] + "\n");

    vboard({"create", "--model", "0x0709", path("a,b")});
    expectFailure(1, "a comma or a blank", {"env", "--qemu", path("a,b")});
}

TEST_F(CommandTest, RefusesFoldersThatAreNoBoard) {
    const Words commands[] = {{"get"}, {"env"}, {"trace"}, {"set", "cpld.1", "0"}};
    for (const Words &command : commands) {
        Words words = command;
        words.insert(words.begin() + 1, path("none"));
        expectFailure(1, "No such file or directory", words);
        words[1] = path("");
        expectFailure(1, "is not a board", words);
    }
    expectFailure(1, "No such file", {"run", path("none"), "--", "true"});
    expectFailure(1, "No such file", {"fault", path("none"), "list"});
    fs::resize_file(board() + "/board.state", 1000);
    expectFailure(1, "is damaged", {"get", board()});
    expectFailure(1, "is damaged", {"run", board(), "--", "true"});
}

} // namespace
