#include "virtual_board/server/site.h"

#include "language/texts.h"
#include "virtual_board/server/refusal.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace vboard::server {

namespace {

/** Whether a name is a plain way down: no part of it leads upwards, or nowhere. */
bool leadsDown(const std::string &name) {
    size_t at = 0;
    for (;;) {
        const size_t end = std::min(name.find('/', at), name.size());
        const std::string part = name.substr(at, end - at);
        if (part.empty() || part == "." || part == ".." || part.find('\0') != std::string::npos)
            return false;
        if (end == name.size())
            return true;
        at = end + 1;
    }
}

/** Whether a folder is a board, also one that cannot be opened. */
bool isBoardFolder(const std::string &folder) {
    VBoard *board = nullptr;
    const int32_t status = vboardOpen(folder.c_str(), &board, nullptr);
    vboardClose(board);
    return status != VBOARD_E_NO_BOARD;
}

} // namespace

Site::Site(const std::string &folder) {
    std::error_code failure;
    folder_ = fs::canonical(folder, failure);
    if (failure || !fs::is_directory(folder_, failure))
        throw language::Refused(folder + " is not a folder; give a board, or a folder with boards");
    isSingle_ = isBoardFolder(folder_);
    if (isSingle_)
        const Board usable(folder_);
}

std::string Site::nameOf(const std::string &boardFolder) const {
    return isSingle_ ? fs::path(folder_).filename().string()
                     : fs::path(boardFolder).lexically_relative(folder_).string();
}

std::string Site::folderOf(const std::string &name) const {
    if (isSingle_ && (name.empty() || name == nameOf(folder_)))
        return folder_;
    if (name.empty())
        throw Refusal(kBadRequest, VBOARD_E_REFUSED,
                      "several boards are served; name one with board=NAME, see api/boards");
    std::error_code failure;
    const fs::path folder = fs::path(folder_) / name;
    // A link could lead anywhere.
    if (isSingle_ || !leadsDown(name) || fs::canonical(folder, failure) != folder)
        throw Refusal(kNotFound, VBOARD_E_NO_BOARD,
                      "no board is called " + language::quoted(name) + " here; see api/boards");
    return folder;
}

Site::Place::Place(Site &site, uint32_t most) : site_(site) {
    if (site_.boardsMade_.fetch_add(1) < most)
        return;
    --site_.boardsMade_;
    throw Refusal(kTooMany, VBOARD_E_FULL,
                  "this server has made " + std::to_string(most) +
                      " boards, and makes no more; start it anew");
}

Site::Place::~Place() {
    if (!isTaken_)
        --site_.boardsMade_;
}

} // namespace vboard::server
