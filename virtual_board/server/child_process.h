#pragma once
// A process that works for the server, and ends with it.

#include <string>
#include <sys/types.h>
#include <vector>

namespace vboard::server {

class ChildProcess {
  public:
    /** Starts this same program once more. Throws CallFailed. */
    explicit ChildProcess(const std::vector<std::string> &words);
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;
    /** Kills it if it still is there. */
    ~ChildProcess();

    /** Waits some milliseconds for it to print something or end; false once it has ended, and all
     * that it has printed is there. */
    bool work(int timeoutMs);
    /** The next whole line that it has printed; false when there is none. */
    bool takeLine(std::string &line);

    /** Nothing for one that has ended. */
    void signal(int number) const;

    bool hasEnded() const { return hasEnded_; }
    /** 0: it has ended well. */
    int exitCode() const { return exitCode_; }
    /** What it complains of, without its name. */
    std::string complaint() const;

  private:
    bool readFrom(int &pipe, std::string &text);

    pid_t pid_ = -1;
    int output_ = -1, errors_ = -1; // -1: closed
    std::string printed_, complained_;
    bool hasEnded_ = false;
    int exitCode_ = 0;
};

} // namespace vboard::server
