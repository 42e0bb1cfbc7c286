// nandwrite [-q] [-p] [-m] [-N] [-s OFFSET] DEVICE [FILE|-]: writes a file, or standard input, page
// by page. A bad block, and a block that turns out not to take its data, is passed over: what
// follows moves up by a block.

#include "virtual_board/flash_tools/help.h"
#include "virtual_board/flash_tools/options.h"
#include "virtual_board/flash_tools/partition.h"
#include "virtual_board/flash_tools/tools.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace flash_tools {

namespace {

constexpr char kNandWrite[] = "nandwrite";
constexpr char kStandardInput[] = "-";

struct NandWriteOrder {
    std::string device, file;
    int64_t start = 0;
    bool isQuiet = false, pads = false, marksBad = false, takesBadBlocks = false;
};

/** A run of the tool: where it is in the file and on the device. */
class Writer {
  public:
    explicit Writer(NandWriteOrder order)
        : order_(std::move(order)), partition_(kNandWrite, order_.device) {}
    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;
    ~Writer() {
        if (file_ > STDIN_FILENO)
            close(file_);
    }

    int run();

  private:
    uint32_t pageSize() const { return partition_.info().writesize; }
    uint32_t blockSize() const { return partition_.info().erasesize; }
    uint64_t size() const { return partition_.info().size; }
    uint64_t blockStart() const { return offset_ / blockSize() * blockSize(); }

    bool isStandardInput() const { return order_.file == kStandardInput; }

    bool openFile();
    bool measureFile();
    bool writePages();
    bool enterBlock();
    bool fillPage();
    bool writePage();
    bool giveBlockUp();
    bool isAllWritten() const { return remaining_ == 0 && next_ == block_.size(); }
    bool isFull() const { return offset_ >= size() && next_ == block_.size(); }

    NandWriteOrder order_;
    Partition partition_;
    int file_ = -1;
    uint64_t offset_ = 0;        // on the device
    uint64_t remaining_ = 0;     // of the file; of standard input a page, until it ends
    std::vector<uint8_t> block_; // what the current block gets, for when it moves to another
    size_t next_ = 0;            // byte of the block that is written next
    uint64_t enteredBlock_ = UINT64_MAX;
};

bool Writer::openFile() {
    if (isStandardInput()) {
        file_ = STDIN_FILENO;
        remaining_ = pageSize();
        return true;
    }
    file_ = open(order_.file.c_str(), O_RDONLY | O_CLOEXEC);
    if (file_ < 0) {
        std::perror(order_.file.c_str());
        return false;
    }
    return measureFile();
}

bool Writer::measureFile() {
    struct stat info = {};
    if (fstat(file_, &info) != 0) {
        complainSystem(kNandWrite, "unable to stat input image");
        return false;
    }
    remaining_ = static_cast<uint64_t>(info.st_size);
    if (!order_.pads && remaining_ % pageSize() != 0) {
        std::fputs("Input file is not page-aligned. Use the padding option.\n", stderr);
        return false;
    }
    // A page that is not whole is not counted.
    if (remaining_ / pageSize() * pageSize() > size() - offset_) {
        std::fprintf(stderr,
                     "Image %llu bytes, NAND page %u bytes, OOB area %u bytes, device size %llu "
                     "bytes\n",
                     static_cast<unsigned long long>(remaining_), pageSize(),
                     partition_.info().oobsize, static_cast<unsigned long long>(size()));
        complainSystem(kNandWrite, "Input file does not fit into device");
        return false;
    }
    return true;
}

/** Steps over bad blocks when a new one begins. */
bool Writer::enterBlock() {
    while (blockStart() != enteredBlock_) {
        enteredBlock_ = blockStart();
        if (!order_.isQuiet)
            std::printf("Writing data to block %llu at offset 0x%llx\n",
                        static_cast<unsigned long long>(enteredBlock_ / blockSize()),
                        static_cast<unsigned long long>(enteredBlock_));
        // A block that moves keeps what it was to get.
        if (next_ == block_.size()) {
            block_.clear();
            next_ = 0;
        }
        const int bad = order_.takesBadBlocks ? 0 : partition_.isBad(enteredBlock_);
        if (bad < 0) {
            complainSystem(kNandWrite, "%s: MTD get bad block failed", order_.device.c_str());
            return false;
        }
        if (bad == 0)
            continue;
        if (!order_.isQuiet)
            std::fprintf(stderr, "Bad block at %llx, 1 block(s) will be skipped\n",
                         static_cast<unsigned long long>(enteredBlock_));
        offset_ = enteredBlock_ + blockSize();
    }
    return true;
}

/** Reads the next page, unless the block still has one. Behind the end there is none. */
bool Writer::fillPage() {
    if (next_ < block_.size())
        return true;
    const size_t start = block_.size();
    block_.resize(start + pageSize(), kErased);
    size_t done = 0;
    bool isAtEnd = false;
    while (done < pageSize() && done < remaining_ && !isAtEnd) {
        const auto wanted =
            static_cast<size_t>(std::min<uint64_t>(pageSize() - done, remaining_ - done));
        const ssize_t count = read(file_, block_.data() + start + done, wanted);
        if (count < 0) {
            std::perror("File I/O error on input");
            block_.resize(start);
            return false;
        }
        isAtEnd = count == 0;
        done += static_cast<size_t>(count);
    }
    if (!isStandardInput())
        remaining_ -= std::min<uint64_t>(remaining_, pageSize());
    else if (isAtEnd)
        remaining_ = 0;
    if (isStandardInput() && done == 0) {
        block_.resize(start);
        return true;
    }
    if (done < pageSize() && !order_.pads) {
        std::fprintf(stderr,
                     "Unexpected EOF. Expecting at least %zu more bytes. Use the padding option.\n",
                     pageSize() - done);
        return false;
    }
    return true;
}

/** The block does not take its data: it is erased, and the data go to the next one. */
bool Writer::giveBlockUp() {
    const uint64_t start = blockStart();
    std::fprintf(stderr, "Erasing failed write from %#08llx to %#08llx\n",
                 static_cast<unsigned long long>(start),
                 static_cast<unsigned long long>(start + blockSize() - 1));
    if (!partition_.eraseBlocks(start)) {
        const int error = errno;
        complainSystem(kNandWrite, "%s: MTD Erase failure", order_.device.c_str());
        if (error != EIO)
            return false;
    }
    if (order_.marksBad) {
        std::fprintf(stderr, "Marking block at %08llx bad\n",
                     static_cast<unsigned long long>(start));
        if (!partition_.markBad(start)) {
            complainSystem(kNandWrite, "%s: MTD Mark bad block failure", order_.device.c_str());
            return false;
        }
    }
    next_ = 0;
    offset_ = start + blockSize();
    return true;
}

bool Writer::writePage() {
    if (!partition_.writePage(offset_, block_.data() + next_)) {
        if (errno == EIO)
            return giveBlockUp();
        complainSystem(kNandWrite, "%s: MTD write failure", order_.device.c_str());
        return false;
    }
    offset_ += pageSize();
    next_ += pageSize();
    return true;
}

bool Writer::writePages() {
    while (!isAllWritten() && offset_ < size()) {
        if (!enterBlock() || !fillPage() || (next_ < block_.size() && !writePage()))
            return false;
    }
    // How long standard input is does not show before it ends: what does not fit is not read.
    return isAllWritten() || (isStandardInput() && isFull());
}

int Writer::run() {
    if (!partition_.open(O_RDWR))
        return complainSystem(kNandWrite, "%s", order_.device.c_str());
    if (!partition_.getInfo())
        return complain(kNandWrite, "mtd_get_dev_info failed");
    offset_ = static_cast<uint64_t>(order_.start);
    if (offset_ % pageSize() != 0)
        return complain(kNandWrite,
                        "The start address is not page-aligned !\n"
                        "The pagesize of this NAND Flash is 0x%x.\n",
                        pageSize());
    if (openFile() && writePages())
        return kDone;
    return complainSystem(kNandWrite, "Data was only partially written due to error");
}

} // namespace

int writeNand(const Arguments &arguments) {
    const CommandLine line = parse(arguments, {{"q", "quiet", false},
                                               {"p", "pad", false},
                                               {"m", "markbad", false},
                                               {"N", "noskipbad", false},
                                               {"s", "start", true}});
    NandWriteOrder order;
    for (const ParsedOption &option : line.options) {
        order.isQuiet |= option.letter == 'q';
        order.pads |= option.letter == 'p';
        order.marksBad |= option.letter == 'm';
        order.takesBadBlocks |= option.letter == 'N';
        if (option.letter == 's' && !parseNumber(kNandWrite, "strtoll", option.value, order.start))
            return refuseUsage(kNandWrite);
    }
    if (order.start < 0)
        return complain(kNandWrite, "Can't specify negative device offset with option -s: %lld",
                        static_cast<long long>(order.start));
    if (!line.isGood || line.operands.empty() || line.operands.size() > 2)
        return refuseUsage(kNandWrite);
    order.device = line.operands[0];
    order.file = line.operands.size() == 2 ? line.operands[1] : kStandardInput;
    return Writer(order).run();
}

} // namespace flash_tools
