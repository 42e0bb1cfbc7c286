#include "virtual_board/board/new_folder.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace fs = std::filesystem;

namespace vb {

bool refuseFolder(FolderError &error, FolderProblem problem, const std::string &reason,
                  int osError) {
    error.problem = problem;
    error.osError = osError;
    const size_t length = std::min(reason.size(), sizeof(error.text) - 1);
    std::memcpy(error.text, reason.data(), length);
    error.text[length] = '\0';
    return false;
}

bool failToWrite(FolderError &error, const std::string &what, int osError) {
    const bool isForbidden = osError == EACCES || osError == EPERM || osError == EROFS;
    return refuseFolder(error, isForbidden ? FolderProblem::Permission : FolderProblem::System,
                        what + ": " + std::strerror(osError), osError);
}

NewFolder::~NewFolder() {
    while (!made_.empty()) {
        std::remove(made_.back().c_str());
        made_.pop_back();
    }
}

bool NewFolder::begin(const std::string &place, FolderError &error) {
    std::error_code failure;
    const fs::path absolute = fs::absolute(place, failure).lexically_normal();
    final_ = absolute.has_filename() ? absolute : absolute.parent_path();
    const fs::path around = final_.parent_path();
    if (fs::exists(final_, failure) &&
        (!fs::is_directory(final_, failure) || !fs::is_empty(final_, failure)))
        return refuseFolder(error, FolderProblem::Occupied,
                            place + " exists already; choose another name or remove it first");
    if (!fs::is_directory(around, failure))
        return refuseFolder(error, FolderProblem::Refused,
                            around.string() + " is not a folder; create it first");
    path_ = final_.string() + ".new-XXXXXX";
    if (mkdtemp(path_.data()) == nullptr)
        return failToWrite(error, "cannot write to " + around.string(), errno);
    made_.push_back(path_);
    return true;
}

std::string NewFolder::add(const std::string &name) {
    made_.push_back(path_ + "/" + name);
    return made_.back();
}

bool NewFolder::makeFolder(const std::string &name) {
    const std::string folder = add(name);
    std::error_code failure;
    // As the board's start scripts make them, whatever the user's umask is.
    fs::create_directory(folder, failure);
    if (!failure)
        fs::permissions(folder, fs::perms(0755), failure);
    errno = failure.value();
    return !failure;
}

bool NewFolder::writeFile(const std::string &name, const void *data, size_t size) {
    std::ofstream file(add(name), std::ios::binary);
    file.write(static_cast<const char *>(data), static_cast<std::streamsize>(size));
    file.close();
    return !file.fail();
}

bool NewFolder::makeHole(const std::string &name, uint32_t size) {
    if (!writeFile(name, "", 0))
        return false;
    std::error_code failure;
    fs::resize_file(made_.back(), size, failure);
    errno = failure.value();
    return !failure;
}

bool NewFolder::makePipe(const std::string &name) {
    return mkfifo(add(name).c_str(), 0666) == 0;
}

bool NewFolder::finish(FolderError &error) {
    std::error_code failure;
    fs::permissions(path_, fs::perms(0755), failure);
    fs::rename(path_, final_, failure);
    if (failure == std::errc::directory_not_empty || failure == std::errc::file_exists)
        return refuseFolder(error, FolderProblem::Occupied,
                            final_.string() + " exists already; somebody has just made it",
                            failure.value());
    if (failure)
        return failToWrite(error, "cannot create " + final_.string(), failure.value());
    made_.clear();
    return true;
}

} // namespace vb
