// `vboard create`.

#include "command_line/blocked_signals.h"
#include "command_line/line.h"
#include "language/property_table.h"
#include "language/property_values.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/words.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <sstream>

namespace vboard {

namespace {

/** The models, as completion offers them. */
Offers models() {
    Offers offers;
    for (const VBoardModel &model : List<VBoardModel>(vboardModels))
        offers.words.emplace_back(model.id);
    return offers;
}

/** Takes what the property has. */
Parser pace(std::string &target) {
    const auto take = [&target](const std::string &word) {
        target = parseValue(language::propertyOf("time"), word).text();
    };
    return {take, {wordsToSet(language::propertyOf("time")), Offers::Files::None, nullptr}};
}

void defineCreate(Command &command) {
    const VBoardOptions &usual = *vboardUsualOptions();
    const auto arguments = std::make_shared<CreateArguments>();
    arguments->time = usual.time;
    arguments->serial = usual.serial;
    arguments->mac = usual.mac;
    arguments->commandLine = usual.commandLine;

    addFolder(command, arguments->folder);
    command.option("--model", "ID",
                   "Device id; 'vboard list-models' lists them. Either this or --from is required",
                   {text(arguments->model), models()});
    command
        .option("--from", "FILE",
                "A captured unit, which 'iodbg capture' has saved: the board answers as it did. "
                "What it cannot have of the unit is told on standard error",
                {text(arguments->from), {{}, Offers::Files::All, nullptr}})
        .notWith("--model")
        .notWith("--serial")
        .notWith("--mac")
        .notWith("--mtd");
    command
        .option("--time", "WORD",
                "How time passes: real|virtual|stepped, or N times as fast: x60. Virtually, sleeps "
                "advance the board's clock and return at once; stepped, 'vboard advance' does",
                pace(arguments->time))
        .usually(arguments->time);
    command.option("--serial", "TEXT", "Serial number", text(arguments->serial))
        .usually(arguments->serial);
    command.option("--mac", "MAC", "MAC address", text(arguments->mac)).usually(arguments->mac);
    command.option("--cmdline", "TEXT", "Kernel command line", text(arguments->commandLine))
        .usually(arguments->commandLine);
    command
        .option("--mtd", "GEOMETRY",
                "Geometry of a flash partition, as in 4:size=262144,erase=131072,page=2048,"
                "spare=64,type=nand; partitions are 0, 4, 12 and 14",
                texts(arguments->flash))
        .repeatable();
    command.option("--flash-timing", "WORD",
                   "off|usual: whether flash takes the time that chips take; otherwise it does "
                   "where the time is real",
                   oneOf(arguments->flashTiming, {"off", "usual"}));
    command.example("vboard create --model 0x0709 board")
        .example("vboard create --model 0x0109 --time virtual --serial SN42 board")
        .example("vboard create --model 0x0709 --mtd 12:page=4096,spare=128 board")
        .example("vboard create --from unit.json --time virtual twin");
    command.does([arguments] { create(*arguments); });
}

void createTwin(const CreateArguments &arguments) {
    const std::string gaps = textOf([&](char **text, VBoardError *error) {
        return vboardCreateFrom(arguments.folder.c_str(), arguments.from.c_str(),
                                arguments.time.c_str(), text, error);
    });
    if (!arguments.flashTiming.empty()) {
        const VBoardChange timing = {"flash.timing", arguments.flashTiming.c_str()};
        const Board board(arguments.folder);
        call([&](VBoardError *error) { return vboardSet(board, &timing, 1, error); });
    }
    std::istringstream lines(gaps);
    for (std::string line; std::getline(lines, line);)
        std::fprintf(stderr, "vboard: %s\n", line.c_str());
}

} // namespace

void addCreate(Command &root) {
    root.command("create", "Make a new board in a folder that is not there yet, or is empty",
                 defineCreate);
}

void create(const CreateArguments &arguments) {
    const bool hasOwnLine = arguments.commandLine != vboardUsualOptions()->commandLine;
    if (!arguments.from.empty() && hasOwnLine) // whose usual one leaves help no room to say so
        throw WrongUsage("--from excludes --cmdline");
    std::optional<command_line::BlockedSignals> whole;
    if (arguments.from.empty() || std::filesystem::is_regular_file(arguments.from))
        whole.emplace(command_line::kEndingSignals); // else of a pipe, which may never end
    if (!arguments.from.empty())
        return createTwin(arguments);
    if (arguments.model.empty())
        throw WrongUsage("--model is required, or --from; see 'vboard create --help'");
    std::vector<const char *> mtd;
    mtd.reserve(arguments.flash.size());
    for (const std::string &geometry : arguments.flash)
        mtd.push_back(geometry.c_str());
    const std::string &flashTiming = arguments.flashTiming;
    const VBoardOptions options = {sizeof(VBoardOptions),
                                   static_cast<uint32_t>(mtd.size()),
                                   arguments.model.c_str(),
                                   arguments.time.c_str(),
                                   arguments.serial.c_str(),
                                   arguments.mac.c_str(),
                                   arguments.commandLine.c_str(),
                                   mtd.data(),
                                   flashTiming.empty() ? nullptr : flashTiming.c_str()};
    call([&](VBoardError *error) {
        return vboardCreate(arguments.folder.c_str(), &options, error);
    });
}

} // namespace vboard
