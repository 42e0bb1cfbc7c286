#include "iodbg/core/temporary_file.h"

#include "iodbg/core/failure.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>

namespace iodbg {

namespace {

constexpr int kTries = 100; // files that killed processes of the same number left behind
constexpr mode_t kOwnersAlone = 0600;

/** Renames; another file of the new name is an error, also one that has just appeared. */
bool renameToNew(const std::string &from, const std::string &to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    struct stat info = {};
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    // Some file systems cannot tell.
    if (lstat(to.c_str(), &info) == 0) {
        errno = EEXIST;
        return false;
    }
    return std::rename(from.c_str(), to.c_str()) == 0;
}

/** Has the folder keep the new name over a power cut; file systems that cannot do not matter. */
void storeNames(const std::string &folder) {
    const bsp::Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen())
        fsync(opened.get());
}

std::string folderHolding(const std::string &path) {
    return path.substr(0, path.rfind('/'));
}

} // namespace

TemporaryFile::TemporaryFile(const std::string &folder, const std::string &what) {
    const std::string start = folder + "/.iodbg-" + std::to_string(getpid()) + "-";
    const Uninterrupted whole;
    for (int number = 0; number < kTries && !isMade_; ++number) {
        path_ = start + std::to_string(number);
        file_.emplace(open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kOwnersAlone));
        isMade_ = file_->isOpen();
        if (!isMade_ && errno != EEXIST)
            break;
    }
    if (!isMade_)
        throw Failure::file("write " + what, "choose a folder that can be written and has space");
}

TemporaryFile::~TemporaryFile() {
    remove(this);
}

bool TemporaryFile::takePlace(const std::string &finalPath, mode_t mode, bool mayReplace) {
    fchmod(descriptor(), mode); // where modes cannot be had, it stays the owner's alone
    if (fsync(descriptor()) != 0)
        return false;
    const Uninterrupted whole;
    if (mayReplace ? std::rename(path_.c_str(), finalPath.c_str()) != 0
                   : !renameToNew(path_, finalPath))
        return false;
    isMade_ = false;
    storeNames(folderHolding(path_));
    return true;
}

/** Also called in the middle of anything else, by a signal. */
void TemporaryFile::remove(const void *temporaryFile) {
    const auto *file = static_cast<const TemporaryFile *>(temporaryFile);
    if (file->isMade_)
        unlink(file->path_.c_str());
}

std::string folderForTemporaryFiles() {
    const char *folder = std::getenv("TMPDIR");
    return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

} // namespace iodbg
