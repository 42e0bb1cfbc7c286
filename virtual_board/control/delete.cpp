// The end of boards.

#include "virtual_board/board/flash_content.h"
#include "virtual_board/board/folder.h"
#include "virtual_board/control/answer.h"
#include "virtual_board/control/board_files.h"
#include "virtual_board/control/users.h"

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

namespace vboard {

namespace {

// What is a board's own in its folder. Programs see that their board is going by its lock, which
// goes first; the state, by which the folder is known as a board's, goes last.
constexpr const char *kOwn[] = {
    vb::kLockFile, vb::kRootFolder, vb::kFlashFolder, "cmdline.new", vb::kRegisterPageFile,
    vb::kWakeFile, kNewState,       kOldState,        vb::kStateFile};

/** Throws where something is in the folder that is not the board's. */
void requireNothingElse(const fs::path &folder) {
    for (const fs::directory_entry &entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (std::find(std::begin(kOwn), std::end(kOwn), name) == std::end(kOwn))
            throw Failure(VBOARD_E_REFUSED, folder.string() + " holds " + name +
                                                ", which is not of the board; move it away first");
    }
}

void remove(const fs::path &folder) {
    for (const char *name : kOwn)
        fs::remove_all(folder / name);
    fs::remove(folder);
}

} // namespace

} // namespace vboard

int32_t vboardDelete(const char *folder, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(folder, "folder");
        std::error_code failure;
        const fs::path path = fs::canonical(folder, failure);
        if (failure)
            throw vboard::Failure(VBOARD_E_NO_BOARD, std::string(folder) + ": " + failure.message(),
                                  failure.value());
        if (!vboard::isBoard(path))
            throw vboard::Failure(VBOARD_E_NO_BOARD,
                                  std::string(folder) + " is not a board; nothing was removed");
        vboard::requireNothingElse(path);
        vboard::requireNoUsers(path);
        vboard::remove(path);
    });
}
