#pragma once
// How far programs that this one runs have come with a file that they read from its start on, seen
// from outside: the kernel tells the positions of a program's open files.

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace iodbg {

class ReadingWatch {
  public:
    /** Told how many bytes have been read, from a thread of its own. It must not throw. */
    using Reached = std::function<void(uint64_t bytes)>;

    /** Watches as long as it lives. Where the kernel tells no positions, nothing is reached. */
    ReadingWatch(const std::string &file, Reached reached);
    ReadingWatch(const ReadingWatch &) = delete;
    ReadingWatch &operator=(const ReadingWatch &) = delete;
    ~ReadingWatch();

  private:
    void watch(const std::string &file);

    Reached reached_;
    std::mutex mutex_;
    std::condition_variable end_;
    bool hasEnded_ = false;
    std::thread thread_;
};

} // namespace iodbg
