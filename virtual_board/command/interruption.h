#pragma once
// Work that leaves processes behind when somebody ends it: by Ctrl-C, by another signal, or by not
// reading any more what it prints.

#include <string>
#include <sys/types.h>

namespace vboard {

/**
 * As long as it lives, SIGINT, SIGTERM, SIGHUP and SIGPIPE end the groups of processes that it
 * knows, and say on standard error where the work was, before they end this process as they do
 * otherwise. There is one at a time.
 */
class Interruptible {
  public:
    Interruptible();
    Interruptible(const Interruptible &) = delete;
    Interruptible &operator=(const Interruptible &) = delete;
    ~Interruptible();
};

/** Where the work is: "start-up.toml:12: run iodbg init". */
void setPlaceOfWork(const std::string &text);

/** Groups of processes, each called as its leader. Of more than there is room for false. */
bool addGroup(pid_t leader);
void removeGroup(pid_t leader);

} // namespace vboard
