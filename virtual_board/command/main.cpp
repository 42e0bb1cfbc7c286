// The command line of `vboard`.

#include "virtual_board/board/create.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/help.h"
#include "virtual_board/words/values.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <functional>

// Tells a preloaded library to stay off: hands that work on a board are not on it, and would wait
// for themselves at its lock.
extern "C" __attribute__((visibility("default"))) const char vboardSeamOfProgram;
const char vboardSeamOfProgram = 1;

namespace {

enum ExitCode { kDone = 0, kRefused = 1, kUsage = 2, kCannotStart = 3, kNotOnBoard = 125 };

constexpr char kExitCodes[] =
    "Exit codes:\n"
    "  0  done\n"
    "  1  refused: the board or a value is not usable; nothing changed\n"
    "  2  the command line is wrong\n"
    "  3  the program of 'vboard run' cannot be started\n"
    "'vboard run' otherwise ends with the program's own exit code; 125 is "
    "a program\nthat cannot be on its board: it is refused rather than run on the host.\n";

/** What the command line asks for; filled by the parser, carried out afterwards. */
using Command = std::function<void()>;

/** Everything that options are bound to. */
struct Arguments {
    vboard::CreateArguments create;
    vboard::TraceArguments trace;
    vb::FaultWords fault;
    std::string folder, name, value, partition, block;
    std::vector<std::string> names, ids, program;
    bool asJson = false;
    bool allowsHost = false;
    bool forQemu = false;
    bool forShell = false;
    bool isOnce = false;
    bool isWatching = false;
    double interval = 1;
};

// In help a word by its position is its name alone, and an option's value has a name that says more
// than its type.
template <typename Target>
CLI::Option &addArgument(CLI::App &command, const std::string &name, Target &target,
                         const std::string &help) {
    return *command.add_option(name, target, help)->type_name("");
}

template <typename Target>
CLI::Option &addOption(CLI::App &command, const std::string &name, const std::string &valueName,
                       Target &target, const std::string &help) {
    return *command.add_option(name, target, help)->type_name(valueName);
}

CLI::App &addCommand(CLI::App &parent, const std::string &name, const std::string &description,
                     const std::string &examples) {
    CLI::App &command = *parent.add_subcommand(name, description);
    command.footer("Examples:\n" + examples);
    return command;
}

void addFolder(CLI::App &command, std::string &folder) {
    addArgument(command, "DIR", folder, "The board's folder").required();
}

void addJson(CLI::App &command, bool &asJson) {
    command.add_flag("--json", asJson, "Print JSON");
}

void addCreate(CLI::App &app, Arguments &arguments, Command &todo) {
    vboard::CreateArguments &create = arguments.create;
    const vb::BoardOptions usual;
    create.time = "real";
    create.serial = usual.serial;
    create.commandLine = usual.commandLine;
    create.mac = vb::macText(usual.mac);

    CLI::App &command =
        addCommand(app, "create", "Make a new board in a folder that is not there yet, or is empty",
                   "  vboard create --model 0x0709 board\n"
                   "  vboard create --model 0x0109 --time virtual --serial SN42 board\n"
                   "  vboard create --model 0x0709 --mtd 12:page=4096,spare=128 board\n");
    addFolder(command, create.folder);
    addOption(command, "--model", "ID", create.model, "Device id; 'vboard list-models' lists them")
        .required();
    addOption(command, "--time", "WORD", create.time,
              "real|virtual: virtually, sleeps advance the board's clock and return at once")
        .check(CLI::IsMember({"real", "virtual"}).description(""))
        ->capture_default_str();
    addOption(command, "--serial", "TEXT", create.serial, "Serial number").capture_default_str();
    addOption(command, "--mac", "MAC", create.mac, "MAC address").capture_default_str();
    addOption(command, "--cmdline", "TEXT", create.commandLine, "Kernel command line")
        .capture_default_str();
    addOption(command, "--mtd", "GEOMETRY", create.flash,
              "Geometry of a flash partition, as in 4:size=262144,erase=131072,page=2048,spare=64,"
              "type=nand; partitions are 0, 4, 12 and 14")
        .expected(1)
        ->take_all();
    command.callback([&] { todo = [&] { vboard::create(arguments.create); }; });
}

void addListModels(CLI::App &app, Arguments &arguments, Command &todo) {
    CLI::App &command = addCommand(app, "list-models", "List the models that boards can be made of",
                                   "  vboard list-models\n");
    addJson(command, arguments.asJson);
    command.callback([&] { todo = [&] { vboard::listModels(arguments.asJson); }; });
}

/** What is missing on a command line of run, with the right one. */
std::string behindDashes(const std::string &folder, const std::vector<std::string> &program) {
    std::string line = "vboard run " + vboard::shellWord(folder) + " --";
    for (const std::string &word : program)
        line += " " + vboard::shellWord(word);
    return program.empty() ? "PROGRAM behind '--' is required: " + line + " PROGRAM [ARGUMENTS...]"
                           : "'--' is missing before the program: " + line;
}

void addRun(CLI::App &app, Arguments &arguments, Command &todo) {
    CLI::App &command = addCommand(
        app, "run",
        "Run a program, and all that it starts, on a board: run DIR -- PROGRAM [ARGUMENTS...]",
        "  vboard run board -- iodbg show\n"
        "  vboard run board -- sh -c 'cat /proc/cmdline'\n");
    addFolder(command, arguments.folder);
    command.add_flag(
        "--allow-host", arguments.allowsHost,
        "Also start programs that would be on the host: those that the board's library "
        "cannot be loaded into");
    // A program without '--' before it is not taken for more arguments of this command.
    command.prefix_command();
    command.callback([&arguments, &todo, app = &command] {
        std::vector<std::string> words = app->remaining();
        if (arguments.program.empty() || !words.empty()) {
            words.insert(words.end(), arguments.program.begin(), arguments.program.end());
            throw CLI::ParseError(behindDashes(arguments.folder, words), kUsage);
        }
        todo = [&] {
            vboard::runProgram(arguments.folder, arguments.program, arguments.allowsHost);
        };
    });
}

void addEnv(CLI::App &app, Arguments &arguments, Command &todo) {
    CLI::App &command =
        addCommand(app, "env",
                   "Print the environment of a program on a board, for launchers that 'vboard run' "
                   "cannot start",
                   "  env $(vboard env board) iodbg show\n"
                   "  eval \"$(vboard env --shell board)\"\n"
                   "  qemu-mips -L /usr/mips-linux-gnu $(vboard env --qemu board) ./iodbg show\n");
    addFolder(command, arguments.folder);
    CLI::Option *forQemu =
        command.add_flag("--qemu", arguments.forQemu, "Print arguments for qemu's user emulation");
    command
        .add_flag("--shell", arguments.forShell,
                  "Print a command for 'eval', which puts a shell's programs on the board")
        ->excludes(forQemu);
    command.callback([&] {
        todo = [&] {
            using Form = vboard::EnvironmentForm;
            vboard::printEnvironment(arguments.folder, arguments.forShell  ? Form::Shell
                                                       : arguments.forQemu ? Form::Qemu
                                                                           : Form::Lines);
        };
    });
}

void addGet(CLI::App &app, Arguments &arguments, Command &todo) {
    CLI::App &command =
        addCommand(app, "get", "Show what the board holds; without a name, everything",
                   "  vboard get board\n"
                   "  vboard get board cpld.2 supply.1.present\n"
                   "  vboard get board eeprom.board@0x100+16\n");
    addFolder(command, arguments.folder);
    addArgument(command, "NAME", arguments.names, "Properties");
    addJson(command, arguments.asJson);
    command.callback([&] {
        todo = [&] { vboard::getProperties(arguments.folder, arguments.names, arguments.asJson); };
    });
}

void addSet(CLI::App &app, Arguments &arguments, Command &todo) {
    CLI::App &command = addCommand(app, "set", "Change what the board holds",
                                   "  vboard set board supply.2.present no\n"
                                   "  vboard set board cpld.2 0x2413\n"
                                   "  vboard set board poe.3.device 'class=4 draws=18000'\n"
                                   "  vboard set board eeprom.board@0x100 00ff\n"
                                   "  vboard set board identity.mac 02:00:5e:10:00:01\n");
    addFolder(command, arguments.folder);
    addArgument(command, "NAME", arguments.name, "Property").required();
    addArgument(command, "VALUE", arguments.value, "Its new value").required();
    command.callback([&] {
        todo = [&] { vboard::setProperty(arguments.folder, arguments.name, arguments.value); };
    });
}

void addFaultAdd(CLI::App &fault, Arguments &arguments, Command &todo) {
    vb::FaultWords &words = arguments.fault;
    CLI::App &command = addCommand(
        fault, "add", "Add a rule and print its number",
        "  vboard fault board add --device cpld --op read --offset 1 --effect refuse=-5\n"
        "  vboard fault board add --device i2c:0.0.0x51 --nth 3 --when from --effect no-answer\n"
        "  vboard fault board add --device /dev/bspHandle --op open --effect open-fails=ENODEV\n"
        "  vboard fault board add --device /tmp/bsp/devId --op read --effect short=2\n"
        "  vboard fault board add --device poe --op write --offset 0x42 --effect late-answer=3\n"
        "  vboard fault board add --device poe --op reset --effect no-answer\n"
        "  vboard fault board add --device mtd12 --op program --offset 0x800 --when from "
        "--effect fails=EIO\n"
        "  vboard fault board add --device mtd4 --op change --nth 2 --effect power-cut=100\n"
        "  vboard fault board add --device console --op write --effect fails=EIO\n");
    addOption(
        command, "--device", "DEVICE", words.device,
        "cpld|gpio|i2c|i2c:BUS.CHANNEL.DEVICE|poe|mtd0|mtd4|mtd12|mtd14|console, or the path of a "
        "file of the board")
        .required();
    addOption(command, "--op", "OPERATION", words.op,
              "any|open|read|write (poe: a frame; console: its speed)|reset (poe)|upgrade "
              "(cpld)|map (/dev/mem); flash: "
              "read|program|erase|change (program or erase)|info (the geometry)")
        .capture_default_str();
    addOption(
        command, "--offset", "N", words.offset,
        "Only this register, line, offset inside an I2C device, PoE command, or page or block "
        "of flash (its offset)");
    addOption(command, "--nth", "N", words.nth, "Which matching request, counted from 1")
        .capture_default_str();
    addOption(command, "--when", "WORD", words.when,
              "once|every|from: once, every n-th, or the n-th and all behind it")
        .capture_default_str();
    addOption(command, "--effect", "EFFECT", words.effect,
              "refuse=RESULT|open-fails=ERRNO|ioctl-fails=ERRNO|short=BYTES|corrupt=INDEX:MASK|"
              "no-answer; poe: late-answer=READ|wrong-echo|wrong-checksum|bad-port=PORT (from 0)|"
              "power-loss|no-effect; flash: fails=ERRNO|power-cut=BYTES (also of writes of files); "
              "console: fails=ERRNO")
        .required();
    command.callback([&] { todo = [&] { vboard::addFault(arguments.folder, arguments.fault); }; });
}

void addFault(CLI::App &app, Arguments &arguments, Command &todo) {
    CLI::App &fault = addCommand(app, "fault", "Let requests go wrong by rules",
                                 "  vboard fault board add --help\n"
                                 "  vboard fault board list\n"
                                 "  vboard fault board clear 2\n");
    addFolder(fault, arguments.folder);
    fault.require_subcommand(1);
    addFaultAdd(fault, arguments, todo);

    CLI::App &list = addCommand(fault, "list", "List the rules and how often they fired",
                                "  vboard fault board list --json\n");
    addJson(list, arguments.asJson);
    list.callback([&] { todo = [&] { vboard::listFaults(arguments.folder, arguments.asJson); }; });

    CLI::App &clear = addCommand(fault, "clear", "Remove rules; without a number, all",
                                 "  vboard fault board clear\n"
                                 "  vboard fault board clear 1 3\n");
    addArgument(clear, "ID", arguments.ids, "Numbers of rules");
    clear.callback([&] { todo = [&] { vboard::clearFaults(arguments.folder, arguments.ids); }; });
}

void addTrace(CLI::App &app, Arguments &arguments, Command &todo) {
    vboard::TraceArguments &trace = arguments.trace;
    CLI::App &command = addCommand(app, "trace",
                                   "Show the requests that reached the board: board time in "
                                   "seconds, process id, request",
                                   "  vboard trace board --last 10\n"
                                   "  vboard trace board --follow\n"
                                   "  vboard trace board --json --clear\n");
    addFolder(command, trace.folder);
    command.add_flag("--json", trace.asJson, "Print one JSON object per line");
    addOption(command, "--last", "N", trace.last, "Only the last N requests")
        .check(CLI::Range(uint32_t{0}, UINT32_MAX).description(""));
    CLI::Option *follow =
        command.add_flag("--follow", trace.isFollowing, "Go on with new requests until stopped");
    command.add_flag("--clear", trace.isClearing, "Forget the requests after showing them")
        ->excludes(follow);
    command.callback([&] { todo = [&] { vboard::printTrace(arguments.trace); }; });
}

void addPanel(CLI::App &app, Arguments &arguments, Command &todo) {
    CLI::App &command = addCommand(app, "panel", "Draw the board's front panel",
                                   "  vboard panel board\n"
                                   "  vboard panel board --watch --interval 0.5\n");
    addFolder(command, arguments.folder);
    CLI::Option *watch =
        command.add_flag("--watch", arguments.isWatching, "Draw it again until stopped");
    command.add_flag("--once", arguments.isOnce, "Draw it once, as without --watch")
        ->excludes(watch);
    addOption(command, "--interval", "SECONDS", arguments.interval,
              "Seconds between drawings, 0.1-3600")
        .needs(watch)
        ->check(CLI::Range(0.1, 3600.0).description(""))
        ->capture_default_str();
    command.callback([&] {
        todo = [&] {
            vboard::printPanel(arguments.folder, arguments.isWatching, arguments.interval);
        };
    });
}

void addFlash(CLI::App &app, Arguments &arguments, Command &todo) {
    CLI::App &flash = addCommand(app, "flash", "Show the flash partitions and what they hold",
                                 "  vboard flash board\n"
                                 "  vboard flash board --json\n"
                                 "  vboard flash board mark-bad 12 7\n");
    addFolder(flash, arguments.folder);
    addJson(flash, arguments.asJson);
    flash.require_subcommand(0, 1);
    CLI::App &markBad = addCommand(flash, "mark-bad", "Make a block of NAND a bad one",
                                   "  vboard flash board mark-bad 12 7\n");
    addArgument(markBad, "PARTITION", arguments.partition, "0|4|12|14").required();
    addArgument(markBad, "BLOCK", arguments.block, "Number of the block, from 0").required();
    markBad.callback([&] {
        todo = [&] {
            vboard::markBadBlock(arguments.folder, arguments.partition, arguments.block);
        };
    });
    // The parser calls back a command behind its sub-commands.
    flash.callback([&arguments, &todo, app = &flash] {
        if (app->get_subcommands().empty())
            todo = [&arguments] { vboard::showFlash(arguments.folder, arguments.asJson); };
    });
}

void addConsole(CLI::App &app, Arguments &arguments, Command &todo) {
    CLI::App &command =
        addCommand(app, "console", "Show the speed of the console", "  vboard console board\n");
    addFolder(command, arguments.folder);
    addJson(command, arguments.asJson);
    command.callback(
        [&] { todo = [&] { vboard::showConsole(arguments.folder, arguments.asJson); }; });
}

void addCommands(CLI::App &app, Arguments &arguments, Command &todo) {
    app.require_subcommand(1);
    app.footer(std::string("'vboard COMMAND --help' shows a command's options and examples.\n\n") +
               kExitCodes);
    addCreate(app, arguments, todo);
    addListModels(app, arguments, todo);
    addRun(app, arguments, todo);
    addEnv(app, arguments, todo);
    addGet(app, arguments, todo);
    addSet(app, arguments, todo);
    addFault(app, arguments, todo);
    addPanel(app, arguments, todo);
    addFlash(app, arguments, todo);
    addConsole(app, arguments, todo);
    addTrace(app, arguments, todo);
}

int fail(ExitCode code, const std::string &reason) {
    std::fflush(stdout);
    std::fprintf(stderr, "vboard: %s\n", reason.c_str());
    return code;
}

int carryOut(const Command &todo) {
    try {
        todo();
    } catch (const vboard::NotOnBoard &refusal) {
        return fail(kNotOnBoard, refusal.what());
    } catch (const vboard::CannotStart &failure) {
        return fail(kCannotStart, failure.what());
    } catch (const std::exception &refusal) {
        return fail(kRefused, refusal.what());
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        return fail(kRefused, "cannot write the output");
    return kDone;
}

int runCommandLine(int argc, char **argv) {
    CLI::App app("A whole switch in software: makes virtual boards, runs programs on them, and "
                 "shows and changes what they hold.",
                 "vboard");
    Arguments arguments;
    Command todo;
    addCommands(app, arguments, todo);
    app.set_version_flag("--version", "vboard " VBOARD_VERSION, "Print the version and exit");

    // What follows '--' is the program's own, options included, and not for this parser.
    std::vector<std::string> words(argv + 1, argv + argc);
    const bool isRun = !words.empty() && words.front() == "run";
    const auto separator = isRun ? std::find(words.begin(), words.end(), "--") : words.end();
    if (separator != words.end()) {
        arguments.program.assign(separator + 1, words.end());
        words.erase(separator, words.end());
    }
    std::reverse(words.begin(), words.end()); // the order in which CLI11 takes them
    try {
        app.parse(words);
    } catch (const CLI::CallForHelp &) {
        todo = [&] { std::fputs(vboard::helpWanted(app).c_str(), stdout); };
    } catch (const CLI::CallForVersion &version) {
        todo = [text = std::string(version.what())] { std::puts(text.c_str()); };
    } catch (const CLI::ParseError &mistake) {
        return fail(kUsage, vboard::mistakeText(app, mistake));
    }
    return carryOut(todo);
}

} // namespace

int main(int argc, char **argv) {
    try {
        return runCommandLine(argc, argv);
    } catch (...) {
        std::fputs("vboard: out of memory\n", stderr);
        return kRefused;
    }
}
