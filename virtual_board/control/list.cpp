// Boards below a folder.

#include "virtual_board/control/answer.h"
#include "virtual_board/control/board_files.h"
#include "virtual_board/control/given.h"
#include "virtual_board/control/handle.h"
#include "virtual_board/control/users.h"
#include "virtual_board/words/world.h"

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

namespace vboard {

namespace {

/** The folders of boards, in the order of their names. What cannot be looked into has none. */
std::vector<std::string> foldersBelow(const char *path) {
    std::error_code failure;
    const fs::path top = fs::canonical(path, failure);
    if (failure || !fs::is_directory(top, failure))
        throw Failure(VBOARD_E_REFUSED,
                      std::string(path) + " is not a folder; give one with boards below it",
                      failure.value());
    std::vector<std::string> folders;
    if (isBoard(top))
        folders.push_back(top);
    if (!folders.empty())
        return folders;
    auto entry = fs::recursive_directory_iterator(
        top, fs::directory_options::skip_permission_denied, failure);
    for (; !failure && entry != fs::end(entry); entry.increment(failure)) {
        if (!fs::is_directory(entry->symlink_status(failure)) || !isBoard(entry->path()))
            continue;
        folders.push_back(entry->path());
        entry.disable_recursion_pending();
    }
    std::sort(folders.begin(), folders.end());
    return folders;
}

struct Listed {
    std::string folder, model, time, users, problem;
    int32_t status = VBOARD_OK;
};

std::string usersText(const std::string &folder) {
    std::string text;
    for (const User &user : usersOf(folder))
        text += (text.empty() ? "" : ", ") + user.program + " " + std::to_string(user.pid);
    return text;
}

Listed look(const std::string &folder) {
    Listed listed;
    listed.folder = folder;
    VBoardError error = {};
    listed.status = answer(&error, [&] {
        vb::BoardFolder board;
        openFolder(board, folder.c_str());
        const LockedBoard locked(board);
        listed.model = vb::property(board, "model");
        listed.time = vb::property(board, "time");
    });
    if (listed.status != VBOARD_OK)
        listed.problem = error.text;
    listed.users = usersText(folder);
    return listed;
}

} // namespace

} // namespace vboard

int32_t vboardList(const char *below, VBoardListed **boards, uint32_t *count, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(below, "below");
        vboard::require(boards, "boards");
        vboard::require(count, "count");
        std::vector<vboard::Listed> found;
        for (const std::string &folder : vboard::foldersBelow(below))
            found.push_back(vboard::look(folder));
        std::vector<VBoardListed> rows;
        rows.reserve(found.size());
        for (const vboard::Listed &listed : found)
            rows.push_back({listed.folder.c_str(), listed.model.c_str(), listed.time.c_str(),
                            listed.users.c_str(), listed.problem.c_str(), listed.status});
        *boards = vboard::giveList(rows, {&VBoardListed::folder, &VBoardListed::model,
                                          &VBoardListed::time, &VBoardListed::users,
                                          &VBoardListed::problem});
        *count = static_cast<uint32_t>(rows.size());
    });
}
