#pragma once
// What was sent, as a file.

#include "virtual_board/calls/board.h"

#include <string>

namespace vboard::server {

/** In memory alone, and seen by this process alone. */
class UploadedFile {
  public:
    explicit UploadedFile(const std::string &content);
    UploadedFile(const UploadedFile &) = delete;
    UploadedFile &operator=(const UploadedFile &) = delete;
    ~UploadedFile();

    const std::string &path() const { return path_; }

    /** Makes a call; that it fails is told without the path, which who has sent it does not know.
     */
    template <typename Work>
    auto tellWithout(Work work) const {
        try {
            return work();
        } catch (const CallFailed &failure) {
            throw CallFailed(failure.status(), withoutPath(failure.what()));
        }
    }

  private:
    std::string withoutPath(std::string text) const;

    int fd_;
    std::string path_;
};

} // namespace vboard::server
