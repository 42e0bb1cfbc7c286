// Boards of captured units.

#include "virtual_board/twin/twin.h"
#include "language/captured_unit.h"
#include "language/refused.h"
#include "virtual_board/control/answer.h"
#include "virtual_board/control/given.h"
#include "virtual_board/control/handle.h"
#include "virtual_board/words/pace_text.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace vboard {

namespace {

std::string contentOf(const std::string &file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream.is_open()) {
        const int reason = errno;
        throw Failure(reason == EACCES || reason == EPERM ? VBOARD_E_PERMISSION : VBOARD_E_SYSTEM,
                      "cannot read " + file + ": " + std::strerror(reason), reason);
    }
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

std::string textOf(const std::vector<vb::TwinGap> &gaps) {
    std::string text;
    for (const vb::TwinGap &gap : gaps)
        text += gap.name + ": " + gap.reason + "\n";
    return text;
}

std::vector<vb::TwinGap> createTwin(const char *folder, const std::string &file,
                                    const std::string &time) {
    const std::string document = contentOf(file);
    return language::about(file, [&] {
        const language::CapturedUnit unit = language::readCapture(document);
        vb::BoardOptions options = vb::twinOptions(unit);
        options.pace = language::about("time", [&] { return vb::parsePace(time); });
        options.flashTiming = vb::usualFlashTiming(options.pace.mode);
        std::vector<vb::TwinGap> gaps;
        const auto furnish = [&](const vb::BoardFolder &board) {
            gaps = vb::furnishTwin(board, unit);
        };
        vb::FolderError problem = {};
        if (!vb::createBoard(folder, options, furnish, problem))
            fail(problem);
        return gaps;
    });
}

} // namespace

} // namespace vboard

int32_t vboardCreateFrom(const char *folder, const char *file, const char *time, char **gaps,
                         VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(folder, "folder");
        vboard::require(file, "file");
        const std::string text =
            vboard::textOf(vboard::createTwin(folder, file, time != nullptr ? time : "real"));
        if (gaps != nullptr)
            *gaps = vboard::giveText(text);
    });
}
