#include "iodbg/core/host_file.h"

#include "iodbg/core/failure.h"
#include "support/owned.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace iodbg {

namespace {

constexpr char kWhereToWrite[] = "choose a folder that can be written and has space";
constexpr char kGiveAFile[] = "give a file that can be read";

/** The mode that a new file has, or the one that it takes the place of. */
mode_t modeFor(const Destination &destination, const struct stat *replaced) {
    if (destination.isSecret)
        return 0600;
    if (destination.isForAll)
        return 0644;
    if (replaced != nullptr)
        return replaced->st_mode & 0777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

std::string folderOf(const std::string &path) {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    return folder.empty() ? "." : folder.string();
}

/** Refuses what is there and is no file that may be replaced. */
void requireReplaceable(const Destination &destination, const struct stat &info) {
    const auto refuse = [&destination](const std::string &reason) {
        throw Failure(ExitCode::Host, destination.path + " " + reason);
    };
    if (S_ISLNK(info.st_mode))
        refuse("is a symbolic link; give the name of the file itself, or - for standard output");
    if (!S_ISREG(info.st_mode))
        refuse("is not a regular file; choose another name, or - for standard output");
    if (!destination.mayReplace)
        refuse("exists; choose another name, or replace it with --force");
}

/** What every save begins with: whether it may be done. The mode that the file will have. */
mode_t decide(Console &console, const Destination &destination) {
    if (destination.isStandardOutput() && console.isJson())
        throw Failure::usage("the bytes and an answer in JSON cannot both go to standard output; "
                             "leave --json out, or save the bytes in a file");
    struct stat info = {};
    if (destination.isStandardOutput())
        return 0;
    if (lstat(destination.path.c_str(), &info) == 0) {
        requireReplaceable(destination, info);
        return modeFor(destination, &info);
    }
    if (errno != ENOENT)
        throw Failure::file("write " + destination.path, kWhereToWrite);
    return modeFor(destination, nullptr);
}

/** Gives a whole file on standard output. */
void giveFile(Console &console, int file) {
    constexpr size_t kPart = 65536;
    Bytes part(kPart);
    ssize_t count = 0;
    for (off_t at = 0; (count = pread(file, part.data(), part.size(), at)) > 0; at += count)
        console.giveData({part.data(), static_cast<size_t>(count)});
    if (count < 0)
        throw Failure::file("read a temporary file", "try again");
}

Bytes readWhole(int file, const std::string &name, size_t maxSize) {
    constexpr size_t kPart = 65536; // a unit has little memory
    Bytes content;
    size_t size = 0;
    ssize_t count = 1;
    while (size <= maxSize && count > 0) {
        // One byte more than fits tells a file that is too long.
        content.resize(size + std::min(std::max(kPart, size), maxSize + 1 - size));
        count = read(file, content.data() + size, content.size() - size);
        size += count > 0 ? static_cast<size_t>(count) : 0;
    }
    if (count < 0)
        throw Failure::file("read " + name, kGiveAFile);
    if (size > maxSize)
        throw Failure(ExitCode::Host, name + " is longer than " + std::to_string(maxSize) +
                                          " bytes; give the right file");
    content.resize(size);
    return content;
}

} // namespace

bool isStandardStream(const std::string &path) {
    return path == "-";
}

std::string inputName(const std::string &path) {
    return isStandardStream(path) ? "standard input" : path;
}

Bytes readHostFile(const std::string &path, size_t maxSize) {
    const bsp::Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen())
        throw Failure::file("open " + path, kGiveAFile);
    return readWhole(file.get(), path, maxSize);
}

Bytes readHostFileOrInput(const std::string &path, size_t maxSize) {
    return isStandardStream(path) ? readWhole(STDIN_FILENO, inputName(path), maxSize)
                                  : readHostFile(path, maxSize);
}

void requireNamedFile(const std::string &path) {
    if (isStandardStream(path))
        throw Failure::usage("this is not taken from standard input; give the name of a file");
}

bool readAt(int file, uint64_t offset, std::span<uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = pread(file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count == 0)
            errno = ENODATA;
        if (count <= 0)
            return false;
        bytes = bytes.subspan(static_cast<size_t>(count));
        offset += static_cast<uint64_t>(count);
    }
    return true;
}

bool writeAll(int file, ByteView bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(file, bytes.data(), bytes.size());
        if (count < 0)
            return false;
        bytes = bytes.subspan(static_cast<size_t>(count));
    }
    return true;
}

bool Destination::isStandardOutput() const {
    // This program's own descriptor 1 leads to standard error, so that these must not be opened.
    constexpr std::array kNames = {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"};
    const std::string name = std::filesystem::path(path).lexically_normal();
    return isStandardStream(path) || std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

void requireSavable(Console &console, const Destination &destination) {
    decide(console, destination);
}

Saving::Saving(Console &console, const Destination &destination)
    : console_(console), destination_(destination), mode_(decide(console, destination)) {
    if (destination.isStandardOutput())
        file_.emplace(folderForTemporaryFiles(), "a temporary file");
    else
        file_.emplace(folderOf(destination.path), destination.path);
}

void Saving::write(ByteView bytes) {
    if (!writeAll(file_->descriptor(), bytes))
        throw Failure::file("write " + destination_.name(), kWhereToWrite);
}

void Saving::finish() {
    if (destination_.isStandardOutput())
        giveFile(console_, file_->descriptor());
    else if (!file_->takePlace(destination_.path, mode_, destination_.mayReplace))
        throw Failure::file("write " + destination_.path, kWhereToWrite);
}

void save(Console &console, const Destination &destination, ByteView content) {
    if (destination.isStandardOutput()) {
        decide(console, destination);
        console.giveData(content);
        return;
    }
    Saving saving(console, destination);
    saving.write(content);
    saving.finish();
}

} // namespace iodbg
