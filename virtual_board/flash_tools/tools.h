#pragma once
// The system's tools as they work on a board, when a program runs them through the shell: with the
// options, messages and exit statuses of the tools that real boards have.

#include <cstdint>
#include <mtd/mtd-abi.h>
#include <string>
#include <vector>

namespace flash_tools {

// Exit statuses.
constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kError = 255; // the MTD tools end with -1

using Arguments = std::vector<std::string>;

/** A tool; its arguments start with its own name. */
int eraseFlash(const Arguments &arguments);
int writeNand(const Arguments &arguments);
int dumpNand(const Arguments &arguments);
int setTerminal(const Arguments &arguments);
int removeFiles(const Arguments &arguments);

/** The system's tool of that name takes over; comes back only with the status of a failure. */
int runSystemTool(const Arguments &arguments);

/** Says what is wrong as the MTD tools do, and answers their status for errors. */
__attribute__((format(printf, 2, 3))) int complain(const std::string &tool, const char *format,
                                                   ...);
/** The same with the system's error. */
__attribute__((format(printf, 2, 3))) int complainSystem(const std::string &tool,
                                                         const char *format, ...);

/** An open flash partition. */
class Partition {
  public:
    Partition(std::string tool, std::string path);
    Partition(const Partition &) = delete;
    Partition &operator=(const Partition &) = delete;
    ~Partition();

    /** Opens it and asks for its geometry; false, with errno, when one fails. */
    bool open(int flags);
    bool getInfo();

    const std::string &path() const { return path_; }
    const mtd_info_user &info() const { return info_; }
    uint32_t blockOf(uint64_t offset) const {
        return static_cast<uint32_t>(offset) / info_.erasesize;
    }

    /** 1 bad, 0 good, -1 (with errno) that cannot be told. */
    int isBad(uint64_t offset) const;
    bool markBad(uint64_t offset) const;
    // False, after a message, with errno.
    bool eraseBlocks(uint64_t offset, uint32_t count = 1) const;
    bool readPage(uint64_t offset, uint8_t *page) const;
    bool writePage(uint64_t offset, const uint8_t *page) const;

  private:
    bool failTransfer(const char *what, const char *direction, uint64_t offset) const;

    std::string tool_, path_;
    int fd_ = -1;
    mtd_info_user info_ = {};
};

/** The options and operands of a command line, taken apart as getopt_long does. */
struct Option {
    const char *letters; // short names
    const char *name;    // long name, or null
    bool hasValue;
};

struct ParsedOption {
    char letter; // the first of its letters
    std::string value;
};

struct CommandLine {
    bool isGood = true; // an unknown option, or one without its value, has been told otherwise
    std::vector<ParsedOption> options;
    Arguments operands;
};

CommandLine parse(const Arguments &arguments, const std::vector<Option> &known);

/** A whole number, decimal, octal or hexadecimal; false, after a message, for another text. */
bool parseNumber(const std::string &tool, const char *parser, const std::string &text,
                 int64_t &number);

} // namespace flash_tools
