// nanddump [-q] [-a] [-s OFFSET] [-l LENGTH] [--bb=METHOD] [-f FILE] DEVICE: copies a part of a
// partition into a file, or to standard output.

#include "virtual_board/flash_tools/help.h"
#include "virtual_board/flash_tools/options.h"
#include "virtual_board/flash_tools/partition.h"
#include "virtual_board/flash_tools/tools.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace flash_tools {

namespace {

constexpr char kNandDump[] = "nanddump";

/** What becomes of bad blocks. */
enum class BadBlocks { Pad, Dump, Skip };

struct NandDumpOrder {
    std::string device, file;
    int64_t start = 0, length = 0;
    BadBlocks method = BadBlocks::Skip;
    bool isQuiet = false, isForced = false;
};

bool parseMethod(const std::string &text, BadBlocks &method) {
    if (text == "padbad")
        method = BadBlocks::Pad;
    else if (text == "dumpbad")
        method = BadBlocks::Dump;
    else if (text == "skipbad")
        method = BadBlocks::Skip;
    else
        return false;
    return true;
}

bool writeAll(int fd, const uint8_t *data, size_t length) {
    while (length > 0) {
        const ssize_t count = write(fd, data, length);
        if (count <= 0)
            return false;
        data += count;
        length -= static_cast<size_t>(count);
    }
    return true;
}

bool dumpPages(const NandDumpOrder &order, const Partition &partition, int output) {
    const uint64_t pageSize = partition.info().writesize;
    const uint64_t blockSize = partition.info().erasesize;
    const uint64_t size = partition.info().size;
    const auto start = static_cast<uint64_t>(order.start);
    uint64_t end = order.length != 0 ? start + static_cast<uint64_t>(order.length) : size;
    end = std::min(end, size);
    std::vector<uint8_t> page(partition.info().writesize);
    uint64_t knownBlock = UINT64_MAX;
    int bad = 0;
    for (uint64_t offset = start; offset < end; offset += pageSize) {
        if (order.method != BadBlocks::Dump && offset / blockSize != knownBlock) {
            knownBlock = offset / blockSize;
            bad = partition.isBad(knownBlock * blockSize);
            if (bad < 0) {
                complain(kNandDump, "libmtd: mtd_is_bad");
                return false;
            }
        }
        if (bad > 0 && order.method == BadBlocks::Skip) {
            end = std::min(end + blockSize, size);
            offset += blockSize - pageSize;
            continue;
        }
        if (bad > 0) {
            std::fill(page.begin(), page.end(), kErased);
        } else if (!partition.readPage(offset, page.data())) {
            complain(kNandDump, "mtd_read");
            return false;
        }
        if (!writeAll(output, page.data(), static_cast<size_t>(std::min(pageSize, end - offset)))) {
            complain(kNandDump, "Unable to write to output");
            return false;
        }
    }
    return true;
}

int dump(const NandDumpOrder &order) {
    Partition partition(kNandDump, order.device);
    if (!partition.open(O_RDONLY)) {
        std::perror(order.device.c_str());
        return kFailed;
    }
    if (!partition.getInfo())
        return complain(kNandDump, "mtd_get_dev_info failed");
    constexpr mode_t kMode = 0644;
    const bool isStandardOutput = order.file.empty() || order.file == "-";
    const int output = isStandardOutput
                           ? STDOUT_FILENO
                           : open(order.file.c_str(), O_WRONLY | O_TRUNC | O_CREAT, kMode);
    if (output < 0) {
        std::perror(order.file.c_str());
        return kFailed;
    }
    bool isDone = false;
    if (!order.isForced && isatty(output) == 1) {
        std::fputs(
            "Not printing binary garbage to tty. Use '-a'\nor '--forcebinary' to override.\n",
            stderr);
    } else if (static_cast<uint64_t>(order.start) % partition.info().writesize != 0) {
        std::fprintf(stderr,
                     "the start address (-s parameter) is not page-aligned!\n"
                     "The pagesize of this NAND Flash is 0x%x.\n",
                     partition.info().writesize);
    } else {
        if (!order.isQuiet)
            std::fprintf(stderr, "Block size %u, page size %u, OOB size %u\n",
                         partition.info().erasesize, partition.info().writesize,
                         partition.info().oobsize);
        isDone = dumpPages(order, partition, output);
    }
    if (!isStandardOutput)
        close(output);
    return isDone ? kDone : kFailed;
}

} // namespace

int dumpNand(const Arguments &arguments) {
    const CommandLine line = parse(arguments, {{"q", "quiet", false},
                                               {"a", "forcebinary", false},
                                               {"b", "bb", true},
                                               {"f", "file", true},
                                               {"l", "length", true},
                                               {"s", "startaddress", true}});
    NandDumpOrder order;
    bool isGood = line.isGood;
    for (const ParsedOption &option : line.options) {
        order.isQuiet |= option.letter == 'q';
        order.isForced |= option.letter == 'a';
        if (option.letter == 'f')
            order.file = option.value;
        if (option.letter == 's')
            isGood &= parseNumber(kNandDump, "strtoll", option.value, order.start);
        if (option.letter == 'l')
            isGood &= parseNumber(kNandDump, "strtoll", option.value, order.length);
        if (option.letter == 'b')
            isGood &= parseMethod(option.value, order.method);
    }
    if (order.start < 0)
        return complain(kNandDump, "Can't specify negative offset with option -s: %lld",
                        static_cast<long long>(order.start));
    if (order.length < 0)
        return complain(kNandDump, "Can't specify negative length with option -l: %lld",
                        static_cast<long long>(order.length));
    if (!isGood || line.operands.size() != 1)
        return refuseUsage(kNandDump);
    order.device = line.operands[0];
    return dump(order);
}

} // namespace flash_tools
