#pragma once
// A file that is closed when nobody needs it any more.

#include <unistd.h>

namespace vboard {

class Descriptor {
  public:
    explicit Descriptor(int fd) : fd_(fd) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor() {
        if (isOpen())
            close(fd_);
    }

    bool isOpen() const { return fd_ >= 0; }
    int get() const { return fd_; }

  private:
    int fd_;
};

} // namespace vboard
