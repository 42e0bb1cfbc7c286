#include "iodbg/core/shared_files.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>

namespace iodbg {

namespace {

constexpr const char *kLockFiles[] = {"/tmp/bspFlashLockFile", "/tmp/bspPoeLockFile"};
constexpr uid_t kRoot = 0;
constexpr mode_t kOthersMayWrite = S_IWGRP | S_IWOTH;

std::string modeText(mode_t mode) {
    char text[16];
    std::snprintf(text, sizeof(text), "%04o", static_cast<unsigned>(mode & 07777));
    return text;
}

/** What is wrong with who owns a file and who may change it; empty when nothing is. */
std::string ownerFlaw(const struct stat &info, uid_t user) {
    if (info.st_uid != kRoot && info.st_uid != user)
        return "belongs to user " + std::to_string(info.st_uid);
    if ((info.st_mode & kOthersMayWrite) != 0)
        return "can be changed by others, its mode is " + modeText(info.st_mode);
    return "";
}

std::string folderFlaw(const struct stat &info, uid_t user) {
    if (S_ISLNK(info.st_mode))
        return "is a symbolic link";
    return S_ISDIR(info.st_mode) ? ownerFlaw(info, user) : "is not a folder";
}

std::string lockFileFlaw(const struct stat &info, uid_t user) {
    if (S_ISLNK(info.st_mode))
        return "is a symbolic link";
    if (!S_ISREG(info.st_mode))
        return "is not a regular file";
    // With a second name somewhere it is another file of root's, which the locking would spoil.
    return info.st_nlink > 1 ? "has another name, as a hard link" : ownerFlaw(info, user);
}

std::string lookFailure() {
    return std::string("cannot be looked at: ") + std::strerror(errno);
}

/** The folder's flaw. What lies in a folder that others could change cannot be trusted either. */
SharedFileFlaw judgeFolder(uid_t user) {
    const std::string path = kSharedFolder;
    struct stat info = {};
    if (lstat(kSharedFolder, &info) == 0)
        return {path, folderFlaw(info, user),
                "make it anew as root while no upgrade is under way (what it notes of a failed PoE "
                "upgrade is lost with it): rm -rf " +
                    path + " && mkdir -m 0755 " + path};
    return {path, errno == ENOENT ? "is missing" : lookFailure(),
            "make it as root: mkdir -m 0755 " + path};
}

SharedFileFlaw judgeLockFile(const char *path, uid_t user) {
    struct stat info = {};
    std::string found;
    if (lstat(path, &info) == 0)
        found = lockFileFlaw(info, user);
    else if (errno != ENOENT)
        found = lookFailure();
    return {path, found,
            std::string("remove it as root while no upgrade is under way: rm -f ") + path};
}

} // namespace

std::vector<SharedFileFlaw> sharedFileFlaws(uid_t user) {
    std::vector<SharedFileFlaw> flaws;
    const auto note = [&flaws](const SharedFileFlaw &judged) {
        if (!judged.found.empty())
            flaws.push_back(judged);
    };
    note(judgeFolder(user));
    for (const char *path : kLockFiles)
        note(judgeLockFile(path, user));
    return flaws;
}

} // namespace iodbg
