#include "iodbg/flash/reading_watch.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <exception>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace iodbg {

namespace {

namespace fs = std::filesystem;

constexpr auto kPeriod = std::chrono::milliseconds(200);
constexpr pid_t kFirstProcess = 1;

/** The number behind a word in one of the kernel's texts; nothing when it is not there. */
std::optional<uint64_t> numberBehind(const fs::path &path, const std::string &word) {
    std::ifstream text(path);
    std::string seen;
    while (text >> seen && seen != word) {
    }
    uint64_t value = 0;
    return text >> value ? std::optional(value) : std::nullopt;
}

/** Whether this program runs another, maybe through a shell. */
bool isRunByThis(uint64_t process) {
    const auto self = static_cast<uint64_t>(getpid());
    while (process > kFirstProcess) {
        process = numberBehind("/proc/" + std::to_string(process) + "/status", "PPid:").value_or(0);
        if (process == self)
            return true;
    }
    return false;
}

/** What a folder holds; of a process that ends meanwhile, or is another user's, what was seen. */
std::vector<fs::path> pathsIn(const fs::path &folder) {
    std::vector<fs::path> paths;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        paths.push_back(entry->path());
    return paths;
}

/** How far a process has read a file that it has open. */
std::optional<uint64_t> positionIn(const fs::path &process, const struct stat &file) {
    for (const fs::path &path : pathsIn(process / "fd")) {
        struct stat info = {};
        if (stat(path.c_str(), &info) == 0 && info.st_dev == file.st_dev &&
            info.st_ino == file.st_ino)
            return numberBehind(process / "fdinfo" / path.filename(), "pos:");
    }
    return {};
}

std::optional<uint64_t> positionOfPrograms(const struct stat &file) {
    for (const fs::path &path : pathsIn("/proc")) {
        const std::string name = path.filename();
        uint64_t process = 0;
        const auto result = std::from_chars(name.data(), name.data() + name.size(), process);
        if (result.ec != std::errc())
            continue;
        const std::optional<uint64_t> position = positionIn(path, file);
        if (position && isRunByThis(process))
            return position;
    }
    return {};
}

} // namespace

ReadingWatch::ReadingWatch(const std::string &file, Reached reached)
    : reached_(std::move(reached)) {
    try {
        thread_ = std::thread([this, file] { watch(file); });
    } catch (const std::exception &) {
        // The work itself is what counts.
    }
}

ReadingWatch::~ReadingWatch() {
    {
        const std::lock_guard lock(mutex_);
        hasEnded_ = true;
    }
    end_.notify_all();
    if (thread_.joinable())
        thread_.join();
}

void ReadingWatch::watch(const std::string &file) try {
    struct stat info = {};
    if (stat(file.c_str(), &info) != 0)
        return;
    std::unique_lock lock(mutex_);
    while (!end_.wait_for(lock, kPeriod, [this] { return hasEnded_; })) {
        if (const std::optional<uint64_t> position = positionOfPrograms(info))
            reached_(*position);
    }
} catch (const std::exception &) {
    // As above.
}

} // namespace iodbg
