#include "virtual_board/control/users.h"

#include "language/numbers.h"
#include "virtual_board/control/answer.h"
#include "virtual_board/control/given.h"
#include "virtual_board/control/handle.h"
#include "virtual_board/control/threads.h"

#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace fs = std::filesystem;

namespace vboard {

namespace {

/** Whether a process has mapped a file. Of processes of others it may not be told. */
bool hasMapped(const fs::path &process, const std::string &file) {
    std::ifstream maps(process / "maps");
    for (std::string line; std::getline(maps, line);) {
        const size_t path = line.find('/');
        if (path != std::string::npos && line.substr(path) == file)
            return true;
    }
    return false;
}

} // namespace

std::vector<User> usersOf(const std::string &folder) {
    std::error_code failure;
    const std::string state = (fs::canonical(folder, failure) / vb::kStateFile).string();
    std::vector<User> users;
    for (const fs::directory_entry &process : fs::directory_iterator("/proc", failure)) {
        const auto pid =
            language::readNumber<int32_t>(process.path().filename().string(), 1, INT32_MAX);
        if (pid.has_value() && *pid != getpid() && hasMapped(process.path(), state))
            users.push_back({*pid, programOf(*pid)});
    }
    return users;
}

void requireNoUsers(const std::string &folder) {
    const std::vector<User> users = usersOf(folder);
    if (!users.empty())
        throw Failure(VBOARD_E_IN_USE, folder + " is in use by " + users[0].program + " (process " +
                                           std::to_string(users[0].pid) + "); end it first");
}

} // namespace vboard

int32_t vboardUsers(VBoard *board, VBoardUser **users, uint32_t *count, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        vboard::require(users, "users");
        vboard::require(count, "count");
        const std::vector<vboard::User> found = vboard::usersOf(board->folder.path());
        std::vector<VBoardUser> rows;
        rows.reserve(found.size());
        for (const auto &[pid, program] : found)
            rows.push_back({program.c_str(), pid});
        *users = vboard::giveList(rows, {&VBoardUser::program});
        *count = static_cast<uint32_t>(rows.size());
    });
}
