#pragma once
// What the library asks of the system while it works, seen as it passes: how far long work has
// come that tells nothing itself.

#include <cstddef>
#include <functional>
#include <string>

namespace iodbg {

/** Told of every command line before the shell gets it. It must not throw. */
using CommandWatcher = std::function<void(const std::string &command)>;
/** Told of every write, whatever to, after it: how many bytes it was for. It must not throw. */
using WriteWatcher = std::function<void(size_t bytes)>;

/** Told of every request to a driver that has succeeded. It must not throw. */
using RequestWatcher = std::function<void(unsigned long request, const void *argument)>;

/** Watches as long as it lives; one of each kind at a time. */
class CommandWatch {
  public:
    explicit CommandWatch(CommandWatcher watcher);
    CommandWatch(const CommandWatch &) = delete;
    CommandWatch &operator=(const CommandWatch &) = delete;
    ~CommandWatch();
};

class WriteWatch {
  public:
    explicit WriteWatch(WriteWatcher watcher);
    WriteWatch(const WriteWatch &) = delete;
    WriteWatch &operator=(const WriteWatch &) = delete;
    ~WriteWatch();
};

class RequestWatch {
  public:
    explicit RequestWatch(RequestWatcher watcher);
    RequestWatch(const RequestWatch &) = delete;
    RequestWatch &operator=(const RequestWatch &) = delete;
    ~RequestWatch();
};

// The calls that pass (`interposed.cpp`).
void tellOfCommand(const char *command);
void tellOfWrite(size_t bytes);
void tellOfRequest(unsigned long request, const void *argument);

} // namespace iodbg
