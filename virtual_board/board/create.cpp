#include "virtual_board/board/create.h"

#include "virtual_board/board/clock_change.h"
#include "virtual_board/board/factory.h"
#include "virtual_board/board/flash_content.h"
#include "virtual_board/board/new_folder.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>

namespace vb {

namespace {

constexpr size_t kMaxSerial = kFactorySerialSize - 1;
constexpr size_t kMaxCommandLine = 1024;

bool isPrintable(const std::string &text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

/** The files of the flash partitions: their nodes, and what they hold, erased. */
bool makeFlash(NewFolder &folder, const BoardOptions &options) {
    if (!folder.makeFolder(kFlashFolder))
        return false;
    for (uint32_t index = 0; index < kFlashPartitions; ++index) {
        const std::string node =
            kRootFolder + std::string(kFlashNodePrefix) + std::to_string(kFlashNumbers[index]);
        if (!folder.writeFile(node, "", 0) ||
            !folder.makeHole(flashFileName(index).text, options.flash[index].size))
            return false;
    }
    return true;
}

/** Fills a folder with the files of a board; false when one of them cannot be written. */
bool fillFolder(NewFolder &folder, const Model &model, const BoardOptions &options) {
    const auto board = std::make_unique<Board>();
    FactoryData factory = {options.serial.c_str(), {}};
    std::copy(options.mac.begin(), options.mac.end(), factory.mac);
    FlashGeometry flash[kFlashPartitions];
    std::copy(options.flash.begin(), options.flash.end(), flash);
    buildBoard(*board, model, factory, flash);
    setPace(board->clock, options.pace, hostTime());
    board->clock.anchorNs = 0;
    board->devices.flashTiming = options.flashTiming;

    // Folders are removed in the order in which their files were made, or the other way round. With
    // the lock as the first and the state as the last one, programs see in either case that their
    // board is going before what they share is looked at: what they made then would keep its folder
    // from going.
    if (!folder.writeFile(kLockFile, "", 0) || !folder.makePipe(kWakeFile))
        return false;
    const std::string root = kRootFolder;
    for (const char *path : {"", "/dev", "/proc", "/tmp", kSharedFolderPath}) {
        if (!folder.makeFolder(root + path))
            return false;
    }
    if (!makeFlash(folder, options))
        return false;
    const std::string commandLine = options.commandLine + "\n";
    const std::string partitions = partitionList(options.flash);
    return folder.writeFile(root + kNodePath, "", 0) &&
           folder.writeFile(root + kMemoryPath, "", 0) &&
           folder.makeHole(kRegisterPageFile, kMdioPageSize) &&
           folder.writeFile(root + kCommandLinePath, commandLine.data(), commandLine.size()) &&
           folder.writeFile(root + kPartitionListPath, partitions.data(), partitions.size()) &&
           folder.writeFile(kStateFile, board.get(), sizeof(Board));
}

} // namespace

std::string serialProblem(const std::string &serial) {
    const bool isGood = !serial.empty() && serial.size() <= kMaxSerial && isPrintable(serial);
    return isGood ? "" : "a serial number is 1 to 31 printable ASCII characters";
}

std::string commandLineProblem(const std::string &commandLine) {
    const bool isGood = commandLine.size() <= kMaxCommandLine && isPrintable(commandLine);
    return isGood ? "" : "a kernel command line is up to 1024 printable ASCII characters";
}

std::string partitionList(const std::array<FlashGeometry, kFlashPartitions> &geometries) {
    std::string list = "dev:    size   erasesize  name\n";
    for (uint32_t index = 0; index < kFlashPartitions; ++index) {
        const FlashGeometry &flash = geometries[index];
        char line[64];
        std::snprintf(line, sizeof(line), "mtd%u: %08x %08x \"%s\"\n", kFlashNumbers[index],
                      flash.size, flash.eraseSize, kFlashNames[index]);
        list += line;
    }
    return list;
}

bool createBoard(const std::string &path, const BoardOptions &options, FolderError &error) {
    return createBoard(path, options, nullptr, error);
}

bool createBoard(const std::string &path, const BoardOptions &options,
                 const std::function<void(const BoardFolder &)> &furnish, FolderError &error) {
    const Model *model = findModel(options.devId);
    if (model == nullptr)
        return refuseFolder(error, FolderProblem::Refused,
                            "no such model; 'vboard list-models' lists them");
    for (const std::string &problem :
         {serialProblem(options.serial), commandLineProblem(options.commandLine)}) {
        if (!problem.empty())
            return refuseFolder(error, FolderProblem::Refused, problem);
    }

    NewFolder folder;
    if (!folder.begin(path, error))
        return false;
    if (!fillFolder(folder, *model, options))
        return failToWrite(error, "cannot write the board's files", errno);
    if (furnish) {
        BoardFolder board;
        if (!board.open(folder.path().c_str(), error))
            return false;
        furnish(board);
    }
    return folder.finish(error);
}

} // namespace vb
