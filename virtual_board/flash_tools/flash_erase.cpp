// flash_erase [-q] [-N] DEVICE START BLOCKS: erases blocks; a count of 0 is all from the start on.
// Bad blocks are passed over, and a block that cannot be erased is told, but does not count as
// failure.

#include "virtual_board/flash_tools/options.h"
#include "virtual_board/flash_tools/partition.h"
#include "virtual_board/flash_tools/tools.h"

#include <cstdio>
#include <fcntl.h>

namespace flash_tools {

namespace {

constexpr char kFlashErase[] = "flash_erase";

struct FlashEraseOrder {
    std::string device;
    int64_t start = 0, blocks = 0;
    bool isQuiet = false, takesBadBlocks = false;
};

int refuse() {
    return complain(kFlashErase, "Try `--help' for more information");
}

bool checkOperands(const Arguments &operands) {
    constexpr const char *kMissing[] = {"no MTD device specified", "no start erase block specified",
                                        "no erase block count specified"};
    if (operands.size() == 3)
        return true;
    // One too many is as good as none.
    const size_t given = operands.size() > 3 ? 0 : operands.size();
    for (size_t i = given; i < 3; ++i)
        complain(kFlashErase, "%s", kMissing[i]);
    return false;
}

int eraseBlocks(const FlashEraseOrder &order) {
    Partition partition(kFlashErase, order.device);
    if (!partition.open(O_RDWR))
        return complainSystem(kFlashErase, "%s", order.device.c_str());
    if (!partition.getInfo())
        return complain(kFlashErase, "mtd_get_dev_info failed");
    const uint32_t size = partition.info().erasesize;
    const uint64_t first = static_cast<uint64_t>(order.start) / size;
    const uint64_t all = partition.info().size / size;
    const uint64_t end = order.blocks == 0 ? all : first + static_cast<uint64_t>(order.blocks);
    if (first == 0 && end == all && !order.takesBadBlocks) {
        if (partition.eraseBlocks(0, static_cast<uint32_t>(all)))
            return kDone;
        complainSystem(kFlashErase,
                       "%s: MTD Erase entire chip failureTrying one by one each sector.",
                       order.device.c_str());
    }
    for (uint64_t block = first; block < end; ++block) {
        const uint64_t offset = block * size;
        const int bad = order.takesBadBlocks ? 0 : partition.isBad(offset);
        if (bad < 0)
            return complainSystem(kFlashErase, "%s: MTD get bad block failed",
                                  order.device.c_str());
        if (bad > 0 && !order.isQuiet)
            std::printf("%s: Skipping bad block at %08llx\n", kFlashErase,
                        static_cast<unsigned long long>(offset));
        if (bad > 0)
            continue;
        if (!order.isQuiet)
            std::printf("\rErasing %u Kibyte @ %llx -- %2llu %% complete ", size / 1024,
                        static_cast<unsigned long long>(offset),
                        static_cast<unsigned long long>((block - first) * 100 / (end - first)));
        if (!partition.eraseBlocks(offset))
            complainSystem(kFlashErase, "%s: MTD Erase failure", order.device.c_str());
    }
    if (!order.isQuiet)
        std::printf("\n");
    return kDone;
}

} // namespace

int eraseFlash(const Arguments &arguments) {
    const CommandLine line = parse(
        arguments, {{"q", "quiet", false}, {"q", "silent", false}, {"N", "noskipbad", false}});
    FlashEraseOrder order;
    for (const ParsedOption &option : line.options) {
        order.isQuiet |= option.letter == 'q';
        order.takesBadBlocks |= option.letter == 'N';
    }
    const bool isComplete = checkOperands(line.isGood ? line.operands : Arguments{});
    if (!isComplete || !parseNumber(kFlashErase, "strtoull", line.operands[1], order.start) ||
        !parseNumber(kFlashErase, "strtoul", line.operands[2], order.blocks))
        return refuse();
    order.device = line.operands[0];
    return eraseBlocks(order);
}

} // namespace flash_tools
