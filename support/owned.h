#pragma once
// Owners of what the C library hands out; each releases it on every path out of a function.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <unistd.h>

namespace bsp {

/** A file descriptor. 0 is a valid one; anything negative is the failed result of an open. */
class Descriptor {
  public:
    explicit Descriptor(int fd) : fd_(fd) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor() {
        if (isOpen())
            ::close(fd_);
    }

    bool isOpen() const { return fd_ >= 0; }
    int get() const { return fd_; }

  private:
    int fd_;
};

struct CloseFile {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

struct FreeMemory {
    void operator()(void *memory) const { std::free(memory); }
};
template <typename Record>
using HeapRecord = std::unique_ptr<Record, FreeMemory>;

/** A zeroed record on the heap; empty when there is no memory. */
template <typename Record>
HeapRecord<Record> allocateRecord() {
    return HeapRecord<Record>(static_cast<Record *>(std::calloc(1, sizeof(Record))));
}

} // namespace bsp
