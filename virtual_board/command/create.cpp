#include "virtual_board/board/create.h"

#include "virtual_board/command/commands.h"
#include "virtual_board/words/flash_text.h"
#include "virtual_board/words/values.h"

#include <algorithm>

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
    const auto mac = vb::parseMac(arguments.mac);
    if (!mac.has_value())
        throw vb::Refused("a MAC address looks like 02:00:5e:10:00:00, not '" + arguments.mac +
                          "'");
    std::copy(mac->begin(), mac->end(), options.mac.begin());
    for (const std::string &geometry : arguments.flash)
        vb::changeGeometry(options.flash, geometry);
    vb::FolderError error = {};
    if (!vb::createBoard(arguments.folder, options, error))
        throw vb::Refused(error.text);
}

} // namespace vboard
