#include "iodbg/core/library_calls.h"

#include <utility>

namespace iodbg {

namespace {

CommandWatcher commandWatcher;
WriteWatcher writeWatcher;
RequestWatcher requestWatcher;

} // namespace

void tellOfCommand(const char *command) {
    if (commandWatcher && command != nullptr)
        commandWatcher(command);
}

void tellOfWrite(size_t bytes) {
    // What the watcher writes itself is not told to it.
    const WriteWatcher watcher = std::exchange(writeWatcher, nullptr);
    if (watcher)
        watcher(bytes);
    writeWatcher = watcher;
}

void tellOfRequest(unsigned long request, const void *argument) {
    if (requestWatcher)
        requestWatcher(request, argument);
}

CommandWatch::CommandWatch(CommandWatcher watcher) {
    commandWatcher = std::move(watcher);
}

CommandWatch::~CommandWatch() {
    commandWatcher = nullptr;
}

WriteWatch::WriteWatch(WriteWatcher watcher) {
    writeWatcher = std::move(watcher);
}

WriteWatch::~WriteWatch() {
    writeWatcher = nullptr;
}

RequestWatch::RequestWatch(RequestWatcher watcher) {
    requestWatcher = std::move(watcher);
}

RequestWatch::~RequestWatch() {
    requestWatcher = nullptr;
}

} // namespace iodbg
