// What comes from the definition of a command, with a small tool of the test's own.

#include "command_line/completion.h"
#include "command_line/man_page.h"
#include "command_line/parse.h"
#include "language/refused.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using command_line::Command;
using command_line::Offers;
using command_line::Output;
using command_line::Tool;
using Strings = std::vector<std::string>;

class Printer : public Output {
  public:
    void printText(const std::string &printed) const override { text += printed; }

    mutable std::string text;
};

/** What has been taken and done, of the commands below. */
struct Record {
    std::string done, box, name, level = "-";
    Strings numbers, colours, stray, line;
    bool isLoud = false;
    bool isQuiet = false;
    bool isJson = false;
    int completed = 0; // definitions
};

Record record;

command_line::Parser texts(Strings &target, Offers offers = {}) {
    return {[&target](const std::string &word) { target.push_back(word); }, std::move(offers)};
}

void definePaint(Command &paint) {
    ++record.completed;
    paint.argument("NAME", "What is painted", command_line::text(record.name));
    paint.optionalArguments("NUMBER", "Which of them", texts(record.numbers));
    paint.option("--level", "N", "How much", command_line::oneOf(record.level, {"low", "high"}))
        .usually("low");
    paint.option("--colour", "WORD", "In which", texts(record.colours)).repeatable();
    paint.flag("--loud", "Tell of it", record.isLoud);
    paint.flag("--quiet", "Tell nothing", record.isQuiet).notWith("--loud");
    paint.option("--file", "FILE", "Keep it", command_line::fileName(record.box))
        .onlyWith("--loud");
    paint.detail("See 'tool box' and --loud (with a NAME), or \\ alone.");
    paint.glossary({"Colours",
                    {{"red", "as fire"},
                     {"rgb=R:G", "R of red and G of green, with 'blue' at --level and what else it "
                                 "takes to go on below"},
                     {"WORD", "another"}}});
    paint.example("tool paint door");
    paint.does([](Printer &printer) {
        record.done = "paint";
        printer.printText("painted\n");
        return 7;
    });
}

void defineBox(Command &box) {
    ++record.completed;
    box.argument("DIR", "The box",
                 {command_line::text(record.box), {{}, Offers::Files::Folders, nullptr}});
    box.onlyAfter([] { record.done += "opened "; });
    Command &fill = box.command("fill", "Fill it").example("tool box DIR fill x");
    fill.optionalArguments(
        "THING", "With what",
        texts(record.numbers, {{"any"}, Offers::Files::None, [](const Strings &arguments) {
                                   if (arguments.at(0) == "broken")
                                       throw std::runtime_error("it is broken");
                                   return Strings{"in-" + arguments[0]};
                               }}));
    fill.onlyAfter([] { record.done += "cleaned "; });
    fill.does([] { record.done += "fill"; });
    box.command("empty", "Empty it").alias("drain").does([] { record.done += "empty"; });
}

void defineStart(Command &start) {
    ++record.completed;
    start.argument("DIR", "Where", command_line::text(record.box));
    start.takesProgram([](const Strings &unknown, const Strings &line) {
        record.stray = unknown;
        record.line = line;
        if (line.empty())
            throw language::Refused("no program");
    });
    start.does([] { record.done = "start"; });
}

void defineTool(Command &root) {
    root.isGroup = true;
    root.chapter("Colours");
    root.command("paint", "Paint something", definePaint);
    root.chapter("Boxes", "DIR is a box.");
    root.group("box", "Boxes", defineBox);
    root.command("start", "Start a program", defineStart);
}

Tool makeTool(bool isForPrograms = false) {
    return {{"tool", "A tool", defineTool},
            "Footer",
            "tool 1",
            isForPrograms ? &record.isJson : nullptr};
}

std::string printed(const std::vector<const char *> &words, bool isForPrograms) {
    Tool tool = makeTool(isForPrograms);
    Printer printer;
    command_line::actionFor(tool, words)(printer);
    return printer.text;
}

/** Carries a line out; its exit code. */
int carryOut(const std::vector<const char *> &words, bool isForPrograms = false) {
    record = {};
    Tool tool = makeTool(isForPrograms);
    Printer printer;
    return command_line::actionFor(tool, words)(printer);
}

std::string refusalOf(const std::vector<const char *> &words) {
    try {
        carryOut(words);
    } catch (const command_line::WrongUsage &refusal) {
        return refusal.what();
    }
    return "";
}

std::string completions(const Strings &words, bool isForPrograms = false) {
    Tool tool = makeTool(isForPrograms);
    return command_line::completionsOf(tool, words);
}

TEST(DefinitionTest, CommandsTakeTheirWordsAndGiveTheirExitCode) {
    EXPECT_EQ(carryOut({"paint", "--colour", "red", "door", "1", "2", "--colour", "blue",
                        "--level=high", "--quiet"}),
              7);
    EXPECT_EQ(record.done, "paint");
    EXPECT_EQ(record.name, "door");
    EXPECT_EQ(record.numbers, (Strings{"1", "2"}));
    EXPECT_EQ(record.colours, (Strings{"red", "blue"}));
    EXPECT_EQ(record.level, "high");
    EXPECT_TRUE(record.isQuiet);
    EXPECT_FALSE(record.isLoud);
    EXPECT_EQ(carryOut({"box", "green", "drain"}), 0);
    EXPECT_EQ(record.box, "green");
}

TEST(DefinitionTest, OnlyTheNamedCommandIsCompleted) {
    carryOut({"paint", "door"});
    EXPECT_EQ(record.completed, 1);
    refusalOf({"xyzzy"});
    EXPECT_EQ(record.completed, 0);
    carryOut({"--version"});
    EXPECT_EQ(record.completed, 0);
    carryOut({"--help"});
    EXPECT_EQ(record.completed, 0);
    record = {};
    completions({"bo"});
    EXPECT_EQ(record.completed, 0);
}

TEST(DefinitionTest, WhatMustHoldIsAskedFromTheOutside) {
    carryOut({"box", "green", "fill", "sand"});
    EXPECT_EQ(record.done, "opened cleaned fill");
    EXPECT_EQ(record.numbers, Strings{"sand"});
}

TEST(DefinitionTest, OptionsThatDoNotStandTogetherAreNamed) {
    EXPECT_EQ(refusalOf({"paint", "door", "--quiet", "--loud"}),
              "--loud excludes --quiet; see 'tool paint --help'");
    EXPECT_EQ(refusalOf({"paint", "door", "--file", "x"}),
              "--file requires --loud; see 'tool paint --help'");
    EXPECT_EQ(refusalOf({"paint", "door", "--level", "medium"}),
              "--level: 'medium' is none of low|high; see 'tool paint --help'");
    EXPECT_EQ(refusalOf({"paint"}), "NAME is required; see 'tool paint --help'");
    EXPECT_EQ(refusalOf({"box", "fill"}),
              "DIR is missing in front of 'fill'; see 'tool box fill --help'");
    EXPECT_EQ(record.done, "");
}

TEST(DefinitionTest, AProgramsLineStaysAsItIs) {
    carryOut({"start", "here", "--", "ls", "--help", "--", "paint", "-x"});
    EXPECT_EQ(record.done, "start");
    EXPECT_EQ(record.box, "here");
    EXPECT_EQ(record.line, (Strings{"ls", "--help", "--", "paint", "-x"}));
    EXPECT_EQ(record.stray, Strings{});
    EXPECT_EQ(refusalOf({"start", "here", "ls", "-l"}), "no program; see 'tool start --help'");
    EXPECT_EQ(record.stray, (Strings{"ls", "-l"}));
}

TEST(DefinitionTest, OptionsOfAllCommandsFollowThem) {
    carryOut({"paint", "door", "--json"}, true);
    EXPECT_TRUE(record.isJson);
    carryOut({"--json", "paint", "door"}, true);
    EXPECT_TRUE(record.isJson);
    EXPECT_EQ(refusalOf({"--json", "paint", "door"}),
              "The following argument was not expected: --json; see 'tool paint --help'");
}

TEST(DefinitionTest, HelpTellsOfThem) {
    for (const bool isForPrograms : {false, true}) {
        const std::string help = printed({"paint", "--help"}, isForPrograms);
        EXPECT_EQ(help.find("  --json ") != std::string::npos, isForPrograms) << help;
        EXPECT_NE(help.find("\nSee 'tool box' and --loud (with a NAME), or \\ alone.\n"),
                  std::string::npos)
            << help;
        EXPECT_EQ(printed({"--help"}, isForPrograms).find("See 'tool box'"), std::string::npos);
        EXPECT_NE(help.find("\n\nColours:\n"
                            "  red      as fire\n"
                            "  rgb=R:G  R of red and G of green, with 'blue' at --level and what "
                            "else it\n"
                            "           takes to go on below\n"
                            "  WORD     another\n"
                            "\nExamples:\n"),
                  std::string::npos)
            << help;
    }
}

TEST(DefinitionTest, CompletionFollowsTheLine) {
    EXPECT_EQ(completions({""}), "paint\nbox\nstart\n");
    EXPECT_EQ(completions({}), "paint\nbox\nstart\n");
    EXPECT_EQ(completions({"b"}), "box\n");
    EXPECT_EQ(completions({"--"}), "--help\n--version\n");
    EXPECT_EQ(completions({"paint", "--l"}), "--level\n--loud\n");
    EXPECT_EQ(completions({"paint", "--level", ""}), "low\nhigh\n");
    EXPECT_EQ(completions({"paint", "--level", "high", "--q"}), "--quiet\n");
    EXPECT_EQ(completions({"paint", "--level=high", "--q"}), "--quiet\n");
    EXPECT_EQ(completions({"paint", "--file", "any"}), "\tfiles\n");
    EXPECT_EQ(completions({"paint", "--", "--l"}), "");
    EXPECT_EQ(completions({"paint", "--v"}), "");
    EXPECT_EQ(completions({"paint", "--v"}, true), "--version\n");
    EXPECT_EQ(completions({"box", "any"}), "\tfolders\n");
    EXPECT_EQ(completions({"box", "green", ""}), "fill\nempty\n");
    EXPECT_EQ(completions({"box", "green", "empty", ""}), "");
    EXPECT_EQ(completions({"box", "green", "fill", ""}), "any\nin-green\n");
    EXPECT_EQ(completions({"box", "green", "fill", "sand", "in"}), "in-green\n");
    EXPECT_EQ(completions({"box", "broken", "fill", ""}), "any\n");
    EXPECT_EQ(completions({"box", "fill", ""}), "any\n"); // without its folder
    EXPECT_EQ(completions({"start", "here", "--", "ls", ""}), "\tprogram 3\n");
    EXPECT_EQ(completions({"start", "here", "--", ""}), "\tprogram 3\n");
}

TEST(DefinitionTest, TheManualPageHasWhatTheHelpHas) {
    Tool tool = makeTool();
    EXPECT_EQ(command_line::manPageOf(tool), R"(.Sh COMMANDS
.Ss Colours
.Bl -tag -width Ds
.It Xo
.Cm paint
.Ar NAME
.Op Ar NUMBER ...
.Op Fl -level Ar N
.Op Fl -colour Ar WORD ...
.Op Fl -loud
.Op Fl -quiet
.Op Fl -file Ar FILE
.Xc
Paint something.
See
.Ql tool box
and
.Fl -loud
(with a
.Ar NAME ) ,
or \e alone.
.Bl -tag -width Ds
.It Ar NAME
What is painted.
.It Ar NUMBER ...
Which of them.
.It Fl -level Ar N
How much;
by default
.Ql low .
.It Fl -colour Ar WORD ...
In which.
.It Fl -loud
Tell of it.
.It Fl -quiet
Tell nothing.
.It Fl -file Ar FILE
Keep it.
.El
.Pp
Colours:
.Bl -tag -width Ds
.It Cm red
as fire.
.It Cm rgb= Ns Ar R:G
.Ar R
of red and
.Ar G
of green, with
.Ql blue
at
.Fl -level
and what else it takes to go on below.
.It Ar WORD
another.
.El
.El
.Ss Boxes
.Ar DIR
is a box.
.Bl -tag -width Ds
.It Xo
.Cm box
.Ar DIR
.Cm fill
.Op Ar THING ...
.Xc
Fill it.
.Bl -tag -width Ds
.It Ar THING ...
With what.
.El
.It Xo
.Cm box
.Ar DIR
.Cm empty
.Xc
Empty it.
.It Xo
.Cm start
.Ar DIR
.Fl -
.Ar PROGRAM
.Op Ar ARGUMENT ...
.Xc
Start a program.
.Bl -tag -width Ds
.It Ar DIR
Where.
.El
.El
)");
}

} // namespace
