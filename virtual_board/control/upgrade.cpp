// Boards of earlier versions. Whatever keeps one from being taken along leaves it as it was.

#include "virtual_board/board/consistency.h"
#include "virtual_board/board/create.h"
#include "virtual_board/board/layouts.h"
#include "virtual_board/control/answer.h"
#include "virtual_board/control/board_files.h"
#include "virtual_board/control/descriptor.h"
#include "virtual_board/control/handle.h"
#include "virtual_board/control/users.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace vboard {

namespace {

using State = std::vector<uint8_t>;

[[noreturn]] void failWith(const std::string &what) {
    const int reason = errno;
    const bool isForbidden = reason == EACCES || reason == EPERM || reason == EROFS;
    throw Failure(isForbidden ? VBOARD_E_PERMISSION : VBOARD_E_SYSTEM,
                  what + ": " + std::strerror(reason), reason);
}

/** Writes a file as another one is: whose it is, and who may use it. False with errno. */
bool writeFile(const fs::path &path, const void *data, size_t size, const fs::path &model) {
    struct stat info = {};
    const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    return file.isOpen() && stat(model.c_str(), &info) == 0 &&
           write(file.get(), data, size) == static_cast<ssize_t>(size) &&
           fchmod(file.get(), info.st_mode & ACCESSPERMS) == 0 &&
           (geteuid() != 0 || fchown(file.get(), info.st_uid, info.st_gid) == 0) &&
           fsync(file.get()) == 0;
}

/** A file that goes again unless it is kept. */
class NewFile {
  public:
    NewFile(fs::path path, const void *data, size_t size, const fs::path &model)
        : path_(std::move(path)) {
        std::remove(path_.c_str()); // somebody was killed at this
        errno = ENOSPC;             // of a part that could be written
        if (writeFile(path_, data, size, model))
            return;
        const int reason = errno;
        std::remove(path_.c_str());
        errno = reason;
        failWith("cannot write " + path_.string());
    }
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;
    ~NewFile() {
        if (!isKept_)
            std::remove(path_.c_str());
    }

    const fs::path &path() const { return path_; }
    void keep() { isKept_ = true; }

  private:
    fs::path path_;
    bool isKept_ = false;
};

/** Keeps the programs of a board's own version away from it. */
class OldLock {
  public:
    explicit OldLock(const fs::path &folder)
        : file_(open((folder / vb::kLockFile).c_str(), O_RDWR | O_CLOEXEC)) {
        if (!file_.isOpen() || flock(file_.get(), LOCK_EX) != 0)
            failWith("cannot lock " + folder.string());
    }

  private:
    Descriptor file_;
};

[[noreturn]] void failDamaged(const fs::path &folder, const std::string &how) {
    throw Failure(VBOARD_E_DAMAGED, folder.string() + " is damaged: " + vb::kStateFile + " " + how +
                                        "; create the board again");
}

/** The state of an earlier version; nothing where it is none. */
State readState(const fs::path &folder) {
    const Descriptor file(open((folder / vb::kStateFile).c_str(), O_RDONLY | O_CLOEXEC));
    vb::BoardHeader header = {};
    if (!file.isOpen() || pread(file.get(), &header, sizeof(header), 0) != sizeof(header))
        failWith("cannot read " + folder.string());
    if (vb::layoutStepFrom(header.version, header.size) == nullptr)
        return {};
    State state(header.size);
    struct stat info = {};
    if (fstat(file.get(), &info) != 0)
        failWith("cannot read " + folder.string());
    if (info.st_size != static_cast<off_t>(header.size))
        failDamaged(folder, "has " + std::to_string(info.st_size) + " of " +
                                std::to_string(header.size) + " bytes");
    if (read(file.get(), state.data(), state.size()) != static_cast<ssize_t>(state.size()))
        failWith("cannot read " + folder.string());
    return state;
}

/** The same in the layout of today. */
std::unique_ptr<vb::Board> stateOfToday(State state, const fs::path &folder) {
    vb::BoardHeader header = {};
    std::memcpy(&header, state.data(), sizeof(header));
    for (const vb::LayoutStep &step : vb::layoutSteps()) {
        if (step.from < header.version)
            continue;
        State next(step.sizeAfter());
        vb::takeLayoutStep(step, state.data(), next.data());
        state = std::move(next);
    }
    auto board = std::make_unique<vb::Board>();
    std::memcpy(board.get(), state.data(), sizeof(vb::Board));
    board->header.version = vb::kBoardVersion;
    board->header.size = sizeof(vb::Board);
    board->header.check = vb::headerCheck(board->header);
    if (const char *part = vb::damagedPart(*board, vb::hostNow()); part != nullptr)
        failDamaged(folder, "holds impossible values (" + std::string(part) + ")");
    return board;
}

/** What the kernel lists in /proc/mtd, which boards have had since they list partitions. */
std::unique_ptr<NewFile> listPartitions(const fs::path &folder, const vb::Board &board) {
    const fs::path place = folder / (vb::kRootFolder + std::string(vb::kPartitionListPath));
    if (fs::exists(place))
        return nullptr;
    std::array<vb::FlashGeometry, vb::kFlashPartitions> geometries;
    for (uint32_t index = 0; index < vb::kFlashPartitions; ++index)
        geometries[index] = board.devices.flash[index].geometry;
    const std::string list = vb::partitionList(geometries);
    return std::make_unique<NewFile>(place, list.data(), list.size(), folder / vb::kStateFile);
}

/** The files of an upgrade: the old state is kept until the new one has been judged. */
class Upgrade {
  public:
    explicit Upgrade(const fs::path &folder)
        : folder_(folder), place_(folder / vb::kStateFile), old_(folder / kOldState) {}

    /** Puts the new state in the place of the old one; false when it is none of a version before.
     */
    bool carryOut() {
        const OldLock lock(folder_);
        const State state = readState(folder_);
        if (state.empty())
            return false;
        requireNoUsers(folder_);
        const std::unique_ptr<vb::Board> board = stateOfToday(state, folder_);
        list_ = listPartitions(folder_, *board);
        NewFile made(folder_ / kNewState, board.get(), sizeof(vb::Board), place_);
        std::remove(old_.c_str());
        if (link(place_.c_str(), old_.c_str()) != 0 ||
            rename(made.path().c_str(), place_.c_str()) != 0)
            failWith("cannot write " + place_.string());
        made.keep();
        return true;
    }

    /** Keeps it if it makes a board with all that is beside it, else brings the old one back. */
    void judge() {
        vb::BoardFolder board;
        vb::FolderError error = {};
        const bool isWhole = board.open(folder_.c_str(), error);
        if ((isWhole ? std::remove(old_.c_str()) : rename(old_.c_str(), place_.c_str())) != 0)
            failWith("cannot write " + place_.string());
        if (!isWhole)
            fail(error);
        makePipe(board);
        if (list_ != nullptr)
            list_->keep();
    }

  private:
    /** That at which programs wait for the clock, since there are paces. */
    static void makePipe(const vb::BoardFolder &board) {
        const std::string pipe = board.ownFile(vb::kWakeFile).text;
        if (mkfifo(pipe.c_str(), 0666) != 0 && errno != EEXIST)
            failWith("cannot make " + pipe);
        board.giveToOwner(pipe.c_str());
    }

    const fs::path folder_, place_, old_;
    std::unique_ptr<NewFile> list_;
};

} // namespace

} // namespace vboard

int32_t vboardUpgrade(const char *folder, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(folder, "folder");
        vb::BoardFolder board;
        vb::FolderError problem = {};
        if (board.open(folder, problem))
            return; // it is of this version
        if (problem.problem != vb::FolderProblem::OtherVersion)
            vboard::fail(problem);
        vboard::Upgrade upgrade(fs::canonical(folder));
        if (!upgrade.carryOut())
            vboard::fail(problem);
        upgrade.judge();
    });
}
