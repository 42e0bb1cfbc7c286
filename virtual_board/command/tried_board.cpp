#include "virtual_board/command/tried_board.h"

#include "language/refused.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <unistd.h>

namespace vboard {

TemporaryFolder::TemporaryFolder() {
    const char *parent = std::getenv("TMPDIR");
    path_ = std::string(parent != nullptr && *parent != '\0' ? parent : "/tmp") +
            "/vboard-check-XXXXXX";
    if (mkdtemp(path_.data()) == nullptr)
        throw language::Refused("cannot make a folder for a copy of the board, " + path_ + ": " +
                                std::strerror(errno));
}

TemporaryFolder::~TemporaryFolder() {
    rmdir(path_.c_str());
}

TriedBoard::TriedBoard(const std::string &folder) : copy_(place_.path() + "/board") {
    call([&](VBoardError *error) { return vboardCopy(folder.c_str(), copy_.c_str(), error); });
    board_ = std::make_unique<Board>(copy_);
}

TriedBoard::~TriedBoard() {
    board_.reset();
    vboardDelete(copy_.c_str(), nullptr);
}

std::string findInPath(const std::string &name) {
    const char *path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "/bin:/usr/bin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (access(folder.append("/").append(name).c_str(), X_OK) == 0)
            return folder;
    }
    return {};
}

} // namespace vboard
