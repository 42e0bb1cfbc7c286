#pragma once
// What a virtual board cannot show of the library: its calls of the system, one by one and in
// order, and what it does when one of them fails that no board can make fail. In programs that link
// this the library has the system's functions under other names (system_calls.txt), so that its
// calls, and nobody else's, come here first. From here they go on to the board.

#include "tests/support/answer.h"

#include <cerrno>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using Calls = std::vector<std::string>;

/** A call that is about to be made. */
struct SystemCall {
    const char *function; // whatever its name is in this build
    int fd = -1;
    unsigned long request = 0; // of an ioctl
    void *argument = nullptr;  // of an ioctl, of stat, the place of a mapping
    size_t size = 0;           // of a transfer
    // Most calls are looked at by nobody, and put into no words.
    const void *described = nullptr;
    std::string (*describe)(const void *) = nullptr;

    bool is(std::string_view name) const { return name == function; }

    /** "open /dev/mtd0 read-write sync", "write /dev/mtd0 2048", "wait 2 us". */
    std::string text() const { return describe(described); }
};

/**
 * Sees all calls of the library for as long as it exists. Where there are several, the youngest
 * answers first.
 */
class Recorder {
  public:
    Recorder();
    Recorder(const Recorder &) = delete;
    Recorder &operator=(const Recorder &) = delete;
    ~Recorder();

    /**
     * Is called before each call. With an answer, which may come with an errno, the call is not
     * made; only that a descriptor, a file or a mapping is given back cannot be prevented. A
     * transfer whose answer is positive is made with so many bytes.
     */
    std::function<std::optional<int64_t>(const SystemCall &)> before;

    /**
     * The n-th call that begins with these words gets this answer in the same way; so do the ones
     * behind it, as many as told.
     */
    void fail(const std::string &call, int nth = 1, int64_t result = -1, int times = 1,
              int error = EIO);
    void failAlways(const std::string &call, int64_t result = -1) {
        fail(call, 1, result, 1 << 30);
    }
    void clearFailures() { failures_.clear(); }
    /** Whether every failure that was asked for came about. */
    bool allFailed() const;

    /**
     * Calls the library and writes its calls down. Whatever is still open, locked, mapped or
     * allocated behind it fails the test.
     */
    Answer run(const std::function<int32_t()> &call);

    Calls calls;            // of the last run()
    std::string complaints; // on standard error

    /**
     * The calls without those that close, free and unmap: that all is given back is seen by run(),
     * and the order of it is nobody's business.
     */
    Calls work() const;

    /** The calls that begin with these words. */
    Calls callsOf(std::string_view words) const;

    /** Shows a call to all recorders; the answer of one, if it has any. */
    static std::optional<int64_t> answerOf(const SystemCall &call);

  private:
    struct Failure {
        std::string call;
        int nth;
        int times;
        int64_t result;
        int error;
        int seen = 0;
    };

    void note(const SystemCall &call);
    std::optional<int64_t> answerTo(const SystemCall &call);

    std::vector<Failure> failures_;
    bool isRunning_ = false;
};
