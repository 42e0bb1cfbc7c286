// Flash partitions and command lines as all MTD tools handle them.

#include "virtual_board/flash_tools/tools.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <getopt.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace flash_tools {

namespace {

constexpr char kLibrary[] = "libmtd"; // whose messages appear with those of the tools

__attribute__((format(printf, 2, 0))) void printError(const std::string &tool, const char *format,
                                                      va_list arguments) {
    std::fprintf(stderr, "%s: error!: ", tool.c_str());
    std::vfprintf(stderr, format, arguments);
    std::fputc('\n', stderr);
}

/** The digits of /dev/mtdN. */
std::string numberOf(const std::string &path) {
    const size_t digits = path.find_last_not_of("0123456789") + 1;
    return path.substr(digits);
}

} // namespace

int complain(const std::string &tool, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    printError(tool, format, arguments);
    va_end(arguments);
    return kError;
}

int complainSystem(const std::string &tool, const char *format, ...) {
    const int error = errno;
    va_list arguments;
    va_start(arguments, format);
    printError(tool, format, arguments);
    va_end(arguments);
    const int indent = static_cast<int>(tool.size()) + 2;
    std::fprintf(stderr, "%*serror %d (%s)\n", indent, "", error, std::strerror(error));
    errno = error;
    return kError;
}

Partition::Partition(std::string tool, std::string path)
    : tool_(std::move(tool)), path_(std::move(path)) {}

Partition::~Partition() {
    if (fd_ >= 0)
        close(fd_);
}

bool Partition::open(int flags) {
    fd_ = ::open(path_.c_str(), flags | O_CLOEXEC);
    return fd_ >= 0;
}

bool Partition::getInfo() {
    return ioctl(fd_, MEMGETINFO, &info_) == 0 && info_.erasesize != 0 && info_.writesize != 0;
}

int Partition::isBad(uint64_t offset) const {
    if (offset >= info_.size) {
        complain(kLibrary, "bad eraseblock number %u, mtd%s has %u eraseblocks", blockOf(offset),
                 numberOf(path_).c_str(), info_.size / info_.erasesize);
        errno = EINVAL;
        return -1;
    }
    auto position = static_cast<int64_t>(offset);
    return ioctl(fd_, MEMGETBADBLOCK, &position);
}

bool Partition::markBad(uint64_t offset) const {
    auto position = static_cast<int64_t>(offset);
    return ioctl(fd_, MEMSETBADBLOCK, &position) == 0;
}

bool Partition::eraseBlocks(uint64_t offset, uint32_t count) const {
    erase_info_user64 blocks = {offset, uint64_t{count} * info_.erasesize};
    if (ioctl(fd_, MEMERASE64, &blocks) == 0)
        return true;
    complainSystem(kLibrary, "MEMERASE64 ioctl failed for eraseblock %u (mtd%s)", blockOf(offset),
                   numberOf(path_).c_str());
    return false;
}

bool Partition::failTransfer(const char *what, const char *direction, uint64_t offset) const {
    complainSystem(kLibrary, "cannot %s %u bytes %s mtd%s (eraseblock %u, offset %u)", what,
                   info_.writesize, direction, numberOf(path_).c_str(), blockOf(offset),
                   static_cast<uint32_t>(offset % info_.erasesize));
    return false;
}

bool Partition::readPage(uint64_t offset, uint8_t *page) const {
    const auto position = static_cast<off_t>(offset);
    uint32_t done = 0;
    bool isGood = lseek(fd_, position, SEEK_SET) == position;
    while (isGood && done < info_.writesize) {
        const ssize_t count = read(fd_, page + done, info_.writesize - done);
        isGood = count > 0;
        done += isGood ? static_cast<uint32_t>(count) : 0;
    }
    return isGood || failTransfer("read", "from", offset);
}

bool Partition::writePage(uint64_t offset, const uint8_t *page) const {
    const auto position = static_cast<off_t>(offset);
    const auto size = static_cast<ssize_t>(info_.writesize);
    return (lseek(fd_, position, SEEK_SET) == position &&
            write(fd_, page, info_.writesize) == size) ||
           failTransfer("write", "to", offset);
}

CommandLine parse(const Arguments &arguments, const std::vector<Option> &known) {
    std::string letters;
    std::vector<option> names;
    for (const Option &candidate : known) {
        for (const char *letter = candidate.letters; *letter != '\0'; ++letter)
            letters += std::string(1, *letter) + (candidate.hasValue ? ":" : "");
        if (candidate.name != nullptr)
            names.push_back({candidate.name, candidate.hasValue ? required_argument : no_argument,
                             nullptr, candidate.letters[0]});
    }
    names.push_back({nullptr, 0, nullptr, 0});
    std::vector<char *> words;
    for (const std::string &argument : arguments)
        words.push_back(const_cast<char *>(argument.c_str()));
    words.push_back(nullptr);

    CommandLine line;
    const int count = static_cast<int>(arguments.size());
    int found = 0;
    while ((found = getopt_long(count, words.data(), letters.c_str(), names.data(), nullptr)) !=
           -1) {
        if (found == '?')
            line.isGood = false;
        else
            line.options.push_back({static_cast<char>(found), optarg != nullptr ? optarg : ""});
    }
    line.operands.assign(words.data() + optind, words.data() + count);
    return line;
}

bool parseNumber(const std::string &tool, const char *parser, const std::string &text,
                 int64_t &number) {
    char *end = nullptr;
    errno = 0;
    number = std::strtoll(text.c_str(), &end, 0);
    if (end != text.c_str() && *end == '\0' && errno == 0)
        return true;
    complain(tool, "%s: unable to parse the number '%s'", parser, text.c_str());
    return false;
}

} // namespace flash_tools
