#include "virtual_board/server/uploaded_file.h"

#include <cerrno>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

namespace vboard::server {

namespace {

[[noreturn]] void failUpload() {
    throw CallFailed(VBOARD_E_SYSTEM,
                     std::string("what was sent cannot be kept: ") + std::strerror(errno));
}

} // namespace

UploadedFile::UploadedFile(const std::string &content)
    : fd_(memfd_create("captured unit", MFD_CLOEXEC)),
      path_("/proc/self/fd/" + std::to_string(fd_)) {
    if (fd_ < 0)
        failUpload();
    size_t done = 0;
    while (done < content.size()) {
        const ssize_t written = write(fd_, content.data() + done, content.size() - done);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0) {
            close(fd_);
            failUpload();
        }
        done += static_cast<size_t>(written);
    }
}

UploadedFile::~UploadedFile() {
    close(fd_);
}

std::string UploadedFile::withoutPath(std::string text) const {
    for (size_t at = text.find(path_); at != std::string::npos; at = text.find(path_))
        text.replace(at, path_.size(), "the file");
    return text;
}

} // namespace vboard::server
