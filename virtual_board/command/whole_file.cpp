#include "virtual_board/command/whole_file.h"

#include "command_line/blocked_signals.h"
#include "language/refused.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace vboard {

namespace {

[[noreturn]] void failToWrite(const std::string &file) {
    if (errno == EEXIST)
        throw language::Refused(file + " exists; choose another name, or replace it with --force");
    throw language::Refused("cannot write " + file + ": " + std::strerror(errno));
}

void writeAll(int descriptor, const std::string &content, const std::string &file) {
    for (size_t done = 0; done < content.size();) {
        const ssize_t count = write(descriptor, content.data() + done, content.size() - done);
        if (count < 0 && errno != EINTR)
            failToWrite(file);
        done += static_cast<size_t>(std::max<ssize_t>(count, 0));
    }
}

/** A file beside the one that it becomes; gone again when it does not. */
class NewFile {
  public:
    explicit NewFile(const std::string &file) : file_(file), path_(file + ".XXXXXX") {
        descriptor_ = mkstemp(path_.data());
        if (descriptor_ < 0)
            failToWrite(file_);
    }
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;
    ~NewFile() {
        close(descriptor_);
        unlink(path_.c_str()); // has its own name by now, or none
    }

    void fill(const std::string &content) const {
        const mode_t mask = umask(0);
        umask(mask);
        fchmod(descriptor_, 0666 & ~mask);
        writeAll(descriptor_, content, file_);
    }

    void takeName(bool isForced) const {
        if (isForced ? std::rename(path_.c_str(), file_.c_str()) != 0
                     : link(path_.c_str(), file_.c_str()) != 0)
            failToWrite(file_);
    }

  private:
    const std::string &file_;
    std::string path_;
    int descriptor_ = -1;
};

/** Devices and pipes are not replaced. */
bool isStream(const std::string &file) {
    std::error_code failure;
    const auto status = std::filesystem::status(file, failure);
    return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status) &&
           !std::filesystem::is_directory(status);
}

void writeInto(const std::string &file, const std::string &content) {
    const int descriptor = open(file.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0)
        failToWrite(file);
    writeAll(descriptor, content, file);
    close(descriptor);
}

} // namespace

void writeWhole(const std::string &file, const std::string &content, bool isForced) {
    if (file == kStandardOutput) {
        std::fwrite(content.data(), 1, content.size(), stdout);
    } else if (isForced && isStream(file)) {
        writeInto(file, content);
    } else {
        const command_line::BlockedSignals whole(command_line::kEndingSignals);
        std::error_code failure;
        const std::string target = // what a link leads to
            isForced ? std::filesystem::weakly_canonical(file, failure).string() : file;
        const NewFile made(target);
        made.fill(content);
        made.takeName(isForced);
    }
}

} // namespace vboard
