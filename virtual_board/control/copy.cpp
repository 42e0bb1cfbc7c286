// Copies of boards.

#include "virtual_board/board/new_folder.h"
#include "virtual_board/control/answer.h"
#include "virtual_board/control/descriptor.h"
#include "virtual_board/control/handle.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace vboard {

namespace {

constexpr mode_t kPermissions = 07777;

[[noreturn]] void failToCopy(const std::string &name) {
    const int reason = errno;
    throw Failure(reason == EACCES || reason == EPERM ? VBOARD_E_PERMISSION : VBOARD_E_SYSTEM,
                  "cannot copy " + name + ": " + std::strerror(reason), reason);
}

bool copyBytes(int from, int to, off_t offset, off_t end) {
    std::vector<char> buffer(1 << 16);
    while (offset < end) {
        const auto wanted = static_cast<size_t>(std::min<off_t>(end - offset, 1 << 16));
        const ssize_t count = pread(from, buffer.data(), wanted, offset);
        if (count <= 0 || pwrite(to, buffer.data(), static_cast<size_t>(count), offset) != count)
            return count == 0; // the file has become shorter
        offset += count;
    }
    return true;
}

/** Copies a file with its holes, of which flash is made; false with errno. */
bool copyFile(const std::string &from, const std::string &to) {
    const Descriptor source(open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    struct stat info = {};
    if (!source.isOpen() || fstat(source.get(), &info) != 0)
        return false;
    const Descriptor target(open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!target.isOpen() || ftruncate(target.get(), info.st_size) != 0)
        return false;
    for (off_t end = 0;;) {
        const off_t data = lseek(source.get(), end, SEEK_DATA);
        if (data < 0)
            break; // only a hole is left
        end = lseek(source.get(), data, SEEK_HOLE);
        if (end < 0 || !copyBytes(source.get(), target.get(), data, end))
            return false;
    }
    return errno == ENXIO && fchmod(target.get(), info.st_mode & kPermissions) == 0;
}

/** What is in a board's folder, but for its lock and its state. */
void copyFiles(const fs::path &from, vb::NewFolder &to) {
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(from)) {
        const std::string name = entry.path().lexically_relative(from).string();
        if (name == vb::kLockFile || name == vb::kStateFile)
            continue;
        const fs::file_status status = entry.symlink_status();
        std::error_code failure;
        bool isCopied = true;
        if (fs::is_directory(status)) {
            isCopied = to.makeFolder(name);
            fs::permissions(to.path() + "/" + name, status.permissions(), failure);
        } else if (fs::is_symlink(status)) {
            fs::copy_symlink(entry.path(), to.add(name), failure);
        } else if (fs::is_regular_file(status)) {
            isCopied = copyFile(entry.path(), to.add(name));
        } else if (fs::is_fifo(status)) {
            isCopied = to.makePipe(name);
        } // a socket without the program that listens is nothing
        if (failure)
            errno = failure.value();
        if (!isCopied || failure)
            failToCopy(entry.path().string());
    }
}

/** Fills a folder with a board as it is now. The lock comes first and the state last, as of new
 * ones. */
void copyBoard(const vb::BoardFolder &from, vb::NewFolder &to) {
    const LockedBoard board(from);
    if (!to.writeFile(vb::kLockFile, "", 0))
        failToCopy(vb::kLockFile);
    copyFiles(from.path(), to);
    const auto state = std::make_unique<vb::Board>(*board);
    state->waiters = {}; // they are not on the copy
    if (!to.writeFile(vb::kStateFile, state.get(), sizeof(vb::Board)))
        failToCopy(vb::kStateFile);
}

} // namespace

} // namespace vboard

int32_t vboardCopy(const char *folder, const char *copy, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(folder, "folder");
        vboard::require(copy, "copy");
        vb::BoardFolder board;
        vboard::openFolder(board, folder);
        vb::FolderError problem = {};
        vb::NewFolder made;
        if (!made.begin(copy, problem))
            vboard::fail(problem);
        vboard::copyBoard(board, made);
        vb::BoardFolder judged;
        vboard::openFolder(judged, made.path().c_str());
        if (!made.finish(problem))
            vboard::fail(problem);
    });
}
