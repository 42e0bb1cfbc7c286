#include "virtual_board/board/create.h"

#include "virtual_board/board/factory.h"
#include "virtual_board/board/flash_content.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

namespace fs = std::filesystem;

namespace vb {

namespace {

constexpr size_t kMaxSerial = kFactorySerialSize - 1;
constexpr size_t kMaxCommandLine = 1024;

bool isPrintable(const std::string &text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

bool refuse(FolderError &error, const std::string &reason) {
    const size_t length = std::min(reason.size(), sizeof(error.text) - 1);
    std::memcpy(error.text, reason.data(), length);
    error.text[length] = '\0';
    return false;
}

/**
 * A folder beside the final one, removed again with all that was made in it unless it was moved.
 * What was made is known by name: nothing else is ever removed.
 */
class TemporaryFolder {
  public:
    explicit TemporaryFolder(const fs::path &final) : path_(final.string() + ".new-XXXXXX") {
        if (mkdtemp(path_.data()) != nullptr)
            made_.push_back(path_);
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;
    ~TemporaryFolder() {
        while (!made_.empty()) {
            std::remove(made_.back().c_str());
            made_.pop_back();
        }
    }

    bool isMade() const { return !made_.empty(); }
    const std::string &path() const { return path_; }

    bool makeFolder(const std::string &name) {
        made_.push_back(path_ + "/" + name);
        std::error_code failure;
        // As the board's start scripts make them, whatever the user's umask is.
        fs::create_directory(made_.back(), failure);
        if (!failure)
            fs::permissions(made_.back(), fs::perms(0755), failure);
        return !failure;
    }

    bool writeFile(const std::string &name, const void *data, size_t size) {
        made_.push_back(path_ + "/" + name);
        std::ofstream file(made_.back(), std::ios::binary);
        file.write(static_cast<const char *>(data), static_cast<std::streamsize>(size));
        file.close();
        return !file.fail();
    }

    /** A file that is one hole. */
    bool makeHole(const std::string &name, uint32_t size) {
        if (!writeFile(name, "", 0))
            return false;
        std::error_code failure;
        fs::resize_file(made_.back(), size, failure);
        return !failure;
    }

    /** Gives it its final name. */
    std::error_code moveTo(const fs::path &final) {
        std::error_code failure;
        fs::rename(path_, final, failure);
        if (!failure)
            made_.clear();
        return failure;
    }

  private:
    std::string path_;
    std::vector<std::string> made_; // each behind the folder that it is in
};

/** The files of the flash partitions: their nodes, and what they hold, erased. */
bool makeFlash(TemporaryFolder &folder, const BoardOptions &options) {
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

/** What /proc/mtd lists. */
std::string partitionList(const BoardOptions &options) {
    std::string list = "dev:    size   erasesize  name\n";
    for (uint32_t index = 0; index < kFlashPartitions; ++index) {
        const FlashGeometry &flash = options.flash[index];
        char line[64];
        std::snprintf(line, sizeof(line), "mtd%u: %08x %08x \"%s\"\n", kFlashNumbers[index],
                      flash.size, flash.eraseSize, kFlashNames[index]);
        list += line;
    }
    return list;
}

/** Fills a folder with the files of a board; false when one of them cannot be written. */
bool fillFolder(TemporaryFolder &folder, const Model &model, const BoardOptions &options) {
    const auto board = std::make_unique<Board>();
    FactoryData factory = {options.serial.c_str(), {}};
    std::copy(options.mac.begin(), options.mac.end(), factory.mac);
    FlashGeometry flash[kFlashPartitions];
    std::copy(options.flash.begin(), options.flash.end(), flash);
    buildBoard(*board, model, factory, flash);
    board->clock.mode = options.time;
    board->clock.startedNs = hostNow();

    // Folders are removed in the order in which their files were made, or the other way round. With
    // the lock as the first and the state as the last one, programs see in either case that their
    // board is going before what they share is looked at: what they made then would keep its folder
    // from going.
    if (!folder.writeFile(kLockFile, "", 0))
        return false;
    const std::string root = kRootFolder;
    for (const char *path : {"", "/dev", "/proc", "/tmp", kSharedFolderPath}) {
        if (!folder.makeFolder(root + path))
            return false;
    }
    if (!makeFlash(folder, options))
        return false;
    const std::string commandLine = options.commandLine + "\n";
    const std::string partitions = partitionList(options);
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

bool createBoard(const std::string &path, const BoardOptions &options, FolderError &error) {
    const Model *model = findModel(options.devId);
    if (model == nullptr)
        return refuse(error, "no such model; 'vboard list-models' lists them");
    for (const std::string &problem :
         {serialProblem(options.serial), commandLineProblem(options.commandLine)}) {
        if (!problem.empty())
            return refuse(error, problem);
    }

    std::error_code failure;
    const fs::path final = fs::absolute(path, failure).lexically_normal();
    const fs::path folder = final.has_filename() ? final : final.parent_path();
    if (fs::exists(folder, failure) &&
        (!fs::is_directory(folder, failure) || !fs::is_empty(folder, failure)))
        return refuse(error, path + " exists already; choose another name or remove it first");
    if (!fs::is_directory(folder.parent_path(), failure))
        return refuse(error, folder.parent_path().string() + " is not a folder; create it first");

    TemporaryFolder temporary(folder);
    if (!temporary.isMade())
        return refuse(error, "cannot write to " + folder.parent_path().string() + ": " +
                                 std::strerror(errno));
    if (!fillFolder(temporary, *model, options))
        return refuse(error,
                      "cannot write the board's files: " + std::string(std::strerror(errno)));
    fs::permissions(temporary.path(), fs::perms(0755), failure);
    failure = temporary.moveTo(folder);
    if (failure)
        return refuse(error, "cannot create " + path + ": " + failure.message());
    return true;
}

} // namespace vb
