#include "iodbg/core/twin.h"

#include "iodbg/core/failure.h"
#include "iodbg/core/host_file.h"
#include "iodbg/core/temporary_file.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace iodbg {

namespace {

namespace fs = std::filesystem;

constexpr char kBoardsTool[] = "vboard";

fs::path thisProgram() {
    std::error_code failure;
    return fs::read_symlink("/proc/self/exe", failure);
}

/** The tool of virtual boards: beside this program, or one that the shell would find. */
std::string boardsTool() {
    const fs::path beside = thisProgram().parent_path() / kBoardsTool;
    return access(beside.c_str(), X_OK) == 0 ? beside.string() : kBoardsTool;
}

std::string newFolder() {
    std::string folder = folderForTemporaryFiles() + "/iodbg-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr)
        throw Failure::file("make a folder for the captured unit",
                            "set TMPDIR to one that can be written");
    return folder;
}

std::string textOfFile(const std::string &path) {
    constexpr size_t kLongest = 65536;
    const Bytes bytes = readHostFile(path, kLongest);
    return {bytes.begin(), bytes.end()};
}

Bytes inputOf(const std::string &file) {
    constexpr size_t kLargest = size_t{256} * 1024 * 1024;
    return isStandardStream(file) ? readHostFileOrInput(file, kLargest) : Bytes{};
}

/** A file that vboard can read: what standard input had is written into one. */
std::string documentIn(const std::string &folder, const std::string &file, const Bytes &input) {
    if (!isStandardStream(file))
        return file;
    std::string path = folder + "/unit.json";
    const bsp::Descriptor copy(
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!copy.isOpen() || !writeAll(copy.get(), input))
        throw Failure::file("copy standard input to " + path,
                            "set TMPDIR to a folder with space for it");
    return path;
}

/** The last of some lines, without the name of the tool that said it. */
std::string lastLine(std::string text) {
    text.erase(text.find_last_not_of('\n') + 1);
    text.erase(0, text.rfind('\n') + 1);
    const std::string name = std::string(kBoardsTool) + ": ";
    return text.compare(0, name.size(), name) == 0 ? text.substr(name.size()) : text;
}

} // namespace

Twin::Twin(std::string file)
    : file_(std::move(file)), input_(inputOf(file_)), folder_(newFolder()) {
    try {
        make();
    } catch (...) {
        std::error_code failure;
        fs::remove_all(folder_, failure);
        throw;
    }
}

Twin::~Twin() {
    std::error_code failure;
    fs::remove_all(folder_, failure);
}

void Twin::make() {
    const std::string saidPath = folder_ + "/said";
    const bsp::Descriptor said(
        open(saidPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!said.isOpen())
        throw Failure::file("write " + saidPath, "set TMPDIR to a folder with space");
    const std::string document = documentIn(folder_, file_, input_);
    int status = 0;
    try {
        status = programs_.run(
            {{boardsTool(), "create", "--from", document, "--time", "virtual", folder_ + "/board"},
             {},
             said.get(),
             said.get()});
    } catch (const std::system_error &error) {
        throw Failure(ExitCode::Host,
                      "cannot start vboard, which makes a virtual board of the captured unit: " +
                          error.code().message(),
                      "install it beside iodbg, or where PATH leads");
    }
    if (WIFSIGNALED(status))
        throw Ended{status};
    const std::string text = textOfFile(saidPath);
    if (WEXITSTATUS(status) != 0)
        throw Failure(ExitCode::Host, lastLine(text));
    if (const auto lines = std::count(text.begin(), text.end(), '\n'); lines != 0)
        std::fprintf(stderr,
                     "iodbg: %s: not as they were: %ld properties; 'vboard create --from' tells "
                     "which\n",
                     inputName(file_).c_str(), static_cast<long>(lines));
}

int Twin::run(const std::vector<std::string> &words, int output) {
    std::vector<std::string> line = {boardsTool(), "run", folder_ + "/board", "--",
                                     thisProgram().string()};
    line.insert(line.end(), words.begin(), words.end());
    return programs_.run({line, {}, output, STDERR_FILENO});
}

} // namespace iodbg
