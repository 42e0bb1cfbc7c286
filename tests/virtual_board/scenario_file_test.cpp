// Scenarios as files: what they become, and what is said of wrong ones.

#include "language/refused.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/command/scenario_file.h"

#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace vboard;
using Words = std::vector<std::string>;

constexpr uint64_t kSecondNs = 1000000000;

Scenario parsed(const std::string &content) {
    return parseScenario("x.toml", content);
}

Step onlyStep(const std::string &keys) {
    const Scenario scenario = parsed("[[step]]\n" + keys);
    EXPECT_EQ(scenario.steps.size(), 1u);
    return scenario.steps.at(0);
}

/** What a file is refused with, without its name. */
std::string refusal(const std::string &content) {
    try {
        parsed(content);
    } catch (const language::Refused &refused) {
        const std::string text = refused.what();
        EXPECT_EQ(text.find("x.toml:"), 0u) << text;
        return text.substr(std::string("x.toml:").size());
    }
    return "accepted";
}

/** The same of a step's keys, which begin in line 1. */
std::string refusalOfStep(const std::string &keys) {
    return refusal("[[step]] \n" + keys);
}

Words textsOf(const std::vector<PlacedChange> &changes) {
    Words texts;
    for (const PlacedChange &change : changes)
        texts.push_back(std::to_string(change.place.line) + ":" +
                        std::to_string(change.place.column) + " " + change.name + "=" +
                        change.value);
    return texts;
}

TEST(ScenarioFileTest, PropertiesAreSetInTheOrderOfTheFile) {
    const Step step = onlyStep("set.sfp.49.module = \"sr\"\n"
                               "set.\"eeprom.board@0x100\" = '00ff'\n"
                               "set.sfp.49.link = \"up\"\n"
                               "set.cpld.2 = 0x2413\n"
                               "set.temperature.ambient = -5\n");
    EXPECT_EQ(step.deed, Deed::Set);
    EXPECT_EQ(step.place.line, 2u);
    EXPECT_EQ(textsOf(step.changes),
              (Words{"2:12 sfp.49.module=sr", "3:5 eeprom.board@0x100=00ff", "4:12 sfp.49.link=up",
                     "5:10 cpld.2=9235", "6:17 temperature.ambient=-5"}));
    EXPECT_EQ(textsOf(onlyStep("set = { \"b.c\" = \"1\", a = 2 }\n").changes),
              (Words{"2:9 b.c=1", "2:22 a=2"}));
}

TEST(ScenarioFileTest, EachKeyHasItsPlaceInAStep) {
    const Step fault = onlyStep("title = \"noise\"\nat = 1.5\nas = \"n\"\n"
                                "fault = { device = \"cpld\", op = \"read\", offset = 0x1E, "
                                "nth = 3, when = \"from\", effect = \"refuse=-5\" }\n");
    EXPECT_EQ(fault.deed, Deed::AddFault);
    EXPECT_EQ(fault.title, "noise");
    EXPECT_EQ(fault.atNs, kSecondNs * 3 / 2);
    EXPECT_EQ(fault.label->text, "n");
    EXPECT_EQ(fault.label->place.line, 4u);
    EXPECT_EQ(fault.place.line, 5u);
    const FaultWords &rule = fault.fault;
    EXPECT_EQ((Words{rule.device, rule.op, rule.offset, rule.nth, rule.when, rule.effect}),
              (Words{"cpld", "read", "30", "3", "from", "refuse=-5"}));
    const FaultWords usual =
        onlyStep("fault = { device = \"cpld\", effect = \"no-answer\" }").fault;
    EXPECT_EQ((Words{usual.op, usual.offset, usual.nth, usual.when}),
              (Words{"any", "", "1", "once"}));

    const Step run = onlyStep("run = [\"iodbg\", \"check\", 3]\nexit = 5\nlimit = 2\nwithin = 7\n"
                              "expect = \"a == 1\"\nafter = 0.000000001\n");
    EXPECT_EQ(run.deed, Deed::Run);
    EXPECT_EQ(run.place.line, 2u);
    EXPECT_EQ(run.program, (Words{"iodbg", "check", "3"}));
    EXPECT_EQ(run.exitCode, 5);
    EXPECT_EQ(run.limitNs, 2 * kSecondNs);
    EXPECT_EQ(run.withinNs, 7 * kSecondNs);
    EXPECT_EQ(run.expected->text, "a == 1");
    EXPECT_EQ(run.afterNs, 1u);
    EXPECT_FALSE(run.isInBackground);

    const Step shell = onlyStep("run = \"a | b\"\nbackground = true\n");
    EXPECT_EQ(shell.program, (Words{"sh", "-c", "a | b"}));
    EXPECT_TRUE(shell.isInBackground);
    EXPECT_EQ(shell.exitCode, 0);
    EXPECT_EQ(shell.limitNs, kUsualLimitNs);

    const Step expect = onlyStep("when = \"a == 1\"\n");
    EXPECT_EQ(expect.deed, Deed::Wait);
    EXPECT_EQ(expect.when->text, "a == 1");
    EXPECT_EQ(expect.place.line, 2u);
    const Step both = onlyStep("when = \"a == 1\"\nrun = \"x\"\nexpect = \"b == 1\"\n");
    EXPECT_EQ(both.deed, Deed::Run);
    EXPECT_EQ(both.when->text + both.expected->text, "a == 1b == 1");
    EXPECT_EQ(onlyStep("advance = 60").advanceNs, 60 * kSecondNs);
    EXPECT_EQ(onlyStep("clear = \"all\"").subject->text, "all");
    EXPECT_EQ(onlyStep("expect = \"a.1 >= 2\"").deed, Deed::Expect);
}

TEST(ScenarioFileTest, StepsCallFaultsAndProgramsByTheirNames) {
    const Scenario scenario = parsed("title = \"names\"\n"
                                     "[[step]]\nrun = \"x\"\nbackground = true\nas = \"p\"\n"
                                     "[[step]]\nexpect = \"a == 1\"\nfrom = \"p\"\n"
                                     "[[step]]\nstop = \"p\"\n"
                                     "[[step]]\nfault = { device = \"cpld\", effect = \"e\" }\n"
                                     "as = \"f\"\n"
                                     "[[step]]\nclear = \"f\"\n");
    EXPECT_EQ(scenario.title, "names");
    EXPECT_EQ(scenario.file, "x.toml");
    ASSERT_EQ(scenario.steps.size(), 5u);
    EXPECT_EQ(scenario.steps[1].deed, Deed::Expect);
    EXPECT_EQ(scenario.steps[1].subject->text, "p");
    EXPECT_EQ(scenario.steps[2].deed, Deed::Stop);
    EXPECT_EQ(scenario.steps[4].deed, Deed::ClearFaults);
    EXPECT_EQ(placeText(scenario, scenario.steps[4]), "x.toml:15");
}

TEST(ScenarioFileTest, AStepIsToldInWords) {
    const struct {
        const char *keys, *deed, *moment;
    } rows[] = {
        {"set.fan.1.state = \"stuck\"\nset.cpld.1 = 2", "set fan.1.state = stuck, cpld.1 = 2", ""},
        {"fault = { device = \"cpld\", effect = \"no-answer\" }\nat = 3", "fault cpld no-answer",
         "at 3 s"},
        {"fault = { device = \"mtd4\", op = \"read\", offset = 8, effect = \"short=1\" }",
         "fault mtd4 read at 8 short=1", ""},
        {"clear = \"all\"\nafter = 0.5", "clear all", "after 0.5 s"},
        {"advance = 90", "advance 90 s", ""},
        {"run = [\"ls\", \"a b\"]", "run ls 'a b'", ""},
        {"run = \"x y\"\nexit = 3\nexpect = \"a == 1\"\nwithin = 2",
         "run x y, exit 3, expect a == 1, within 2 s", ""},
        {"run = [\"x\"]\nbackground = true", "run x, in the background", ""},
        {"expect = \"a == 1\"\nwithin = 5", "expect a == 1, within 5 s", ""},
        {"when = \"a == 1\"\nwithin = 5", "wait", "when a == 1, within 5 s"},
        {"when = \"a == 1\"\nwithin = 5\nadvance = 1", "advance 1 s", "when a == 1, within 5 s"},
    };
    for (const auto &row : rows) {
        const Step step = onlyStep(row.keys);
        EXPECT_EQ(deedText(step), row.deed);
        EXPECT_EQ(momentText(step), row.moment);
    }
}

TEST(ScenarioFileTest, WhatIsWrongIsToldWithItsPlaceAndWhatWouldBeRight) {
    const struct {
        const char *keys, *message;
    } rows[] = {
        {"", "1:1: this step does nothing: give it 'set', 'fault', 'clear', 'advance', 'run', "
             "'stop' or 'expect'"},
        {"title = \"x\"", "1:1: this step does nothing: give it 'set', 'fault', 'clear', "
                          "'advance', 'run', 'stop' or 'expect'"},
        {" wen = \"a == 1\"",
         "2:2: 'wen' is not known here; there are title, at, after, when, within, set, fault, "
         "clear, advance, run, exit, background, limit, as, stop, expect and from (did you mean "
         "'when'?)"},
        {"advance = 1\ntitle = 5", "3:1: title: give a text, as in title = \"the fan fails\""},
        {"at = \"soon\"", "2:1: at: give a number of seconds from 0 to 1000000000, as in at = 60"},
        {"after = -1",
         "2:1: after: give a number of seconds from 0 to 1000000000, as in after = 2.5"},
        {"after = nan",
         "2:1: after: give a number of seconds from 0 to 1000000000, as in after = 2.5"},
        {"advance = 1000000001",
         "2:1: advance: give a number of seconds from 0 to 1000000000, as in advance = 60"},
        {"when = \"fan\"", "2:1: when: 'fan' is no condition; one is 'fan.1.speed == 0', with == "
                           "!= < <= > >=, 'and' and 'or', as in when = \"fan.1.speed == 0\""},
        {"expect = 3", "2:1: expect: give a text, as in expect = \"fan.1.speed == 0\""},
        {"set = 3",
         "2:1: set: give properties and their values, as in set.fan.1.state = \"stuck\""},
        {"set = {}",
         "2:1: set: give properties and their values, as in set.fan.1.state = \"stuck\""},
        {"set.fan.1.present = true",
         "2:11: fan.1.present: give a text between quotes, or a whole number"},
        {"set.fan.1.speed = 1.5",
         "2:11: fan.1.speed: give a text between quotes, or a whole number"},
        {"set.fan.1.state = \"a\\u0000\"",
         "2:11: fan.1.state: give a text between quotes, or a whole number"},
        {"fault = \"cpld\"", "2:1: fault: give the words of a rule, as in fault = { device = "
                             "\"i2c:0.1.0x4F\", effect = \"no-answer\" }"},
        {"fault = { device = \"cpld\" }", "2:1: fault: give a device and an effect, as in fault = "
                                          "{ device = \"i2c:0.1.0x4F\", effect = \"no-answer\" }"},
        {"fault = { device = \"cpld\", effect = \"x\", nht = 3 }",
         "2:42: 'nht' is not known here; there are device, op, offset, nth, when and effect"},
        {"fault = { device = \"cpld\", efect = \"x\" , effect = \"x\" }",
         "2:28: 'efect' is not known here; there are device, op, offset, nth, when and effect (did "
         "you mean 'effect'?)"},
        {"fault = { device = \"cpld\", effect = \"x\", nth = 1.5 }",
         "2:48: nth: give a text between quotes, or a whole number"},
        {"clear = 3", "2:1: clear: give a text, as in clear = \"all\", or the name of a fault"},
        {"run = []", "2:1: run: give a command line for the shell, or an array of a program's "
                     "words, as in run = \"iodbg check\", or run = [\"iodbg\", \"check\"]"},
        {"run = 5", "2:1: run: give a command line for the shell, or an array of a program's "
                    "words, as in run = \"iodbg check\", or run = [\"iodbg\", \"check\"]"},
        {"run = \"x\"\nexit = 256", "3:1: exit: give a number from 0 to 255, as in exit = 5"},
        {"run = \"x\"\nbackground = 1",
         "3:1: background: give true or false, as in background = true"},
        {"advance = 1\nexit = 5", "3:1: 'exit' goes with 'run'"},
        {"advance = 1\nbackground = true", "3:1: 'background' goes with 'run'"},
        {"advance = 1\nlimit = 5", "3:1: 'limit' goes with 'run'"},
        {"advance = 1\nwithin = 5", "3:1: 'within' goes with 'when' or 'expect'"},
        {"run = \"x\"\nas = \"p\"", "3:1: 'as' goes with 'fault' or 'background'"},
        {"at = 1\nafter = 1", "3:1: 'at' and 'after' do not go together: a step waits in one way"},
        {"when = \"a == 1\"\nat = 1",
         "3:1: 'at' and 'when' do not go together: a step waits in one way"},
        {"when = \"a == 1\"\nafter = 1",
         "3:1: 'after' and 'when' do not go together: a step waits in one way"},
        {"when = \"a == 1\"\nexpect = \"a == 1\"\nwithin = 3",
         "3:1: 'when' and 'expect' do not go together: make two steps, each with its own "
         "'within'"},
        {"run = \"x\"\nbackground = true\nexpect = \"a == 1\"",
         "4:1: 'background' and 'expect' do not go together: what such a program prints is "
         "expected in a later step, with 'from'"},
        {"run = \"x\"\nbackground = true\nlimit = 1",
         "4:1: 'background' and 'limit' do not go together: such a program is ended when the play "
         "ends"},
        {"set.a = 1\nadvance = 1", "3:1: 'advance' is one thing too many: a step does one, this "
                                   "one does 'set'; begin another with [[step]]"},
        {"clear = \"f\"", "2:9: no fault is called 'f' here; an earlier step gives one its name "
                          "with 'as'"},
        {"stop = \"p\"", "2:8: no program in the background is called 'p' here; an earlier step "
                         "gives one its name with 'as'"},
        {"expect = \"a == 1\"\nfrom = \"p\"", "3:8: no program in the background is called 'p' "
                                              "here; an earlier step gives one its name with "
                                              "'as'"},
        {"fault = { device = \"cpld\", effect = \"x\" }\nas = \"all\"",
         "3:6: 'all' stands for all faults; take another name"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(refusalOfStep(row.keys), row.message) << row.keys;
}

TEST(ScenarioFileTest, NamesAndTimesAreJudgedAcrossSteps) {
    const std::string fault =
        "[[step]]\nfault = { device = \"cpld\", effect = \"x\" }\nas = \"f\"\n";
    const std::string program = "[[step]]\nrun = \"x\"\nbackground = true\nas = \"p\"\n";
    EXPECT_EQ(refusal(fault + fault), "6:6: 'f' is the name of another already");
    EXPECT_EQ(refusal(fault + "[[step]]\nclear = \"all\"\n[[step]]\nclear = \"f\"\n"),
              "7:9: no fault is called 'f' here; an earlier step gives one its name with 'as'");
    EXPECT_EQ(refusal(fault + "[[step]]\nstop = \"f\"\n"),
              "5:8: no program in the background is called 'f' here; an earlier step gives one its "
              "name with 'as'");
    EXPECT_EQ(refusal(program + "[[step]]\nclear = \"p\"\n"),
              "6:9: no fault is called 'p' here; an earlier step gives one its name with 'as'");
    EXPECT_EQ(refusal(program + "[[step]]\nstop = \"p\"\n[[step]]\nexpect = \"a == 1\"\n"
                                "from = \"p\"\n"),
              "9:8: no program in the background is called 'p' here; an earlier step gives one its "
              "name with 'as'");
    EXPECT_EQ(refusal("[[step]]\nat = 5\n[[step]]\nat = 5\n[[step]]\nat = 4.9\n"),
              "6:1: an earlier step is done later: steps are done in their order");
}

TEST(ScenarioFileTest, AllThatIsWrongIsToldInTheOrderOfTheFile) {
    EXPECT_EQ(refusal("titel = \"x\"\n[[step]]\nadvance = -1\n[[step]]\nexit = 5\nstop = \"p\"\n"),
              "1:1: 'titel' is not known here; there are title and step (did you mean 'title'?): "
              "what is done is in steps, each behind a line [[step]]\n"
              "x.toml:3:1: advance: give a number of seconds from 0 to 1000000000, as in advance = "
              "60\n"
              "x.toml:5:1: 'exit' goes with 'run'\n"
              "x.toml:6:8: no program in the background is called 'p' here; an earlier step gives "
              "one its name with 'as'");
}

TEST(ScenarioFileTest, AFileThatIsNoScenarioIsRefused) {
    constexpr char kNoSteps[] = "1:1: there are no steps; each begins with a line [[step]]";
    EXPECT_EQ(refusal(""), kNoSteps);
    EXPECT_EQ(refusal("title = \"nothing\"\n"), kNoSteps);
    EXPECT_EQ(refusal("step = []\n"), "1:8: there are no steps; each begins with a line [[step]]");
    EXPECT_EQ(refusal("[step]\nadvance = 1\n"), kNoSteps);
    EXPECT_EQ(refusal("[[step]]\nadvance = 1\nadvance = 2\n").substr(0, 2), "3:");
    EXPECT_EQ(refusal("[[step]]\nadvance = \n").substr(0, 2), "2:");
    EXPECT_EQ(refusal("\xFF\xFE").substr(0, 2), "1:");
    EXPECT_EQ(refusal("[[step]]\nadvance = 1\n\n[[\x01]]\nadvance = 2\n"),
              "4:1: this is no TOML; a step begins with [[step]]");
    EXPECT_EQ(refusal("[[=]]"), "1:1: this is no TOML; a step begins with [[step]]");
    // Nothing of a file gets to a terminal as it is.
    EXPECT_EQ(refusal("\"\\u001b[2J\" = 1\n[[step]]\nadvance = 1\n").find('\x1b'),
              std::string::npos);
}

std::string repeated(const std::string &text, size_t count) {
    std::string all;
    for (size_t i = 0; i < count; ++i)
        all += text;
    return all;
}

TEST(ScenarioFileTest, NamesAndValuesThatGoTooDeepAreRefused) {
    constexpr size_t kMany = 300000;
    const std::string many = repeated(".a", kMany);
    EXPECT_EQ(refusal("[[step]]\nset" + many + " = 1\n"), "2:68: a name has too many parts");
    EXPECT_EQ(refusal("[[step" + many + "]]\n"), "1:71: a name has too many parts");
    EXPECT_EQ(refusal("x = { \"a\" " + repeated(".\"a\"", kMany) + " = 1 }").substr(0, 4), "1:13");
    EXPECT_EQ(refusal("x = { a = \"\"\"b\"\"\"\", c" + many + " = 1 }").substr(0, 2), "1:");
    EXPECT_EQ(refusal("x = { a = '\\', c" + many + " = 1 }").substr(0, 2), "1:");
    EXPECT_EQ(refusal("[[step]]\nrun = " + repeated("[", kMany)).substr(0, 2), "2:");
    // Where they are no names there can be as many as there are.
    EXPECT_EQ(onlyStep("title = \"" + many + "\" # " + many + "\nadvance = 1\n").title, many);
    EXPECT_EQ(onlyStep("title = \"\"\"\\\"\"\" " + many + "\n\"\"\"\"\nadvance = 1\n").title,
              "\"\"\" " + many + "\n\"");
    EXPECT_EQ(onlyStep("title = 'a\\'\nadvance = 1\n" + repeated("# a.b\n", 100)).title, "a\\");
}

TEST(ScenarioFileTest, AFileIsRead) {
    const TemporaryFolder folder;
    const std::string path = folder.path() + "/a.toml";
    std::ofstream(path) << "[[step]]\nadvance = 5\n" << std::string(10000, '#');
    const Scenario scenario = readScenario(path);
    EXPECT_EQ(scenario.file, path);
    EXPECT_EQ(scenario.steps.at(0).advanceNs, 5 * kSecondNs);
    const auto reason = [](const std::string &file) -> std::string {
        try {
            readScenario(file);
        } catch (const language::Refused &refused) {
            return refused.what();
        }
        return "read";
    };
    EXPECT_EQ(reason(folder.path()), "cannot read " + folder.path() + ": Is a directory");
    EXPECT_EQ(reason(path + "x"), "cannot read " + path + "x: No such file or directory");
}

} // namespace
