// Ioctls on the nodes of the flash partitions: what is asked of them, and erasing.

#include "virtual_board/board/mtd.h"
#include "virtual_board/board/user_memory.h"
#include "virtual_board/os/mtd_request.h"

#include <cerrno>
#include <mtd/mtd-abi.h>
#include <sys/ioctl.h>

namespace vb {

namespace {

void describe(const Flash &flash, mtd_info_user &info) {
    const bool isNor = flash.geometry.type == FlashType::Nor;
    const uint32_t flags = isNor ? MTD_CAP_NORFLASH : MTD_CAP_NANDFLASH;
    info = {};
    info.type = isNor ? MTD_NORFLASH : MTD_NANDFLASH;
    info.flags = flash.isWriteProtected != 0 ? flags & ~uint32_t{MTD_WRITEABLE} : flags;
    info.size = flash.geometry.size;
    info.erasesize = flash.geometry.eraseSize;
    info.writesize = flash.geometry.pageSize;
    info.oobsize = flash.geometry.spareSize;
}

MtdAnswer badAddress() {
    return {EFAULT, 0, false};
}

template <typename Value>
MtdAnswer store(const MtdAnswer &answer, const Value &value, void *argument) {
    return copyToUser(argument, &value, sizeof(value)) ? answer : badAddress();
}

MtdAnswer serveInfo(const MtdRequest &request, void *argument) {
    const MtdAnswer answer = mtdInfo(request);
    if (answer.error != 0)
        return answer;
    mtd_info_user info;
    describe(request.folder.board()->devices.flash[request.index], info);
    return store(answer, info, argument);
}

MtdAnswer serveStatistics(const MtdRequest &request, uint32_t code, void *argument) {
    const MtdAnswer answer = mtdStatistics(request, code);
    if (answer.error != 0)
        return answer;
    mtd_ecc_stats stats = {}; // no page has a code that could have found errors
    stats.badblocks = answer.value;
    return store(answer, stats, argument);
}

template <typename Blocks>
MtdAnswer serveErase(const MtdRequest &request, int fd, const void *argument) {
    Blocks blocks;
    return copyFromUser(&blocks, argument, sizeof(blocks))
               ? mtdErase(request, canWrite(fd), blocks.start, blocks.length)
               : badAddress();
}

/** A question about a block, or its marking, by its offset. */
template <typename Serve>
MtdAnswer serveBlock(const void *argument, Serve serve) {
    int64_t offset = 0;
    return copyFromUser(&offset, argument, sizeof(offset)) ? serve(offset) : badAddress();
}

MtdAnswer serve(const MtdRequest &request, int fd, uint32_t code, void *argument) {
    switch (code) {
    case MEMGETINFO:
        return serveInfo(request, argument);
    case MEMERASE:
        return serveErase<erase_info_user>(request, fd, argument);
    case MEMERASE64:
        return serveErase<erase_info_user64>(request, fd, argument);
    case MEMGETBADBLOCK:
        return serveBlock(argument, [&](int64_t offset) { return mtdIsBad(request, offset); });
    case MEMSETBADBLOCK:
        return serveBlock(
            argument, [&](int64_t offset) { return mtdMarkBad(request, canWrite(fd), offset); });
    case ECCGETSTATS:
        return serveStatistics(request, code, argument);
    default:
        return mtdOther(request, code);
    }
}

} // namespace

int partitionIoctl(int fd, uint32_t partition, unsigned long code, void *argument) {
    const MtdAnswer answer = sendRequest(partition, [&](const MtdRequest &request) {
        return serve(request, fd, static_cast<uint32_t>(code), argument);
    });
    return answer.error == 0 && code != MEMGETBADBLOCK ? 0 : resultOf(answer);
}

} // namespace vb
