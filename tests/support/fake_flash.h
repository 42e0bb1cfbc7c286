#pragma once
// Flash partitions, the files beside them and the shell, as the library's system calls meet them.
// While run() calls the library, each of its system calls is written down, answered from here, and
// can be made to fail; outside of it the calls are the system's own.

#include "bsp.h"
#include "tests/support/answer.h"

#include <cerrno>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;
using Calls = std::vector<std::string>;

struct FakeFile {
    Bytes content = {};
    // Of a partition:
    bool isPartition = false;
    uint32_t eraseSize = 0;
    uint32_t pageSize = 0;
    std::set<uint32_t> badPages = {};      // offsets that refuse to be written
    std::vector<uint32_t> erased = {};     // offsets of the blocks that were erased, in order
    std::vector<int64_t> pageResults = {}; // what a write of these pages answered, in order
};

class FakeFlash {
  public:
    std::map<std::string, FakeFile> files;
    std::function<int(const std::string &)> onCommand = [](const std::string &) { return 0; };
    std::function<int32_t(const BspIoctlRecord &)> onRequest = [](const BspIoctlRecord &) {
        return 0;
    };
    int firstDescriptor = 1000;

    /** What the last run() called: "open /dev/mtd0 read-write sync", "write /dev/mtd0 2048". */
    Calls calls;
    std::string complaints; // on standard error

    void addPartition(const std::string &path, uint32_t size, uint32_t eraseSize,
                      uint32_t pageSize);

    /**
     * The nth call that begins with these words is not done and answers the result; so do the ones
     * behind it, as many as told. A read or write with a positive result is done so far.
     */
    void fail(const std::string &call, int nth = 1, int64_t result = -1, int times = 1,
              int error = EIO);
    void failAlways(const std::string &call, int64_t result = -1) {
        fail(call, 1, result, 1 << 30);
    }
    void clearFailures() { failures_.clear(); }
    /** Whether every failure that was asked for came about. */
    bool allFailed() const;

    /** Calls the library. Whatever is still open, locked or allocated behind it fails the test. */
    Answer run(const std::function<int32_t()> &call);

    /** The calls that begin with these words. */
    Calls callsOf(const std::string &words) const;

  private:
    friend struct FakeCalls;

    struct Failure {
        std::string call;
        int nth;
        int times;
        int64_t result;
        int error;
        int seen = 0;
    };
    struct OpenFile {
        std::string path;
        size_t position = 0;
        bool isOpen = true;
    };

    const Failure *note(const std::string &call);

    std::vector<Failure> failures_;
    std::map<int, OpenFile> opened_;
    std::set<std::string> locked_;
    std::set<void *> buffers_;
    int nextDescriptor_ = 0;
    int openStreams_ = 0;
};

/** So many bytes that differ from page to page. */
Bytes patterned(size_t size);

/** Bytes of a text, without a zero behind it. */
Bytes bytesOf(const std::string &text);

/** Several lists, one behind the other. */
Calls joined(std::initializer_list<Calls> steps);
Bytes joined(std::initializer_list<Bytes> pieces);

/** Taking and giving back the flash lock. */
extern const Calls kLocking;
extern const Calls kUnlocking;

/** A hundred attempts in vain at taking or giving back a lock. */
Calls hundredTimes(const std::string &call);
