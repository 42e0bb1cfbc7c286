#include "virtual_board/board/create.h"

#include "virtual_board/board/factory.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>

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

bool writeFile(const fs::path &path, const void *data, size_t size) {
    std::ofstream file(path, std::ios::binary);
    file.write(static_cast<const char *>(data), static_cast<std::streamsize>(size));
    file.close();
    return !file.fail();
}

/** Fills a folder with the files of a board; false when one of them cannot be written. */
bool fillFolder(const fs::path &folder, const Model &model, const BoardOptions &options) {
    const auto board = std::make_unique<Board>();
    FactoryData factory = {options.serial.c_str(), {}};
    std::copy(options.mac.begin(), options.mac.end(), factory.mac);
    buildBoard(*board, model, factory);
    board->clock.mode = options.time;
    board->clock.startedNs = hostNow();

    const fs::path root = folder / kRootFolder;
    std::error_code failure;
    for (const char *path : {"/dev", "/proc", kSharedFolderPath}) {
        fs::create_directories(root.string() + path, failure);
        if (failure)
            return false;
    }
    const std::string commandLine = options.commandLine + "\n";
    return writeFile(root.string() + kNodePath, "", 0) && writeFile(folder / kLockFile, "", 0) &&
           writeFile(root.string() + kCommandLinePath, commandLine.data(), commandLine.size()) &&
           writeFile(folder / kStateFile, board.get(), sizeof(Board));
}

/** A folder beside the final one, removed again unless it was renamed. */
class TemporaryFolder {
  public:
    explicit TemporaryFolder(const fs::path &final) : name_(final.string() + ".new-XXXXXX") {
        isMade_ = mkdtemp(name_.data()) != nullptr;
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        if (isMade_)
            fs::remove_all(name_, ignored);
    }

    bool isMade() const { return isMade_; }
    const std::string &path() const { return name_; }

  private:
    std::string name_;
    bool isMade_ = false;
};

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

    const TemporaryFolder temporary(folder);
    if (!temporary.isMade())
        return refuse(error, "cannot write to " + folder.parent_path().string() + ": " +
                                 std::strerror(errno));
    if (!fillFolder(temporary.path(), *model, options))
        return refuse(error,
                      "cannot write the board's files: " + std::string(std::strerror(errno)));
    fs::permissions(temporary.path(), fs::perms(0755), failure);
    fs::rename(temporary.path(), folder, failure);
    if (failure)
        return refuse(error, "cannot create " + path + ": " + failure.message());
    return true;
}

} // namespace vb
