// Making and opening boards.

#include "language/bytes.h"
#include "language/property_table.h"
#include "language/property_values.h"
#include "virtual_board/board/create.h"
#include "virtual_board/control/answer.h"
#include "virtual_board/control/handle.h"
#include "virtual_board/words/flash_text.h"
#include "virtual_board/words/pace_text.h"
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

vb::Pace parseTime(const std::string &text) {
    return language::about("time", [&] { return vb::parsePace(text); });
}

vb::FlashTiming parseFlashTiming(const char *text, vb::TimeMode time) {
    if (text != nullptr)
        return language::about("flash.timing", [&] {
            return parseValue(language::propertyOf("flash.timing"), text).as<vb::FlashTiming>();
        });
    return vb::usualFlashTiming(time);
}

constexpr VBoardOptions kUsual = {sizeof(VBoardOptions),
                                  0,
                                  nullptr,
                                  "real",
                                  "VB00000001",
                                  "02:00:5e:10:00:00",
                                  "console=ttyS0,115200 bootver=1.2.3 root=/dev/mtdblock12",
                                  nullptr,
                                  nullptr};

vb::BoardOptions optionsOf(const VBoardOptions &options) {
    const auto textOr = [](const char *text, const char *usual) {
        return std::string(text != nullptr ? text : usual);
    };
    vb::BoardOptions made;
    made.devId = parseModel(options.model);
    made.pace = parseTime(textOr(options.time, kUsual.time));
    made.flashTiming = parseFlashTiming(options.flashTiming, made.pace.mode);
    made.serial = textOr(options.serial, kUsual.serial);
    made.mac = language::parseMac(textOr(options.mac, kUsual.mac));
    made.commandLine = textOr(options.commandLine, kUsual.commandLine);
    for (uint32_t i = 0; i < options.mtdCount; ++i) {
        require(options.mtd, "mtd");
        require(options.mtd[i], "a geometry");
        vb::changeGeometry(made.flash, options.mtd[i]);
    }
    return made;
}

} // namespace

} // namespace vboard

const VBoardOptions *vboardUsualOptions(void) {
    return &vboard::kUsual;
}

int32_t vboardCreate(const char *folder, const VBoardOptions *options, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(folder, "folder");
        vboard::require(options, "options");
        vboard::requireSize(options->size, sizeof(VBoardOptions), "options");
        vboard::require(options->model, "model");
        vb::FolderError problem = {};
        if (!vb::createBoard(folder, vboard::optionsOf(*options), problem))
            vboard::fail(problem);
    });
}

int32_t vboardOpen(const char *folder, VBoard **board, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(folder, "folder");
        vboard::require(board, "board");
        auto handle = std::make_unique<VBoard>();
        vboard::openFolder(handle->folder, folder);
        *board = handle.release();
    });
}

void vboardClose(VBoard *board) {
    delete board;
}

const char *vboardFolder(const VBoard *board) {
    return board->folder.path();
}
