#include "iodbg/core/library_calls.h"

#include <utility>

namespace iodbg {

namespace {

CommandWatcher commandWatcher;
WriteWatcher writeWatcher;

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

} // namespace iodbg
