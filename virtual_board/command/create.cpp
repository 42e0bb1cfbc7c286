#include "virtual_board/board/create.h"

#include "virtual_board/command/commands.h"
#include "virtual_board/words/flash_text.h"
#include "virtual_board/words/values.h"

namespace vboard {

namespace {

uint32_t parseModel(const std::string &text) {
    const auto devId = vb::parseNumber(text, 0xFFFF);
    if (!devId.has_value() || vb::findModel(*devId) == nullptr)
        throw vb::Refused("there is no model '" + text + "'; 'vboard list-models' lists them");
    return *devId;
}

} // namespace

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
