#pragma once
// An open file.

#include "iodbg/format.h"

#include <unistd.h>

namespace iodbg {

class Descriptor {
  public:
    explicit Descriptor(int fd) : fd_(fd) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor() {
        if (isOpen())
            close(fd_);
    }

    int get() const { return fd_; }
    bool isOpen() const { return fd_ >= 0; }

    /** False, with the reason in errno, when not all bytes could be written. */
    bool writeAll(ByteView bytes) const {
        while (!bytes.empty()) {
            const ssize_t count = ::write(fd_, bytes.data(), bytes.size());
            if (count < 0)
                return false;
            bytes = bytes.subspan(static_cast<size_t>(count));
        }
        return true;
    }

  private:
    int fd_;
};

} // namespace iodbg
