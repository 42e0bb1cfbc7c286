// iodbg mtd: flash partitions as a whole, or the file that one holds behind a length header.

#include "bsp.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/confirm.h"
#include "iodbg/core/console.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/host_file.h"
#include "iodbg/core/status_table.h"
#include "iodbg/flash/boot_block.h"
#include "iodbg/flash/claim.h"
#include "iodbg/flash/commands.h"
#include "iodbg/flash/comparison.h"
#include "iodbg/flash/content.h"
#include "iodbg/flash/device_argument.h"
#include "iodbg/flash/flash_lock.h"
#include "iodbg/flash/partition.h"
#include "iodbg/flash/partition_list.h"
#include "iodbg/flash/spooled_input.h"
#include "iodbg/flash/work.h"
#include "language/erased_flash.h"
#include "language/formats/length_header.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <sys/stat.h>

namespace iodbg {

namespace {

constexpr char kHeaderHelp[] = "The file behind a length header, not the whole partition";

std::string sizeText(uint64_t bytes) {
    return std::to_string(bytes) + " bytes";
}

// mtd list, mtd info

ExitCode list(Console &console) {
    Report report;
    addPartitions(report);
    return console.print(report);
}

ExitCode info(Console &console, const std::string &device) {
    Report report;
    addPartition(report, device);
    return console.print(report);
}

// mtd read

struct ReadArguments {
    std::string device;
    std::string file;
    bool hasHeader = false;
    bool isForced = false;
};

/** How many bytes a read will give; throws when no file is stored. */
uint64_t storedSize(const FlashPartition &partition, bool hasHeader) {
    if (!hasHeader)
        return partition.size();
    const Bytes header = partition.read(0, formats::kLengthHeaderSize);
    const uint32_t size = formats::storedFileLength(header.data(), partition.size());
    if (size == 0)
        throw Failure(ExitCode::Board, partition.device() +
                                           " holds no file with a length header; leave out "
                                           "--header to read the whole partition");
    return size;
}

/** Compares the copy with the partition, since the library does not notice a full file system. */
void verifyCopy(const FlashPartition &partition, const ReadArguments &arguments,
                const std::string &copy, uint64_t size) {
    struct stat info = {};
    const bool isThere = stat(copy.c_str(), &info) == 0;
    const uint64_t copied = isThere ? static_cast<uint64_t>(info.st_size) : 0;
    if (copied != size)
        throw Failure(ExitCode::Host, "the new " + arguments.file + " took " +
                                          std::to_string(copied) + " of " + sizeText(size) +
                                          "; choose a folder that can be written and has space");
    Content content = {{}, copy, size};
    if (arguments.hasHeader)
        content.front = partition.read(0, formats::kLengthHeaderSize);
    const Comparison comparison = compare(partition, content, Layout::Straight, [](uint64_t) {});
    if (comparison.first)
        throw Failure(ExitCode::ReadBack, "the copy differs from a second reading: " +
                                              differenceText(partition, content, comparison) +
                                              "; read again, and see what differs each time");
}

/** Reads a part of a partition under the library's lock, and is told each piece of it. The lock is
 * free between the pieces: whoever takes them may take its time. */
void readLocked(const FlashPartition &partition, uint64_t offset, uint64_t size,
                const std::function<void(ByteView)> &take) {
    Bytes piece(partition.blockSize());
    while (size > 0) {
        const auto count = static_cast<size_t>(std::min<uint64_t>(piece.size(), size));
        {
            const LibraryFlashLock lock;
            partition.read(offset, {piece.data(), count});
        }
        take({piece.data(), count});
        offset += count;
        size -= count;
    }
}

/** Gives a partition on standard output as it is read, and compares it with a second reading. */
ExitCode stream(Console &console, const ReadArguments &arguments, const FlashPartition &partition,
                uint64_t size) {
    const uint64_t offset = arguments.hasHeader ? formats::kLengthHeaderSize : 0;
    uint32_t given = 0;
    readLocked(partition, offset, size, [&](ByteView piece) {
        given = language::flashCrc32(given, piece);
        console.giveData(piece);
    });
    uint32_t second = 0;
    readLocked(partition, offset, size,
               [&](ByteView piece) { second = language::flashCrc32(second, piece); });
    if (given != second)
        throw Failure(ExitCode::ReadBack, "what was given of " + arguments.device +
                                              " differs from a second reading; read again");
    Section section = {"", "", {}};
    section.add("device", "Device", textCell(arguments.device));
    section.add("output", "Saved in", textCell("standard output"));
    section.add("size_bytes", "Size, bytes", numberCell(static_cast<int64_t>(size)));
    section.add("read_by", "Read by",
                textCell("iodbg itself, under the library's flash lock; twice, and the same"));
    return console.print({{section}, {}});
}

ExitCode read(Console &console, const ReadArguments &arguments) {
    const FlashPartition partition(arguments.device);
    const Destination destination = {arguments.file, arguments.isForced,
                                     partition.isAt(BSP_MTD_BOOT_SETTINGS)};
    requireSavable(console, destination);
    const uint64_t size = storedSize(partition, arguments.hasHeader);
    if (destination.isStandardOutput())
        return stream(console, arguments, partition, size);
    Saving copy(console, destination);
    require(
        bsp_mtd_read_to_file(arguments.device.c_str(), copy.path().c_str(),
                             arguments.hasHeader ? BSP_MTD_WITH_HEADER : BSP_MTD_WITHOUT_HEADER),
        "read " + arguments.device);
    verifyCopy(partition, arguments, copy.path(), size);
    copy.finish();
    Section section = {"", "", {}};
    section.add("device", "Device", textCell(arguments.device));
    section.add("output", "Saved in", textCell(destination.name()));
    section.add("size_bytes", "Size, bytes", numberCell(static_cast<int64_t>(size)));
    return console.print({{section}, {}});
}

// mtd write

struct WriteArguments : FlashInput {
    std::string device;
    bool hasHeader = false;
};

Content contentOf(const WriteArguments &arguments, const SpooledInput &input,
                  const FlashPartition &partition) {
    Content content = {{}, input.path(), hostFileSize(input.path())};
    if (arguments.hasHeader) {
        content.front.resize(formats::kLengthHeaderSize);
        formats::writeLengthHeader(content.front.data(), static_cast<uint32_t>(content.fileSize));
    }
    if (content.size() > partition.size())
        throw Failure::usage("'" + input.name() + "' has " + sizeText(content.fileSize) +
                             (arguments.hasHeader ? ", 8 more with the length header" : "") + "; " +
                             partition.device() + " holds " + std::to_string(partition.size()));
    return content;
}

std::string planText(const WriteArguments &arguments, const FlashPartition &partition,
                     const Content &content) {
    return partition.device() + ", " + sizeText(partition.size()) + "\n  now  " +
           (isErased(partition.read(0, formats::kLengthHeaderSize)) ? "nothing at its start"
                                                                    : "data, which will be lost") +
           "\n  new  " + arguments.file + ", " + sizeText(content.fileSize) +
           (arguments.hasHeader ? ", behind a length header\n" : "\n");
}

/** The library answers what its last page write answered when the partition ended too early. */
Failure writeFailure(const WriteArguments &arguments, int32_t status, const std::string &found) {
    const std::string hint = found + "; write again, and see the kernel log for flash errors";
    if (!explain(status).name.empty() && status != BSP_E_FAILED)
        return Failure::board("write " + arguments.device, status, hint);
    return {ExitCode::Board, "cannot write all of " + inputName(arguments.file) + " into " +
                                 arguments.device + ": the library answered " +
                                 std::to_string(status) + "; " + hint};
}

ExitCode write(Console &console, const WriteArguments &arguments) {
    console.beginLongWork();
    const FlashPartition partition(arguments.device);
    const SpooledInput input(arguments, partition.size() + 1); // which is told by its size
    const Content content = contentOf(arguments, input, partition);
    Section section = {"", "", {}};
    section.add("device", "Device", textCell(arguments.device));
    section.add("file", "File", textCell(inputName(arguments.file)));
    section.add("size_bytes", "Size, bytes", numberCell(static_cast<int64_t>(content.fileSize)));
    section.add("dry_run", "Dry run",
                flagCell(arguments.isDryRun, "yes, nothing was changed", "no"));
    if (arguments.isDryRun)
        return console.print({{section}, {}});
    const FlashClaim claim(partition);
    if (!arguments.isYes)
        confirm(planText(arguments, partition, content) + "Write it now?");

    PartitionWork work(console, "mtd write", partition, content);
    const int32_t status = work.write([&] {
        return bsp_mtd_write_from_file(content.file.c_str(), arguments.device.c_str(),
                                       arguments.hasHeader ? BSP_MTD_WITH_HEADER
                                                           : BSP_MTD_WITHOUT_HEADER);
    });
    const std::string found = work.readBack();
    if (status != BSP_OK)
        throw writeFailure(arguments, status, found);
    work.requireSame("write again; blocks that do not take their data need another partition");
    section.add("verified", "Verified", flagCell(true, "read back, all bytes are the file's", ""));
    return console.print({{section}, {}});
}

// mtd erase

struct EraseArguments {
    std::string device;
    bool isYes = false;
};

ExitCode erase(Console &console, const EraseArguments &arguments) {
    const FlashPartition partition(arguments.device);
    const FlashClaim claim(partition);
    if (!arguments.isYes)
        confirm("The first block of " + arguments.device + ", " + sizeText(partition.blockSize()) +
                ", will be lost.\nErase it now?");
    require(bsp_mtd_erase(arguments.device.c_str()), "erase " + arguments.device);
    if (!partition.isErased(0))
        throw Failure(ExitCode::ReadBack,
                      "the first block of " + arguments.device +
                          " was erased, but does not read as erased; see the kernel log for flash "
                          "errors");
    Section section = {"", "", {}};
    section.add("device", "Device", textCell(arguments.device));
    section.add("erased_bytes", "Erased, bytes",
                numberCell(static_cast<int64_t>(partition.blockSize())));
    return console.print({{section}, {}});
}

void addList(Command &mtd) {
    takesCapturedUnit(mtd.command("list", "Show the partitions: what they hold, sizes, bad blocks"))
        .example("iodbg mtd list")
        .does(list);

    const auto device = std::make_shared<std::string>();
    Command &command = mtd.command("info", "Show what a partition's driver tells of it");
    command.argument("DEVICE", flashDeviceHelp(), flashDevice(*device));
    command.example("iodbg mtd info mtd12");
    takesCapturedUnit(command);
    command.does([device](Console &console) { return info(console, *device); });
}

void addRead(Command &mtd) {
    const auto arguments = std::make_shared<ReadArguments>();
    Command &command = mtd.command("read", "Copy a partition into a file");
    command.argument("DEVICE", flashDeviceHelp(), flashDevice(arguments->device));
    command.argument("FILE", "The copy, - is standard output", fileName(arguments->file));
    command.flag("--header", kHeaderHelp, arguments->hasHeader);
    command.flag("--force", kForceHelp, arguments->isForced);
    command.detail("For standard output iodbg reads the device itself, block by block under the "
                   "library's flash lock, and needs no room for a copy. What it gave is compared "
                   "with a second reading behind it.");
    command.example("iodbg mtd read mtd4 saved.bin").example("iodbg mtd read mtd12 -");
    takesCapturedUnit(command);
    command.does([arguments](Console &console) { return read(console, *arguments); });
}

void addWrite(Command &mtd) {
    const auto arguments = std::make_shared<WriteArguments>();
    Command &command = mtd.command("write", "Replace a partition's content by a file's");
    command.argument("DEVICE", flashDeviceHelp(), flashDevice(arguments->device));
    command.argument("FILE", "The new content, - is standard input", fileName(arguments->file));
    command.flag("--header", "Write it behind a length header, and erase no more than it needs",
                 arguments->hasHeader);
    command.flag("--dry-run", "Check the file, change nothing", arguments->isDryRun);
    command.flag("--yes", kYesHelp, arguments->isYes);
    addSpoolOption(command, arguments->spool);
    command.example("iodbg mtd write mtd4 settings.bin --dry-run")
        .example("iodbg mtd write mtd4 settings.bin --yes");
    command.does([arguments](Console &console) { return write(console, *arguments); });
}

void addErase(Command &mtd) {
    const auto arguments = std::make_shared<EraseArguments>();
    Command &command = mtd.command("erase", "Erase a partition's first block, and only that");
    command.argument("DEVICE", flashDeviceHelp(), flashDevice(arguments->device));
    command.flag("--yes", kYesHelp, arguments->isYes);
    command.example("iodbg mtd erase mtd4");
    command.does([arguments](Console &console) { return erase(console, *arguments); });
}

void defineMtd(Command &mtd) {
    addList(mtd);
    addRead(mtd);
    addWrite(mtd);
    addErase(mtd);
}

} // namespace

void addMtdCommands(Command &root) {
    root.group("mtd", "Flash partitions", defineMtd);
}

} // namespace iodbg
