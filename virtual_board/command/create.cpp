// `vboard create`.

#include "virtual_board/board/create.h"

#include "virtual_board/board/models.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/words.h"
#include "virtual_board/words/flash_text.h"
#include "virtual_board/words/values.h"

#include <memory>

namespace vboard {

namespace {

uint32_t parseModel(const std::string &text) {
    const auto devId = vb::parseNumber(text, 0xFFFF);
    if (!devId.has_value() || vb::findModel(*devId) == nullptr)
        throw vb::Refused("there is no model '" + text + "'; 'vboard list-models' lists them");
    return *devId;
}

/** The models, as completion offers them. */
Offers models() {
    Offers offers;
    for (const vb::Model &model : vb::kModels)
        offers.words.push_back(vb::hex16Text(model.devId));
    return offers;
}

void defineCreate(Command &command) {
    const vb::BoardOptions usual;
    const auto arguments = std::make_shared<CreateArguments>();
    arguments->time = "real";
    arguments->serial = usual.serial;
    arguments->mac = language::macText(usual.mac);
    arguments->commandLine = usual.commandLine;

    addFolder(command, arguments->folder);
    command.requiredOption("--model", "ID", "Device id; 'vboard list-models' lists them",
                           {text(arguments->model), models()});
    command
        .option("--time", "WORD",
                "real|virtual: virtually, sleeps advance the board's clock and return at once",
                oneOf(arguments->time, {"real", "virtual"}))
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
    command.example("vboard create --model 0x0709 board")
        .example("vboard create --model 0x0109 --time virtual --serial SN42 board")
        .example("vboard create --model 0x0709 --mtd 12:page=4096,spare=128 board");
    command.does([arguments] { create(*arguments); });
}

} // namespace

void addCreate(Command &root) {
    root.command("create", "Make a new board in a folder that is not there yet, or is empty",
                 defineCreate);
}

void create(const CreateArguments &arguments) {
    vb::BoardOptions options;
    options.devId = parseModel(arguments.model);
    options.time = arguments.time == "virtual" ? vb::TimeMode::Virtual : vb::TimeMode::Real;
    options.serial = arguments.serial;
    options.commandLine = arguments.commandLine;
    options.mac = language::parseMac(arguments.mac);
    for (const std::string &geometry : arguments.flash)
        vb::changeGeometry(options.flash, geometry);
    vb::FolderError error = {};
    if (!vb::createBoard(arguments.folder, options, error))
        throw vb::Refused(error.text);
}

} // namespace vboard
